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

// Created by onInitLibrary and destroyed by onCloseLibrary. Plain pointers on purpose: the
// close runs while the module's statics are destroyed, and an owning global could already
// be gone by then.
base::MoResourceLoader* resourceLoader = nullptr;
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
    delete resourceLoader;
    resourceLoader = new base::MoResourceLoader(file, kBuiltInTexts);
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
  delete resourceLoader;
  resourceLoader = nullptr;
  if (base::ncModulePool::getInstance() && moduleAllocator) {
    base::ncBasePool::deleteAllocator(moduleAllocator);
    moduleAllocator = nullptr;
  }
}

base::ncIAllocator* ncDocMgrLibrary::getAllocator() { return moduleAllocator; }

base::MoResourceLoader* ncDocMgrLibrary::getResourceLoader() {
  // Texts stay available before start-up and after close: built-in English.
  static base::MoResourceLoader builtInOnly(base::String(), kBuiltInTexts);
  return resourceLoader ? resourceLoader : &builtInOnly;
}

base::String ncDocMgrLibrary::loadString(const base::String& key) { return getResourceLoader()->getString(key); }
