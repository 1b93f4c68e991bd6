#include "base/LibManager.h"

#include <algorithm>

namespace base {

AppSettings* AppSettings::getCFLAppSettings() {
  static AppSettings settings;
  return &settings;
}

AppContext* AppContext::getInstance() {
  static AppContext context;
  return &context;
}

LibManager* LibManager::getInstance() {
  // Created by the first registrar, so it is destroyed after the registrars.
  static LibManager instance;
  return &instance;
}

void LibManager::registerLib(ISharedLibrary* library) {
  std::lock_guard<std::recursive_mutex> guard(lock_);
  libraries_.push_back(Entry{library, false});
}

void LibManager::unregisterLib(ISharedLibrary* library) {
  std::lock_guard<std::recursive_mutex> guard(lock_);
  auto entry = std::find_if(libraries_.begin(), libraries_.end(),
                            [library](const Entry& e) { return e.library == library; });
  if (entry == libraries_.end()) return;
  if (entry->initialised) library->onCloseLibrary();
  libraries_.erase(entry);
}

void LibManager::initLibs(AppSettings* settings, AppContext* context, LibManagerListener* listener) {
  std::lock_guard<std::recursive_mutex> guard(lock_);
  for (Entry& entry : libraries_) {
    if (entry.initialised) continue;
    entry.library->onInitLibrary(settings, context);
    entry.initialised = true;
    if (listener) listener->onLibraryInitialised(entry.library);
  }
}

}  // namespace base
