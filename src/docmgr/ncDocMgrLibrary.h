// The library object of the module: started once per process by the library manager, it
// opens the module's message catalogue and creates the allocator "docMgrAlloc".
#pragma once

#include "base/ISharedLibrary.h"
#include "base/MoResourceLoader.h"
#include "base/ncIAllocator.h"

class ncDocMgrLibrary : public base::ISharedLibrary {
 public:
  ncDocMgrLibrary();
  ~ncDocMgrLibrary() override = default;
  void onInitLibrary(base::AppSettings* settings, base::AppContext* context) override;
  void onCloseLibrary() override;
  void onLibraryEvent() override {}
  void onLibraryIdle() override {}
  const char16_t* getLibraryName() const override { return u"docmgr"; }

  static base::ncIAllocator* getAllocator();
  static base::MoResourceLoader* getResourceLoader();
  // The text of a resource key: the catalogue's, else the built-in English text.
  static base::String loadString(const base::String& key);
};

// Formats the text of a resource key: NC_RESOURCE_TEXT(u"IDS_NOT_IN_ROOT_PATH", path).
#define NC_RESOURCE_TEXT(key, ...) \
  ::base::FormatResource(ncDocMgrLibrary::getResourceLoader(), key, ##__VA_ARGS__)
