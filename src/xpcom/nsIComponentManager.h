// What a component host offers a module: creation of components, and the registrar that a
// module announces its components to.
#pragma once

#include "xpcom/nsISupports.h"

class nsIFile;

class nsIFactory : public nsISupports {
 public:
  NS_DECLARE_STATIC_IID_ACCESSOR({0x00000001, 0x0000, 0x0000, {0xc0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}})
  NS_IMETHOD CreateInstance(nsISupports* outer, const nsIID& iid, void** result) = 0;
  NS_IMETHOD LockFactory(bool lock) = 0;
};

class nsIComponentManager : public nsISupports {
 public:
  NS_DECLARE_STATIC_IID_ACCESSOR({0xa88e5a60, 0x205a, 0x4bb1, {0x94, 0xe1, 0x26, 0x28, 0xda, 0xf5, 0x1e, 0xae}})
  NS_IMETHOD GetClassObject(const nsCID& cid, const nsIID& iid, void** result) = 0;
  NS_IMETHOD CreateInstance(const nsCID& cid, nsISupports* outer, const nsIID& iid, void** result) = 0;
  NS_IMETHOD CreateInstanceByContractID(const char* contractId, nsISupports* outer, const nsIID& iid,
                                        void** result) = 0;
};

class nsIComponentRegistrar : public nsISupports {
 public:
  NS_DECLARE_STATIC_IID_ACCESSOR({0x2417cbfe, 0x65ad, 0x48a6, {0xb4, 0xb6, 0xeb, 0x84, 0xdb, 0x17, 0x43, 0x92}})
  NS_IMETHOD RegisterFactoryLocation(const nsCID& cid, const char* className, const char* contractId,
                                     nsIFile* location, const char* loaderStr, const char* type) = 0;
};

class nsIModule : public nsISupports {
 public:
  NS_DECLARE_STATIC_IID_ACCESSOR({0x7392d032, 0x5371, 0x11d3, {0x99, 0x4e, 0x00, 0x10, 0x5a, 0x1b, 0x2a, 0x6b}})
  NS_IMETHOD GetClassObject(nsIComponentManager* compMgr, const nsCID& cid, const nsIID& iid, void** result) = 0;
  NS_IMETHOD RegisterSelf(nsIComponentManager* compMgr, nsIFile* location, const char* loaderStr,
                          const char* type) = 0;
  NS_IMETHOD UnregisterSelf(nsIComponentManager* compMgr, nsIFile* location, const char* loaderStr) = 0;
  NS_IMETHOD CanUnload(nsIComponentManager* compMgr, bool* result) = 0;
};

// The one entry point of a component module.
typedef nsresult (*nsGetModuleProc)(nsIComponentManager* compMgr, nsIFile* location, nsIModule** result);
#define NS_GET_MODULE_SYMBOL "NSGetModule"
