// Owning pointer to a reference-counted interface.
#pragma once

#include <utility>

#include "docmgr/nsISupports.h"

template <typename T>
class nsCOMPtr {
 public:
  nsCOMPtr() = default;
  nsCOMPtr(T* raw) : raw_(raw) {  // NOLINT: takes a new reference, as the host's pointer does
    if (raw_) raw_->AddRef();
  }
  nsCOMPtr(const nsCOMPtr& other) : nsCOMPtr(other.raw_) {}
  nsCOMPtr(nsCOMPtr&& other) noexcept : raw_(other.raw_) { other.raw_ = nullptr; }
  ~nsCOMPtr() { reset(); }

  nsCOMPtr& operator=(T* raw) {
    if (raw) raw->AddRef();
    T* old = raw_;
    raw_ = raw;
    if (old) old->Release();
    return *this;
  }
  nsCOMPtr& operator=(const nsCOMPtr& other) { return *this = other.raw_; }
  nsCOMPtr& operator=(nsCOMPtr&& other) noexcept {
    if (this != &other) {
      reset();
      raw_ = other.raw_;
      other.raw_ = nullptr;
    }
    return *this;
  }

  // Adopts a pointer that already carries the reference this holder owns.
  static nsCOMPtr adopt(T* raw) {
    nsCOMPtr holder;
    holder.raw_ = raw;
    return holder;
  }
  void reset() {
    T* old = raw_;
    raw_ = nullptr;
    if (old) old->Release();
  }
  // Hands the reference over to the caller.
  T* forget() { return std::exchange(raw_, nullptr); }
  // For out parameters of the form T**: releases what is held first.
  T** getter_AddRefs() {
    reset();
    return &raw_;
  }

  T* get() const { return raw_; }
  T* operator->() const { return raw_; }
  T& operator*() const { return *raw_; }
  operator T*() const { return raw_; }
  explicit operator bool() const { return raw_ != nullptr; }

 private:
  T* raw_ = nullptr;
};

// Asks a component for another of its interfaces; null when it has none.
template <typename T>
nsCOMPtr<T> do_QueryInterface(nsISupports* object) {
  void* result = nullptr;
  if (!object || NS_FAILED(object->QueryInterface(NS_GET_IID(T), &result))) return nsCOMPtr<T>();
  return nsCOMPtr<T>::adopt(static_cast<T*>(result));
}
