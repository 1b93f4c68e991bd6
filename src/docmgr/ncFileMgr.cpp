#include "docmgr/ncFileMgr.h"

#include "base/Directory.h"
#include "base/File.h"
#include "base/ResourceFile.h"
#include "docmgr/ncADSMgr.h"
#include "docmgr/ncDocMgrLibrary.h"
#include "docmgr/ncModuleAllocator.h"
#include "platform/ncADSUtil.h"
#include "platform/ncPlatform.h"
#include "platform/ncShellUtil.h"
#include "platform/ncSystemFileWrapper.h"

using base::String;

namespace {

// Streams taken off an item that leaves synchronisation (MoveNoADS), in this order.
const char16_t* const kAllStreams[] = {ncADSMgr::kDocIdStream, ncADSMgr::kDelayStream, ncADSMgr::kStatusStream,
                                       ncADSMgr::kVrTypeStream, ncADSMgr::kErrMarkStream};
// Streams taken off a duplicate set aside: it is no longer that document and has no error.
const char16_t* const kDuplicateStreams[] = {ncADSMgr::kDocIdStream, ncADSMgr::kErrMarkStream};

// The top-folder kinds, tested in this order; the first bit set decides.
struct FolderKind {
  int bit;
  const char16_t* key;
  const char16_t* order;  // sorts the top folders in the shell
  int iconIndex;
};
const FolderKind kFolderKinds[] = {
    {1, u"IDS_MY_DOC", u"1", 5},       {2, u"IDS_SHARE_GROUP_DOC", u"3", 7}, {4, u"IDS_ORG_DOC", u"5", 9},
    {8, u"IDS_SHARE_DOC", u"4", 6},    {16, u"IDS_ARCHIVE_DOC", u"6", 10},   {32, u"IDS_MY_GROUP_DOC", u"2", 8},
    {4096, u"IDS_UNSYNC_DOC", u"Z", 12},
};
const int kOrganisationBit = 4;

// The part of newPath before the extension, and the extension; a folder has no extension.
void SplitForNumbering(const String& srcPath, const String& newPath, String& stem, String& extension) {
  extension = base::Directory::exists(srcPath) ? String() : base::Path::getExtensionName(newPath);
  stem = newPath.substr(0, newPath.size() - extension.size());
}

}  // namespace

NC_IMPL_POOLED_ISUPPORTS1(ncFileMgr, ncIFileMgr)

ncFileMgr::ncFileMgr(ncIPathMgr* pathMgr) {
  NC_TRACE(u"this: 0x%p", this);
  NC_CHECK_NOT_NULL(pathMgr, u"pathMgr");
  pathMgr_ = pathMgr;
}

ncFileMgr::~ncFileMgr() { NC_TRACE(u"this: 0x%p", this); }

void ncFileMgr::EnsureParentFolder(const String& path) {
  const String parent = base::Path::getDirectoryName(path);
  if (!parent.empty() && !base::Directory::exists(parent)) base::Directory::create(parent);
}

void ncFileMgr::RemoveStreams(const String& path, const char16_t* const* streams, size_t count) {
  const String target = platform::AddLongPathPrefix(path);
  for (size_t i = 0; i < count; ++i) ncADSUtil::RemoveADS(target, streams[i]);  // a failure leaves a tag, no more
}

void ncFileMgr::ClearTempPath(const String& source, const String& tmp) {
  if (base::File::exists(platform::AddLongPathPrefix(source))) Delete(tmp);
}

String ncFileMgr::RenameToTempPath(const String& path, const String& docId) {
  const String tmp = pathMgr_->GetContainDocIdTempPathName(path, docId);
  ClearTempPath(path, tmp);
  Rename(path, tmp);
  return tmp;
}

void ncFileMgr::Move(const String& srcPath, String& newPath) {
  NC_TRACE(u"srcPath: %s, newPath: %s", srcPath, newPath);
  NC_CHECK_PATH(srcPath);
  NC_CHECK_PATH(newPath);
  EnsureParentFolder(newPath);
  const String source = platform::AddLongPathPrefix(srcPath);
  bool moved = platform::MoveFile(source, platform::AddLongPathPrefix(newPath));
  if (moved) return;
  uint32_t code = platform::GetLastError();
  if (code == platform::kErrorAlreadyExists || code == platform::kErrorFileExists) {
    String stem, extension;
    SplitForNumbering(source, newPath, stem, extension);
    int number = 2;
    // A code 80 asks for one more number even after a success, as the system may leave a
    // stale 80 behind; that attempt then finds no source and ends quietly.
    do {
      newPath = base::Format(u"%s (%d)%s", stem, number++, extension);
      moved = platform::MoveFile(source, platform::AddLongPathPrefix(newPath));
      code = platform::GetLastError();
    } while ((!moved && code == platform::kErrorAlreadyExists) || code == platform::kErrorFileExists);
  }
  if (moved || code == platform::kErrorFileNotFound) return;
  throw BASE_SYSTEM_ERROR(code, srcPath);
}

void ncFileMgr::Copy(const String& srcPath, String& newPath, bool failIfExists) {
  NC_TRACE(u"srcPath: %s, newPath: %s", srcPath, newPath);
  NC_CHECK_PATH(srcPath);
  NC_CHECK_PATH(newPath);
  EnsureParentFolder(newPath);
  bool copied = platform::CopyFile(platform::AddLongPathPrefix(srcPath), platform::AddLongPathPrefix(newPath),
                                   failIfExists);
  if (copied) return;
  uint32_t code = platform::GetLastError();
  if (code == platform::kErrorAlreadyExists) {
    String stem, extension;
    SplitForNumbering(srcPath, newPath, stem, extension);
    int number = 2;
    do {
      newPath = base::Format(u"%s (%d)%s", stem, number++, extension);
      copied = platform::CopyFile(srcPath, newPath, failIfExists);
      code = platform::GetLastError();
    } while (!copied && code == platform::kErrorAlreadyExists);
  }
  if (copied || code == platform::kErrorFileNotFound) return;
  throw BASE_SYSTEM_ERROR(code, srcPath);
}

void ncFileMgr::Rename(const String& oldPath, const String& newPath) {
  NC_TRACE(u"oldPath: %s, newPath: %s", oldPath, newPath);
  NC_CHECK_PATH(oldPath);
  NC_CHECK_PATH(newPath);
  if (platform::MoveFile(platform::AddLongPathPrefix(oldPath), platform::AddLongPathPrefix(newPath))) return;
  const uint32_t code = platform::GetLastError();
  if (code == platform::kErrorFileNotFound) return;
  throw BASE_SYSTEM_ERROR(code, oldPath);
}

void ncFileMgr::Delete(const String& path) {
  NC_TRACE(u"path: %s", path);
  NC_CHECK_PATH(path);
  const String target = platform::AddLongPathPrefix(path);
  if (base::File::isFile(target)) {
    platform::SetFileAttributes(target, platform::kAttrNormal);
    base::File::remove(target);
  } else if (base::Directory::exists(target)) {
    // A folder without write permission keeps its entries: lift that first.
    platform::SetFileAttributes(target, platform::kAttrNormal);
    for (const String& entry : base::Directory::list(target, u"*")) Delete(entry);
    platform::SetFileAttributes(target, platform::kAttrNormal);
    base::Directory::removeTree(target);
  }
}

void ncFileMgr::InternalCreate(const String& path, bool isDir) {
  NC_TRACE(u"path: %s, isDir: %d", path, isDir);
  NC_CHECK_PATH(path);
  const String target = platform::AddLongPathPrefix(path);
  if (!isDir) base::File::create(target);
  else if (!base::Directory::exists(target)) base::Directory::create(target);
}

void ncFileMgr::InternalRename(const String& oldPath, const String& newPath, const String& docId) {
  NC_TRACE(u"oldPath: %s, newPath: %s", oldPath, newPath);
  NC_CHECK_PATH(oldPath);
  NC_CHECK_PATH(newPath);
  const String tmp = RenameToTempPath(oldPath, docId);
  Rename(tmp, newPath);
}

void ncFileMgr::InternalDelete(const String& path, const String& docId) {
  NC_TRACE(u"path: %s", path);
  NC_CHECK_PATH(path);
  const String tmp = RenameToTempPath(path, docId);
  Delete(tmp);
}

void ncFileMgr::MoveNoADS(const String& srcPath, const String& newPath, const String& docId) {
  NC_TRACE(u"srcPath: %s, newPath: %s", srcPath, newPath);
  NC_CHECK_PATH(srcPath);
  NC_CHECK_PATH(newPath);
  const String tmp = RenameToTempPath(srcPath, docId);
  RemoveStreams(tmp, kAllStreams, sizeof kAllStreams / sizeof kAllStreams[0]);
  String target = newPath;
  Move(tmp, target);
}

String ncFileMgr::CreateDupDoc(const String& path, const String& docId) {
  NC_TRACE(u"path: %s", path);
  NC_CHECK_PATH(path);
  const String folder = pathMgr_->GetUnsyncDocPath();
  if (!base::Directory::exists(folder)) {
    base::Directory::create(folder);
    CustomizeFolder(folder, 4096, String());
  }
  // The place under the sync root is repeated inside the folder; from elsewhere only the
  // name is kept.
  const String root = pathMgr_->GetRootPath();
  const int32_t position = ncSystemFileWrapper::getRelativePathPos(root, path);
  const String part = position >= 0 ? base::Trim(path.substr(static_cast<size_t>(position)), base::Path::kSeparator)
                                    : base::Path::getFileName(path);
  String target = base::Path::combine(folder, part);

  const String tmp = RenameToTempPath(path, docId);
  RemoveStreams(tmp, kDuplicateStreams, sizeof kDuplicateStreams / sizeof kDuplicateStreams[0]);
  Move(tmp, target);
  return target;
}

String ncFileMgr::IconFile() {
  static const int anchor = 0;  // an address inside this module
  String file = base::ResourceFile::getResourceFileName(u"tray", base::AppSettings::getCFLAppSettings(),
                                                        base::AppContext::getInstance(), u"rfa", &anchor);
  if (file.empty())
    file = base::Path::combine(platform::GetModuleDirectory(&anchor), u"../share/kestrove/tray.rfa");
  return file;
}

void ncFileMgr::CustomizeFolder(const String& path, int docType, const String& typeName) {
  NC_TRACE(u"path: %s, docType: %d, typeName: %s", path, docType, typeName);
  NC_CHECK_PATH(path);
  String text;
  bool hasText = false;
  int iconIndex = 0;
  for (const FolderKind& kind : kFolderKinds) {
    if (!(docType & kind.bit)) continue;
    const String name = ncDocMgrLibrary::loadString(kind.key);
    text = kind.bit == kOrganisationBit ? base::Format(u"%s-%s-%s", kind.order, name, typeName)
                                        : base::Format(u"%s-%s", kind.order, name);
    hasText = true;
    iconIndex = kind.iconIndex;
    break;
  }
  // The look of a folder is cosmetic: a folder the shell cannot customise stays as it is.
  ncShellUtil::CustomizeFolder(path, hasText ? &text : nullptr, IconFile(), iconIndex);
}

void ncFileMgr::CustomizeVrFolder(const String& path, int docType) {
  NC_TRACE(u"path: %s, docType: %d", path, docType);
  NC_CHECK_PATH(path);
  int iconIndex = 0;
  if (docType & (1 | 8)) iconIndex = 1;
  else if (docType & (2 | 32)) iconIndex = 2;
  else if (docType & 4) iconIndex = 3;
  else if (docType & 16) iconIndex = 4;
  ncShellUtil::CustomizeFolder(path, nullptr, IconFile(), iconIndex);
}
