// A small component host: opens module files, calls their NSGetModule, learns their
// components from the registration calls the modules make, and creates components by
// contract id or class id. Used by the tests and the tool, as a client's host would be.
//
// Ownership: the loader owns the modules and unloads their files when it is destroyed;
// every component created through it must be released before that.
// Thread safety: none; load modules and create components from one thread.
#pragma once

#include <string>
#include <vector>

#include "docmgr/nsCOMPtr.h"
#include "docmgr/nsIModule.h"

class nsHostLoader {
 public:
  struct Registration {
    nsCID cid;
    std::string className;
    std::string contractId;
    std::string location;
  };

  nsHostLoader();
  // Releases the modules, then unloads their files. Every component must be released first.
  ~nsHostLoader();
  nsHostLoader(const nsHostLoader&) = delete;
  nsHostLoader& operator=(const nsHostLoader&) = delete;

  // Opens a module file; on failure returns an error status and sets lastError().
  nsresult loadModule(const std::string& file);
  // Adds a module linked into the process.
  nsresult addModule(nsGetModuleProc getModule, const std::string& location);

  nsresult createInstance(const nsCID& cid, nsISupports* outer, const nsIID& iid, void** result);
  nsresult createInstanceByContractID(const char* contractId, nsISupports* outer, const nsIID& iid,
                                      void** result);

  template <typename T>
  nsCOMPtr<T> create(const char* contractId) {
    void* result = nullptr;
    if (NS_FAILED(createInstanceByContractID(contractId, nullptr, NS_GET_IID(T), &result))) return nsCOMPtr<T>();
    return nsCOMPtr<T>::adopt(static_cast<T*>(result));
  }

  std::vector<Registration> registrations() const;
  const std::string& lastError() const { return lastError_; }

 private:
  class Manager;
  nsCOMPtr<Manager> manager_;
  std::vector<void*> handles_;
  std::string lastError_;
};
