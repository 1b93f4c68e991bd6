// The reference-counted base interface of the component model.
#pragma once

#include <cstdint>

#include "xpcom/nsID.h"

typedef uint32_t nsresult;
typedef int32_t nsrefcnt;

#define NS_OK nsresult(0)
#define NS_ERROR_NOT_IMPLEMENTED nsresult(0x80004001)
#define NS_ERROR_NO_INTERFACE nsresult(0x80004002)
#define NS_ERROR_NULL_POINTER nsresult(0x80004003)
#define NS_ERROR_FAILURE nsresult(0x80004005)
#define NS_ERROR_OUT_OF_MEMORY nsresult(0x8007000E)
#define NS_ERROR_INVALID_ARG nsresult(0x80070057)
#define NS_ERROR_NO_AGGREGATION nsresult(0x80040110)
#define NS_ERROR_FACTORY_NOT_REGISTERED nsresult(0x80040154)
#define NS_ERROR_FACTORY_NOT_LOADED nsresult(0x800401F8)
#define NS_FAILED(r) (((r) & 0x80000000) != 0)
#define NS_SUCCEEDED(r) (!NS_FAILED(r))

#define NS_IMETHOD virtual nsresult
#define NS_IMETHOD_(type) virtual type
#define NS_IMETHODIMP nsresult

// Each interface declares its identifier: NC_DECLARE_IID(m0, m1, m2, {m3...}).
#define NS_DECLARE_STATIC_IID_ACCESSOR(...) \
  static const nsIID& GetIID() {            \
    static const nsIID iid = __VA_ARGS__;   \
    return iid;                             \
  }
#define NS_GET_IID(T) T::GetIID()

class nsISupports {
 public:
  NS_DECLARE_STATIC_IID_ACCESSOR({0x00000000, 0x0000, 0x0000, {0xc0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}})

  NS_IMETHOD QueryInterface(const nsIID& iid, void** result) = 0;
  NS_IMETHOD_(nsrefcnt) AddRef() = 0;
  NS_IMETHOD_(nsrefcnt) Release() = 0;

 protected:
  virtual ~nsISupports() = default;
};
