// The frozen component manager interface: what a host offers for creating components.
#pragma once

#include "docmgr/nsISupports.h"

#define NS_ICOMPONENTMANAGER_IID {0xa88e5a60, 0x205a, 0x4bb1, {0x94, 0xe1, 0x26, 0x28, 0xda, 0xf5, 0x1e, 0xae}}

class nsIComponentManager : public nsISupports {
 public:
  NS_DECLARE_STATIC_IID_ACCESSOR(NS_ICOMPONENTMANAGER_IID)

  NS_IMETHOD GetClassObject(const nsCID& cid, const nsIID& iid, void** result) = 0;                      // 3
  NS_IMETHOD GetClassObjectByContractID(const char* contractId, const nsIID& iid, void** result) = 0;    // 4
  NS_IMETHOD CreateInstance(const nsCID& cid, nsISupports* outer, const nsIID& iid, void** result) = 0;  // 5
  NS_IMETHOD CreateInstanceByContractID(const char* contractId, nsISupports* outer, const nsIID& iid,
                                        void** result) = 0;                                              // 6

 protected:
  ~nsIComponentManager() = default;
};
