// The frozen component registrar interface: where a module announces its components.
// Strings and class ids handed out (CIDToContractID, ContractIDToCID) are allocated with
// malloc; the caller frees them with free.
#pragma once

#include "docmgr/nsISupports.h"

class nsIFactory;
class nsIFile;
class nsISimpleEnumerator;

#define NS_ICOMPONENTREGISTRAR_IID {0x2417cbfe, 0x65ad, 0x48a6, {0xb4, 0xb6, 0xeb, 0x84, 0xdb, 0x17, 0x43, 0x92}}

class nsIComponentRegistrar : public nsISupports {
 public:
  NS_DECLARE_STATIC_IID_ACCESSOR(NS_ICOMPONENTREGISTRAR_IID)

  NS_IMETHOD AutoRegister(nsIFile* location) = 0;                                                      // 3
  NS_IMETHOD AutoUnregister(nsIFile* location) = 0;                                                    // 4
  NS_IMETHOD RegisterFactory(const nsCID& cid, const char* className, const char* contractId,
                             nsIFactory* factory) = 0;                                             // 5
  NS_IMETHOD UnregisterFactory(const nsCID& cid, nsIFactory* factory) = 0;                         // 6
  NS_IMETHOD RegisterFactoryLocation(const nsCID& cid, const char* className, const char* contractId,
                                     nsIFile* file, const char* loaderStr, const char* type) = 0;  // 7
  NS_IMETHOD UnregisterFactoryLocation(const nsCID& cid, nsIFile* file) = 0;                       // 8
  NS_IMETHOD IsCIDRegistered(const nsCID& cid, PRBool* result) = 0;                                // 9
  NS_IMETHOD IsContractIDRegistered(const char* contractId, PRBool* result) = 0;                   // 10
  NS_IMETHOD EnumerateCIDs(nsISimpleEnumerator** result) = 0;                                      // 11
  NS_IMETHOD EnumerateContractIDs(nsISimpleEnumerator** result) = 0;                               // 12
  NS_IMETHOD CIDToContractID(const nsCID& cid, char** result) = 0;                                 // 13
  NS_IMETHOD ContractIDToCID(const char* contractId, nsCID** result) = 0;                          // 14

 protected:
  ~nsIComponentRegistrar() = default;
};
