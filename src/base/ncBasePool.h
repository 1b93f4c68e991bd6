// A memory pool that hands out named allocators and counts the live objects of each class
// name, so a test can show that closing and releasing everything leaves nothing behind.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <unordered_map>

#include "base/ncIAllocator.h"

namespace base {

class ncBasePool {
 public:
  ncBasePool() = default;
  virtual ~ncBasePool() = default;
  ncBasePool(const ncBasePool&) = delete;
  ncBasePool& operator=(const ncBasePool&) = delete;

  // flags are kept for the client's pool library; limit caps the bytes live at once.
  static ncIAllocator* createAllocator(const char* name, int flags, int64_t limit);
  static void deleteAllocator(ncIAllocator* allocator);
  static void* malloc(ncBasePool* pool, ncIAllocator* allocator, size_t size, const char* className,
                      const char* file, int line);
  static void free(ncBasePool* pool, ncIAllocator* allocator, void* memory);

  size_t liveObjects(const std::string& className) const;
  size_t liveObjects() const;

 protected:
  void* take(size_t size, const char* className);
  void give(void* memory);

 private:
  mutable std::mutex lock_;
  std::unordered_map<void*, std::string> owners_;
  std::map<std::string, size_t> counts_;
};

}  // namespace base
