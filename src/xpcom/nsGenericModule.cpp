#include "xpcom/nsGenericModule.h"

#include <atomic>
#include <new>

#include "docmgr/nsCOMPtr.h"
#include "docmgr/nsIComponentRegistrar.h"
#include "docmgr/nsIFactory.h"
#include "xpcom/nsRefCount.h"

namespace {

// Factories that a host has locked keep the module loaded.
std::atomic<int32_t> factoryLocks{0};

// Reference counting of the module and its factories, which live on the ordinary heap.
template <typename Interface>
class HeapObject : public Interface {
 public:
  NS_IMETHOD QueryInterface(const nsIID& iid, void** result) override {
    if (!result) return NS_ERROR_NULL_POINTER;
    if (iid.Equals(NS_GET_IID(Interface)) || iid.Equals(NS_GET_IID(nsISupports))) {
      this->AddRef();
      *result = static_cast<Interface*>(this);
      return NS_OK;
    }
    *result = nullptr;
    return NS_ERROR_NO_INTERFACE;
  }
  NS_IMETHOD_(nsrefcnt) AddRef() override { return count_.increment(); }
  NS_IMETHOD_(nsrefcnt) Release() override {
    return count_.release([this] { delete this; });
  }

 protected:
  virtual ~HeapObject() = default;

 private:
  nsRefCount count_;
};

class GenericFactory : public HeapObject<nsIFactory> {
 public:
  explicit GenericFactory(const nsModuleComponentInfo* info) : info_(info) {}
  NS_IMETHOD CreateInstance(nsISupports* outer, const nsIID& iid, void** result) override {
    if (!info_->mConstructor) return NS_ERROR_FACTORY_NOT_LOADED;
    return info_->mConstructor(outer, iid, result);
  }
  NS_IMETHOD LockFactory(PRBool lock) override {
    if (lock) ++factoryLocks;
    else if (factoryLocks.load() > 0) --factoryLocks;
    return NS_OK;
  }

 protected:
  ~GenericFactory() override {
    if (info_->mFactoryDestructor) info_->mFactoryDestructor();
  }

 private:
  const nsModuleComponentInfo* info_;
};

class GenericModule : public HeapObject<nsIModule> {
 public:
  explicit GenericModule(const nsModuleInfo* info) : info_(info) {}

  NS_IMETHOD GetClassObject(nsIComponentManager*, const nsCID& cid, const nsIID& iid, void** result) override {
    if (!result) return NS_ERROR_NULL_POINTER;
    *result = nullptr;
    const nsresult started = Initialize();
    if (NS_FAILED(started)) return started;
    const nsModuleComponentInfo* component = Find(cid);
    if (!component) return NS_ERROR_FACTORY_NOT_REGISTERED;
    nsCOMPtr<nsIFactory> factory(new (std::nothrow) GenericFactory(component));
    if (!factory) return NS_ERROR_OUT_OF_MEMORY;
    return factory->QueryInterface(iid, result);
  }

  NS_IMETHOD RegisterSelf(nsIComponentManager* compMgr, nsIFile* location, const char* loaderStr,
                          const char* type) override {
    const nsresult started = Initialize();
    if (NS_FAILED(started)) return started;
    nsCOMPtr<nsIComponentRegistrar> registrar = do_QueryInterface<nsIComponentRegistrar>(compMgr);
    if (!registrar) return NS_ERROR_NO_INTERFACE;
    for (PRUint32 i = 0; i < info_->mCount; ++i) {
      const nsModuleComponentInfo& component = info_->mComponents[i];
      nsresult rv = registrar->RegisterFactoryLocation(component.mCID, component.mDescription,
                                                       component.mContractID, location, loaderStr, type);
      if (NS_SUCCEEDED(rv) && component.mRegisterSelfProc)
        rv = component.mRegisterSelfProc(compMgr, location, loaderStr, type, &component);
      if (NS_FAILED(rv)) return rv;
    }
    return NS_OK;
  }

  NS_IMETHOD UnregisterSelf(nsIComponentManager* compMgr, nsIFile* location, const char* loaderStr) override {
    nsCOMPtr<nsIComponentRegistrar> registrar = do_QueryInterface<nsIComponentRegistrar>(compMgr);
    for (PRUint32 i = 0; i < info_->mCount; ++i) {
      const nsModuleComponentInfo& component = info_->mComponents[i];
      if (component.mUnregisterSelfProc) component.mUnregisterSelfProc(compMgr, location, loaderStr, &component);
      if (registrar) registrar->UnregisterFactoryLocation(component.mCID, location);
    }
    return NS_OK;
  }

  // The module file may go when no factory is locked and no object of the module is alive
  // but the module itself.
  NS_IMETHOD CanUnload(nsIComponentManager*, PRBool* result) override {
    if (!result) return NS_ERROR_NULL_POINTER;
    *result = factoryLocks.load() == 0 && nsRefCount::liveObjects() <= 1 ? PR_TRUE : PR_FALSE;
    return NS_OK;
  }

 protected:
  ~GenericModule() override {
    if (initialised_ && info_->mDtor) info_->mDtor(const_cast<nsModuleInfo*>(info_));
  }

 private:
  const nsModuleComponentInfo* Find(const nsCID& cid) const {
    for (PRUint32 i = 0; i < info_->mCount; ++i)
      if (info_->mComponents[i].mCID.Equals(cid)) return &info_->mComponents[i];
    return nullptr;
  }

  // The module constructor runs on first use.
  nsresult Initialize() {
    if (initialised_) return NS_OK;
    if (info_->mCtor) {
      const nsresult rv = info_->mCtor(const_cast<nsModuleInfo*>(info_));
      if (NS_FAILED(rv)) return rv;
    }
    initialised_ = true;
    return NS_OK;
  }

  const nsModuleInfo* info_;
  bool initialised_ = false;
};

}  // namespace

nsresult NS_NewGenericModule2(const nsModuleInfo* info, nsIModule** result) {
  if (!info || !result) return NS_ERROR_NULL_POINTER;
  *result = nullptr;
  if (info->mVersion != NS_MODULEINFO_VERSION) return NS_ERROR_INVALID_ARG;
  nsIModule* module = new (std::nothrow) GenericModule(info);
  if (!module) return NS_ERROR_OUT_OF_MEMORY;
  module->AddRef();
  *result = module;
  return NS_OK;
}
