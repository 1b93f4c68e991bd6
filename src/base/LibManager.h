// Registry of the process's shared libraries: initialises every registered library once and
// closes them in reverse order.
#pragma once

#include <mutex>
#include <vector>

#include "base/ISharedLibrary.h"

namespace base {

class LibManagerListener {
 public:
  virtual ~LibManagerListener() = default;
  virtual void onLibraryInitialised(ISharedLibrary* library) = 0;
};

class LibManager {
 public:
  static LibManager* getInstance();

  void registerLib(ISharedLibrary* library);
  // Closes the library first when it was initialised.
  void unregisterLib(ISharedLibrary* library);
  // Initialises every registered library not yet initialised.
  void initLibs(AppSettings* settings, AppContext* context, LibManagerListener* listener);

 private:
  struct Entry {
    ISharedLibrary* library;
    bool initialised;
  };
  mutable std::recursive_mutex lock_;
  std::vector<Entry> libraries_;
};

// A static object of this type registers the library when the module is loaded and
// unregisters (closing it) when the module is unloaded.
template <typename Library>
class SharedLibraryAutoReg : public Library {
 public:
  SharedLibraryAutoReg() { LibManager::getInstance()->registerLib(this); }
  ~SharedLibraryAutoReg() override { LibManager::getInstance()->unregisterLib(this); }
};

}  // namespace base
