// The frozen factory interface: creates the instances of one component.
#pragma once

#include "docmgr/nsISupports.h"

#define NS_IFACTORY_IID {0x00000001, 0x0000, 0x0000, {0xc0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}}

class nsIFactory : public nsISupports {
 public:
  NS_DECLARE_STATIC_IID_ACCESSOR(NS_IFACTORY_IID)

  NS_IMETHOD CreateInstance(nsISupports* outer, const nsIID& iid, void** result) = 0;  // slot 3
  NS_IMETHOD LockFactory(PRBool lock) = 0;                                              // slot 4

 protected:
  ~nsIFactory() = default;
};
