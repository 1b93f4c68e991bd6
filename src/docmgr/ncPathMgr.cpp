#include "docmgr/ncPathMgr.h"

#include "docmgr/ncDocMgrLibrary.h"
#include "docmgr/ncDocUtils.h"
#include "docmgr/ncModuleAllocator.h"
#include "platform/ncPlatform.h"

namespace {

const char16_t kDataDirectorySuffix[] = u".kestrove.cache";
const char16_t kLongPathPrefix[] = u"\\\\?\\";

// Relative paths are stored with "\"; the file system's separator may differ.
String ToNativeSeparators(const String& relPath) {
  String native = relPath;
  if (base::Path::kSeparator != u'\\')
    for (auto& unit : native)
      if (unit == u'\\') unit = base::Path::kSeparator;
  return native;
}

String ToStoredSeparators(const String& path) {
  String stored = path;
  for (auto& unit : stored)
    if (unit == base::Path::kSeparator) unit = u'\\';
  return stored;
}

}  // namespace

NC_IMPL_POOLED_ISUPPORTS1(ncPathMgr, ncIPathMgr)

ncPathMgr::ncPathMgr() { NC_TRACE(u"this: 0x%p", this); }

ncPathMgr::~ncPathMgr() { NC_TRACE(u"this: 0x%p", this); }

void ncPathMgr::Init(const String& path, bool isLocalSync) {
  NC_TRACE(u"path: %s", path);
  NC_CHECK_PATH(path);
  isLocalSync_ = isLocalSync;
  rootPath_ = path;
  const size_t colon = path.find(u':');
  isDriveRoot_ = isLocalSync && colon != String::npos && colon + 1 == path.size();
  const size_t separator = path.rfind(base::Path::kSeparator);
  parentPath_ = separator == String::npos ? String() : path.substr(0, separator);
  dbPath_ = base::Path::combine(path, kDataDirectorySuffix);
  unsyncDocPath_ = base::Path::combine(rootPath_, ncDocMgrLibrary::loadString(u"IDS_UNSYNC_DOC"));
}

String ncPathMgr::GetRootPath() {
  NC_TRACE(u"this: 0x%p", this);
  return rootPath_;
}

void ncPathMgr::SetUserName(const String& name) {
  NC_TRACE(u"name: %s", name);
  userName_ = name;
}

bool ncPathMgr::IsInRootPath(const String& path, bool includeSelf) {
  NC_TRACE(u"path: %s", path);
  NC_CHECK_PATH(path);
  return ncDocUtils::IsParentPath(rootPath_, path, includeSelf);
}

String ncPathMgr::GetDBPath() {
  NC_TRACE(u"this: 0x%p", this);
  return dbPath_;
}

bool ncPathMgr::IsInDBPath(const String& path, bool includeSelf) {
  NC_TRACE(u"path: %s", path);
  NC_CHECK_PATH(path);
  return ncDocUtils::IsParentPath(dbPath_, path, includeSelf);
}

String ncPathMgr::GetUnsyncDocPath() {
  NC_TRACE(u"this: 0x%p", this);
  return unsyncDocPath_;
}

bool ncPathMgr::IsInUnsyncDoc(const String& path, bool includeSelf) {
  NC_TRACE(u"path: %s", path);
  NC_CHECK_PATH(path);
  return ncDocUtils::IsParentPath(unsyncDocPath_, path, includeSelf);
}

String ncPathMgr::GetAbsolutePath(const String& relPath) {
  NC_TRACE(u"path: %s", relPath);
  NC_CHECK_PATH(relPath);
  const String trimmed = ToNativeSeparators(base::Trim(relPath, u'\\'));
  if (!isLocalSync_) return base::Path::combine(rootPath_, trimmed);
  if (isDriveRoot_) return trimmed;
  return base::Path::combine(parentPath_, trimmed);
}

String ncPathMgr::GetRelativePath(const String& path) {
  NC_TRACE(u"path: %s", path);
  NC_CHECK_PATH(path);
  const String plain = base::StartsWith(path, kLongPathPrefix) ? path.substr(4) : path;
  const String& base = isLocalSync_ ? parentPath_ : rootPath_;
  if (base.empty() ? !isDriveRoot_ : !ncDocUtils::IsParentPath(base, plain, true))
    NC_THROW(NC_ERR_INVALID_ARG, ncDocMgrLibrary::loadString(u"IDS_NOT_IN_ROOT_PATH"), path);
  String relative;
  if (!isLocalSync_) relative = plain.substr(rootPath_.size() < plain.size() ? rootPath_.size() : plain.size());
  else if (isDriveRoot_) relative = plain;
  else relative = plain.substr(parentPath_.size() < plain.size() ? parentPath_.size() : plain.size());
  return base::Trim(ToStoredSeparators(relative), u'\\');
}
