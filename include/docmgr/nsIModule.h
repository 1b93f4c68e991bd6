// The frozen module interface: what a module file's NSGetModule hands a host.
#pragma once

#include "docmgr/nsIComponentManager.h"

class nsIFile;

#define NS_IMODULE_IID {0x7392d032, 0x5371, 0x11d3, {0x99, 0x4e, 0x00, 0x10, 0x5a, 0x1b, 0x2a, 0x6b}}

class nsIModule : public nsISupports {
 public:
  NS_DECLARE_STATIC_IID_ACCESSOR(NS_IMODULE_IID)

  NS_IMETHOD GetClassObject(nsIComponentManager* compMgr, const nsCID& cid, const nsIID& iid,
                            void** result) = 0;                                                        // 3
  NS_IMETHOD RegisterSelf(nsIComponentManager* compMgr, nsIFile* location, const char* loaderStr,
                          const char* type) = 0;                                                       // 4
  NS_IMETHOD UnregisterSelf(nsIComponentManager* compMgr, nsIFile* location, const char* loaderStr) = 0;  // 5
  NS_IMETHOD CanUnload(nsIComponentManager* compMgr, PRBool* result) = 0;                              // 6

 protected:
  ~nsIModule() = default;
};

// The one entry point of a component module (C linkage, the platform's C calling convention).
extern "C" {
typedef nsresult (*nsGetModuleProc)(nsIComponentManager* compMgr, nsIFile* location, nsIModule** result);
}
#define NS_GET_MODULE_SYMBOL "NSGetModule"
