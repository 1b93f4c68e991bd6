#include "docmgr/ncDocMgrLibrary.h"

#include <cstdint>
#include <limits>
#include <memory>

#include "docmgr/Exception.h"
#include "base/ResourceFile.h"
#include "base/SystemLog.h"
#include "base/ncBasePool.h"
#include "base/ncModulePool.h"

namespace {

// The module-wide state of the library object. The loader is owned from onInitLibrary to
// onCloseLibrary; its holder is never destroyed, because the library closes while the
// module's statics are destroyed, in an order no translation unit controls. The allocator
// belongs to the pool, which takes it back at close.
std::unique_ptr<base::MoResourceLoader>& ResourceLoader() {
  static auto* const holder = new std::unique_ptr<base::MoResourceLoader>();
  return *holder;
}
base::ncIAllocator* moduleAllocator = nullptr;

// English texts used when no catalogue is found; the catalogues carry the same keys.
const base::ResourceText kBuiltInTexts[] = {
    {"IDS_NOT_IN_ROOT_PATH", "The path %s is not inside the sync folder."},
    {"IDS_UNSYNC_DOC", "Unsynchronized Documents"},
    {"IDS_SET_ADS_ERR", "Could not write the synchronization tag of %s."},
    {"IDS_REMOVE_ADS_ERR", "Could not remove the synchronization tag of %s."},
    {"IDS_RENAME_NOT_SAME_PARENT", "Cannot rename %s to %s: a rename must stay in the same folder."},
    {"IDS_VERSION_INCOMPATIBLE",
     "The local synchronization data was written by a version of the client that this version cannot read."},
    {"IDS_MY_DOC", "My Documents"},
    {"IDS_SHARE_GROUP_DOC", "Shared Group Documents"},
    {"IDS_ORG_DOC", "Organization Documents"},
    {"IDS_SHARE_DOC", "Shared with Me"},
    {"IDS_ARCHIVE_DOC", "Archive"},
    {"IDS_MY_GROUP_DOC", "My Groups"},
    {nullptr, nullptr},
};

}  // namespace

// The pool must outlive the library's close, which runs when the module unloads: creating
// it first makes it the last of the two to be destroyed.
ncDocMgrLibrary::ncDocMgrLibrary() { base::ncModulePool::getInstance(); }

void ncDocMgrLibrary::onInitLibrary(base::AppSettings* settings, base::AppContext* context) {
  try {
    const base::String file = base::ResourceFile::getResourceFileName(
        u"docmgr", settings, context, u"mo", reinterpret_cast<const void*>(&kBuiltInTexts));
    ResourceLoader() = std::make_unique<base::MoResourceLoader>(file, kBuiltInTexts);
    if (base::ncModulePool::getInstance() && !moduleAllocator)
      moduleAllocator = base::ncBasePool::createAllocator("docMgrAlloc", 0, std::numeric_limits<int64_t>::max());
  } catch (const base::Exception&) {
    base::SystemLog::log(2, base::Format(u"%s %s %d", base::SourcePath(__FILE__),
                                         u"ncDocMgrLibrary::onInitLibrary", 65));
  } catch (const std::exception&) {
    base::SystemLog::log(2, base::Format(u"%s %s %d", base::SourcePath(__FILE__),
                                         u"ncDocMgrLibrary::onInitLibrary", 65));
  }
}

void ncDocMgrLibrary::onCloseLibrary() {
  ResourceLoader().reset();
  if (base::ncModulePool::getInstance() && moduleAllocator) {
    base::ncBasePool::deleteAllocator(moduleAllocator);
    moduleAllocator = nullptr;
  }
}

base::ncIAllocator* ncDocMgrLibrary::getAllocator() { return moduleAllocator; }

base::MoResourceLoader* ncDocMgrLibrary::getResourceLoader() {
  // Texts stay available before start-up and after close: built-in English.
  static base::MoResourceLoader builtInOnly(base::String(), kBuiltInTexts);
  return ResourceLoader() ? ResourceLoader().get() : &builtInOnly;
}

base::String ncDocMgrLibrary::loadString(const base::String& key) { return getResourceLoader()->getString(key); }
