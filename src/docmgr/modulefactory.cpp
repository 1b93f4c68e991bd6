// The component module: its description, the component constructors, the once-only
// library start-up, and the one exported entry point, NSGetModule.
#include <new>

#include "base/LibManager.h"
#include "base/ThreadMutexLock.h"
#include "docmgr/ncDocMgr.h"
#include "docmgr/ncDocMgrLibrary.h"
#include "docmgr/ncUpgradeMgr.h"
#include "platform/ncExport.h"
#include "xpcom/nsGenericModule.h"

namespace {

base::ThreadMutexLock startupLock;
bool started = false;

// Registers the library object with the library manager when the module is loaded.
base::SharedLibraryAutoReg<ncDocMgrLibrary> libraryRegistrar;

template <typename Component>
nsresult ConstructComponent(nsISupports* outer, const nsIID& iid, void** result) {
  if (!result) return NS_ERROR_NULL_POINTER;
  *result = nullptr;
  if (outer) return NS_ERROR_NO_AGGREGATION;
  Component* component = nullptr;
  try {
    component = new (std::nothrow) Component();
  } catch (...) {
    return NS_ERROR_OUT_OF_MEMORY;
  }
  if (!component) return NS_ERROR_OUT_OF_MEMORY;
  component->AddRef();
  const nsresult rv = component->QueryInterface(iid, result);
  component->Release();  // an unsupported interface frees the component here
  return rv;
}

nsresult StartLibrary(nsModuleInfo*) {
  base::AutoLock guard(startupLock);
  if (started) return NS_OK;
  started = true;
  base::LibManager::getInstance()->initLibs(base::AppSettings::getCFLAppSettings(), base::AppContext::getInstance(),
                                            nullptr);
  return NS_OK;
}

const nsModuleComponentInfo kComponents[] = {
    {"ncUpgradeMgr", NC_UPGRADEMGR_CID, NC_UPGRADEMGR_CONTRACTID, ConstructComponent<ncUpgradeMgr>, nullptr, nullptr,
     nullptr, nullptr, nullptr, nullptr, 0},
    {"ncDocMgr", NC_DOCMGR_CID, NC_DOCMGR_CONTRACTID, ConstructComponent<ncDocMgr>, nullptr, nullptr, nullptr,
     nullptr, nullptr, nullptr, 0},
};

// The module name keeps the L and the quotes, as hosts have always seen it.
const nsModuleInfo kModuleInfo = {NS_MODULEINFO_VERSION, "L\"docmgr\"", kComponents, 2, StartLibrary, nullptr};

}  // namespace

extern "C" NC_EXPORT nsresult NSGetModule(nsIComponentManager*, nsIFile*,
                                                                       nsIModule** result) {
  return NS_NewGenericModule2(&kModuleInfo, result);
}
