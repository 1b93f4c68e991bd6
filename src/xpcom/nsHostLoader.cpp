#include "docmgr/nsHostLoader.h"

#include <cstdlib>
#include <cstring>

#include "text/String.h"
#include "platform/ncPlatform.h"
#include "docmgr/nsIComponentRegistrar.h"
#include "docmgr/nsIFactory.h"
#include "xpcom/nsRefCount.h"

// The host's component manager and registrar in one object, laid out as the frozen
// interfaces so that any module built against them can register and create through it.
class nsHostLoader::Manager : public nsIComponentManager, public nsIComponentRegistrar {
 public:
  NS_IMETHOD QueryInterface(const nsIID& iid, void** result) override {
    if (!result) return NS_ERROR_NULL_POINTER;
    if (iid.Equals(NS_GET_IID(nsIComponentManager)) || iid.Equals(NS_GET_IID(nsISupports))) {
      *result = static_cast<nsIComponentManager*>(this);
    } else if (iid.Equals(NS_GET_IID(nsIComponentRegistrar))) {
      *result = static_cast<nsIComponentRegistrar*>(this);
    } else {
      *result = nullptr;
      return NS_ERROR_NO_INTERFACE;
    }
    AddRef();
    return NS_OK;
  }
  NS_IMETHOD_(nsrefcnt) AddRef() override { return count_.increment(); }
  NS_IMETHOD_(nsrefcnt) Release() override {
    return count_.release([this] { delete this; });
  }

  // ---- nsIComponentRegistrar -------------------------------------------------------------
  NS_IMETHOD AutoRegister(nsIFile*) override { return NS_ERROR_NOT_IMPLEMENTED; }
  NS_IMETHOD AutoUnregister(nsIFile*) override { return NS_ERROR_NOT_IMPLEMENTED; }

  NS_IMETHOD RegisterFactory(const nsCID& cid, const char* className, const char* contractId,
                             nsIFactory* factory) override {
    if (!factory) return NS_ERROR_NULL_POINTER;
    if (Find(cid)) return NS_ERROR_FACTORY_EXISTS;
    Add(cid, className, contractId, "");
    entries.back().factory = factory;
    return NS_OK;
  }

  NS_IMETHOD UnregisterFactory(const nsCID& cid, nsIFactory* factory) override {
    Entry* entry = Find(cid);
    if (!entry || entry->factory.get() != factory) return NS_ERROR_FACTORY_NOT_REGISTERED;
    Remove(entry);
    return NS_OK;
  }

  NS_IMETHOD RegisterFactoryLocation(const nsCID& cid, const char* className, const char* contractId, nsIFile*,
                                     const char* loaderStr, const char*) override {
    if (Find(cid)) return NS_ERROR_FACTORY_EXISTS;
    Add(cid, className, contractId, loaderStr);
    entries.back().module = registering;
    return NS_OK;
  }

  NS_IMETHOD UnregisterFactoryLocation(const nsCID& cid, nsIFile*) override {
    Entry* entry = Find(cid);
    if (!entry) return NS_ERROR_FACTORY_NOT_REGISTERED;
    Remove(entry);
    return NS_OK;
  }

  NS_IMETHOD IsCIDRegistered(const nsCID& cid, PRBool* result) override {
    if (!result) return NS_ERROR_NULL_POINTER;
    *result = Find(cid) ? PR_TRUE : PR_FALSE;
    return NS_OK;
  }

  NS_IMETHOD IsContractIDRegistered(const char* contractId, PRBool* result) override {
    if (!contractId || !result) return NS_ERROR_NULL_POINTER;
    *result = FindContract(contractId) ? PR_TRUE : PR_FALSE;
    return NS_OK;
  }

  // This host keeps no enumerators; registrations() lists what is registered.
  NS_IMETHOD EnumerateCIDs(nsISimpleEnumerator**) override { return NS_ERROR_NOT_IMPLEMENTED; }
  NS_IMETHOD EnumerateContractIDs(nsISimpleEnumerator**) override { return NS_ERROR_NOT_IMPLEMENTED; }

  NS_IMETHOD CIDToContractID(const nsCID& cid, char** result) override {
    if (!result) return NS_ERROR_NULL_POINTER;
    *result = nullptr;
    const Entry* entry = Find(cid);
    if (!entry) return NS_ERROR_FACTORY_NOT_REGISTERED;
    *result = static_cast<char*>(std::malloc(entry->registration.contractId.size() + 1));
    if (!*result) return NS_ERROR_OUT_OF_MEMORY;
    std::memcpy(*result, entry->registration.contractId.c_str(), entry->registration.contractId.size() + 1);
    return NS_OK;
  }

  NS_IMETHOD ContractIDToCID(const char* contractId, nsCID** result) override {
    if (!contractId || !result) return NS_ERROR_NULL_POINTER;
    *result = nullptr;
    const Entry* entry = FindContract(contractId);
    if (!entry) return NS_ERROR_FACTORY_NOT_REGISTERED;
    *result = static_cast<nsCID*>(std::malloc(sizeof(nsCID)));
    if (!*result) return NS_ERROR_OUT_OF_MEMORY;
    **result = entry->registration.cid;
    return NS_OK;
  }

  // ---- nsIComponentManager ---------------------------------------------------------------
  NS_IMETHOD GetClassObject(const nsCID& cid, const nsIID& iid, void** result) override {
    if (!result) return NS_ERROR_NULL_POINTER;
    *result = nullptr;
    const Entry* entry = Find(cid);
    if (!entry) return NS_ERROR_FACTORY_NOT_REGISTERED;
    if (entry->factory) return entry->factory->QueryInterface(iid, result);
    return entry->module->GetClassObject(static_cast<nsIComponentManager*>(this), cid, iid, result);
  }

  NS_IMETHOD GetClassObjectByContractID(const char* contractId, const nsIID& iid, void** result) override {
    if (!contractId || !result) return NS_ERROR_NULL_POINTER;
    *result = nullptr;
    const Entry* entry = FindContract(contractId);
    return entry ? GetClassObject(entry->registration.cid, iid, result) : NS_ERROR_FACTORY_NOT_REGISTERED;
  }

  NS_IMETHOD CreateInstance(const nsCID& cid, nsISupports* outer, const nsIID& iid, void** result) override {
    if (!result) return NS_ERROR_NULL_POINTER;
    *result = nullptr;
    void* object = nullptr;
    const nsresult rv = GetClassObject(cid, NS_GET_IID(nsIFactory), &object);
    if (NS_FAILED(rv)) return rv;
    nsCOMPtr<nsIFactory> factory = nsCOMPtr<nsIFactory>::adopt(static_cast<nsIFactory*>(object));
    return factory->CreateInstance(outer, iid, result);
  }

  NS_IMETHOD CreateInstanceByContractID(const char* contractId, nsISupports* outer, const nsIID& iid,
                                        void** result) override {
    if (!contractId || !result) return NS_ERROR_NULL_POINTER;
    *result = nullptr;
    const Entry* entry = FindContract(contractId);
    return entry ? CreateInstance(entry->registration.cid, outer, iid, result) : NS_ERROR_FACTORY_NOT_REGISTERED;
  }

  struct Entry {
    Registration registration;
    nsIModule* module = nullptr;      // registered by location: the module that creates it
    nsCOMPtr<nsIFactory> factory;     // registered as a factory object
  };

  std::vector<Entry> entries;
  std::vector<nsCOMPtr<nsIModule>> modules;
  nsIModule* registering = nullptr;

 protected:
  virtual ~Manager() = default;

 private:
  void Add(const nsCID& cid, const char* className, const char* contractId, const char* location) {
    Entry entry;
    entry.registration = Registration{cid, className ? className : "", contractId ? contractId : "",
                                      location ? location : ""};
    entries.push_back(std::move(entry));
  }
  void Remove(Entry* entry) { entries.erase(entries.begin() + (entry - entries.data())); }
  Entry* Find(const nsCID& cid) {
    for (Entry& entry : entries)
      if (entry.registration.cid.Equals(cid)) return &entry;
    return nullptr;
  }
  const Entry* FindContract(const char* contractId) const {
    for (const Entry& entry : entries)
      if (entry.registration.contractId == contractId) return &entry;
    return nullptr;
  }

  nsRefCount count_;
};

nsHostLoader::nsHostLoader() : manager_(new Manager) {}

nsHostLoader::~nsHostLoader() {
  manager_->entries.clear();  // factories registered as objects go first
  manager_->modules.clear();
  manager_ = nullptr;  // the module files stay loaded until every object of theirs is gone
  for (auto handle = handles_.rbegin(); handle != handles_.rend(); ++handle) platform::UnloadModuleFile(*handle);
}

nsresult nsHostLoader::addModule(nsGetModuleProc getModule, const std::string& location) {
  nsIModule* module = nullptr;
  nsIComponentManager* compMgr = manager_.get();
  nsresult rv = getModule(compMgr, nullptr, &module);
  if (NS_FAILED(rv) || !module) {
    lastError_ = location + ": NSGetModule failed";
    return NS_FAILED(rv) ? rv : NS_ERROR_FAILURE;
  }
  manager_->modules.push_back(nsCOMPtr<nsIModule>::adopt(module));
  manager_->registering = module;
  rv = module->RegisterSelf(compMgr, nullptr, location.c_str(), "native");
  manager_->registering = nullptr;
  if (NS_FAILED(rv)) lastError_ = location + ": the module could not register its components";
  return rv;
}

nsresult nsHostLoader::loadModule(const std::string& file) {
  void* handle = platform::LoadModuleFile(base::FromUtf8(file));
  if (!handle) {
    lastError_ = file + ": " + platform::LastModuleError();
    return NS_ERROR_FACTORY_NOT_LOADED;
  }
  void* symbol = platform::FindModuleSymbol(handle, NS_GET_MODULE_SYMBOL);
  if (!symbol) {
    lastError_ = file + ": no " NS_GET_MODULE_SYMBOL;
    platform::UnloadModuleFile(handle);
    return NS_ERROR_FACTORY_NOT_LOADED;
  }
  handles_.push_back(handle);
  nsGetModuleProc getModule;
  std::memcpy(&getModule, &symbol, sizeof getModule);
  return addModule(getModule, file);
}

nsresult nsHostLoader::createInstance(const nsCID& cid, nsISupports* outer, const nsIID& iid, void** result) {
  return manager_->CreateInstance(cid, outer, iid, result);
}

nsresult nsHostLoader::createInstanceByContractID(const char* contractId, nsISupports* outer, const nsIID& iid,
                                                  void** result) {
  return manager_->CreateInstanceByContractID(contractId, outer, iid, result);
}

std::vector<nsHostLoader::Registration> nsHostLoader::registrations() const {
  std::vector<Registration> list;
  for (const Manager::Entry& entry : manager_->entries) list.push_back(entry.registration);
  return list;
}
