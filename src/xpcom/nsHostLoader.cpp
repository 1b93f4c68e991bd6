#include "xpcom/nsHostLoader.h"

#include <atomic>
#include <cstring>

#include "base/String.h"
#include "platform/ncPlatform.h"

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
  NS_IMETHOD_(nsrefcnt) AddRef() override { return ++count_; }
  NS_IMETHOD_(nsrefcnt) Release() override {
    const nsrefcnt count = --count_;
    if (count == 0) delete this;
    return count;
  }

  NS_IMETHOD RegisterFactoryLocation(const nsCID& cid, const char* className, const char* contractId, nsIFile*,
                                     const char* loaderStr, const char*) override {
    registrations.push_back(Registration{cid, className ? className : "", contractId ? contractId : "",
                                         loaderStr ? loaderStr : ""});
    owners.push_back(registering);
    return NS_OK;
  }

  NS_IMETHOD GetClassObject(const nsCID& cid, const nsIID& iid, void** result) override {
    for (size_t i = 0; i < registrations.size(); ++i)
      if (registrations[i].cid.Equals(cid)) return owners[i]->GetClassObject(this, cid, iid, result);
    return NS_ERROR_FACTORY_NOT_REGISTERED;
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
    if (!contractId) return NS_ERROR_NULL_POINTER;
    for (const Registration& registration : registrations)
      if (registration.contractId == contractId) return CreateInstance(registration.cid, outer, iid, result);
    if (result) *result = nullptr;
    return NS_ERROR_FACTORY_NOT_REGISTERED;
  }

  std::vector<Registration> registrations;
  std::vector<nsIModule*> owners;     // the module of each registration
  std::vector<nsIModule*> modules;    // one reference each
  nsIModule* registering = nullptr;

 private:
  ~Manager() override = default;
  std::atomic<nsrefcnt> count_{0};
};

nsHostLoader::nsHostLoader() : manager_(new Manager) { manager_->AddRef(); }

nsHostLoader::~nsHostLoader() {
  for (nsIModule* module : manager_->modules) module->Release();
  manager_->modules.clear();
  manager_->Release();
  for (auto handle = handles_.rbegin(); handle != handles_.rend(); ++handle) platform::UnloadModuleFile(*handle);
}

nsresult nsHostLoader::addModule(nsGetModuleProc getModule, const std::string& location) {
  nsIModule* module = nullptr;
  nsresult rv = getModule(manager_, nullptr, &module);
  if (NS_FAILED(rv) || !module) {
    lastError_ = location + ": NSGetModule failed";
    return NS_FAILED(rv) ? rv : NS_ERROR_FAILURE;
  }
  manager_->modules.push_back(module);
  manager_->registering = module;
  rv = module->RegisterSelf(manager_, nullptr, location.c_str(), "native");
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

const std::vector<nsHostLoader::Registration>& nsHostLoader::registrations() const {
  return manager_->registrations;
}
