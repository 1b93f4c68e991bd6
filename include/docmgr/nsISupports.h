// The reference-counted base interface of the component model, laid out as the frozen
// interface: exactly three slots (QueryInterface, AddRef, Release) and no destructor.
// Objects delete themselves in Release; the destructor of a concrete class comes after
// every interface slot, so a host's slot numbers stay those of the interface tables.
#pragma once

#include "docmgr/nsID.h"
#include "docmgr/nscore.h"

#define NS_DECLARE_STATIC_IID_ACCESSOR(...) \
  static const nsIID& GetIID() {            \
    static const nsIID iid = __VA_ARGS__;   \
    return iid;                             \
  }
#define NS_GET_IID(T) T::GetIID()

#define NS_ISUPPORTS_IID {0x00000000, 0x0000, 0x0000, {0xc0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}}

class nsISupports {
 public:
  NS_DECLARE_STATIC_IID_ACCESSOR(NS_ISUPPORTS_IID)

  NS_IMETHOD QueryInterface(const nsIID& iid, void** result) = 0;
  NS_IMETHOD_(nsrefcnt) AddRef() = 0;
  NS_IMETHOD_(nsrefcnt) Release() = 0;

 protected:
  // Not virtual: no slot. Only Release may end an object's life.
  ~nsISupports() = default;
};
