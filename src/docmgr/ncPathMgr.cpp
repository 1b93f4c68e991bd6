#include "docmgr/ncPathMgr.h"

#include <algorithm>

#include "base/Clock.h"
#include "base/Directory.h"
#include "base/File.h"
#include "base/Guid.h"
#include "base/User.h"
#include "docmgr/ncDocMgrLibrary.h"
#include "docmgr/ncDocUtils.h"
#include "docmgr/ncModuleAllocator.h"
#include "platform/ncPlatform.h"
#include "platform/ncSystemFileWrapper.h"

using base::String;

namespace {

const char16_t kDataDirectorySuffix[] = u"" NC_DATA_DIRECTORY_NAME;

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
  // The parent of a folder directly under the file system's root is that root itself.
  parentPath_ = separator == String::npos ? String() : path.substr(0, separator == 0 ? 1 : separator);
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

bool ncPathMgr::CreateDBPath() {
  if (base::Directory::exists(dbPath_)) return true;
  base::Directory::create(dbPath_);
  platform::SetFileAttributes(dbPath_, platform::kAttrHidden);
  return false;
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
  const String plain = platform::RemoveLongPathPrefix(path);
  // Relative paths of a local sync root include the root folder's name, so they are cut
  // after its parent; a local sync root on a bare drive keeps whole paths.
  const String& base = isLocalSync_ ? parentPath_ : rootPath_;
  const bool inside = isDriveRoot_ || (!base.empty() && ncDocUtils::IsParentPath(base, plain, true));
  if (!inside) NC_THROW(NC_ERR_INVALID_ARG, ncDocMgrLibrary::loadString(u"IDS_NOT_IN_ROOT_PATH"), path);
  const String relative = isDriveRoot_ ? plain : plain.substr(std::min(base.size(), plain.size()));
  return base::Trim(ToStoredSeparators(relative), u'\\');
}

// ---------------------------------------------------------------------------
// Path classification and derived working names.

namespace {

// Names beginning with these are editor and resource-fork companions.
const char16_t* const kIgnoredPrefixes[] = {u"~$", u"~~$", u"._"};

// Endings of download, editor, CAD and backup temporaries (compared in lower case).
const char16_t* const kIgnoredExtensions[] = {
    u".kestrove.bak", u".dwl",  u".dwl2",    u".es$", u".tmp", u".crdownload", u".part",   u".partial", u".kqbl",
    u".sgdownload",   u".td",   u".td.cfg",  u".bak", u".sjz3", u".tesbak",    u".testmp", u".bakd",
};

// Hidden suffixes of the working names.
const char16_t kTempSuffix[] = u".kestrove.temp";
const char16_t kBackupSuffix[] = u".kestrove.bak";
const char16_t kCopySuffix[] = u".kestrove.copy";
const char16_t kTransferUnsyncSuffix[] = u".kestrove.tu";
const char16_t kConflictSuffix[] = u".kestrove.conflict";

// Entries that Windows keeps at the root of a drive, after the drive letter.
const char16_t* const kDriveRootMarkers[] = {u":\\pagefile.sys", u":\\system volume information",
                                             u":\\$recycle.bin"};

// The longest path the file system takes (32767 units) less the room the client keeps.
const size_t kMaxPathUnits = 32767 - 24;

bool IsAsciiLetterOrDigit(char16_t unit) {
  return (unit >= u'0' && unit <= u'9') || (unit >= u'A' && unit <= u'Z') || (unit >= u'a' && unit <= u'z');
}

bool AllAsciiLettersOrDigits(const String& text) {
  for (char16_t unit : text)
    if (!IsAsciiLetterOrDigit(unit)) return false;
  return true;
}

// The path without separators at its end (a lone root separator stays).
String WithoutTrailingSeparators(const String& path) {
  size_t length = path.size();
  while (length > 1 && base::Path::isSeparator(path[length - 1])) --length;
  return path.substr(0, length);
}

// Splits a path into its folder part (up to and including the last separator) and its name.
void SplitFolderAndName(const String& path, String& folder, String& name) {
  const String trimmed = WithoutTrailingSeparators(path);
  name = base::Path::getFileName(trimmed);
  folder = trimmed.substr(0, trimmed.size() - name.size());
}

// A working name beside path: "." + name [+ "." + tag] + suffix.
String DerivedPath(const String& path, const String& tag, const char16_t* suffix) {
  String folder, name;
  SplitFolderAndName(path, folder, name);
  String derived = folder + u"." + name;
  if (!tag.empty()) derived += u"." + tag;
  return derived + suffix;
}

bool IsDerivedPath(const String& path, const char16_t* suffix) {
  String folder, name;
  SplitFolderAndName(path, folder, name);
  const String ending(suffix);
  return name.size() > ending.size() + 1 && name[0] == u'.' && base::EndsWith(base::ToLower(name), ending);
}

// Text usable inside a file name: units no file system takes become "_".
String NameSafe(const String& text) {
  String safe = text;
  for (auto& unit : safe)
    if (unit < 0x20 || String(u"\\/:*?\"<>|").find(unit) != String::npos) unit = u'_';
  return safe;
}

// The part of a document id that names the document itself: its last component.
String DocIdTag(const String& docId) {
  const size_t slash = docId.find_last_of(u"/\\");
  return NameSafe(slash == String::npos ? docId : docId.substr(slash + 1));
}

// Equal ignoring letter case, "\" and "/" alike.
bool SamePathText(const String& a, const String& b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if (base::Path::isSeparator(a[i]) && base::Path::isSeparator(b[i])) continue;
    if (base::ToLowerUnit(a[i]) != base::ToLowerUnit(b[i])) return false;
  }
  return true;
}

bool IsTrashFolderName(const String& name) {
  if (name == u".Trashes") return true;
  const String prefix(u".Trash-");
  return name.size() > prefix.size() && base::StartsWith(name, prefix) &&
         name.find_first_not_of(u"0123456789", prefix.size()) == String::npos;
}

}  // namespace

bool ncPathMgr::IsTempPath(const String& path) {
  NC_TRACE(u"path: %s", path);
  NC_CHECK_PATH(path);
  return IsDerivedPath(path, kTempSuffix);
}

String ncPathMgr::GetBackupPathContainDocId(const String& path, const String& docId) {
  NC_TRACE(u"path: %s, docId: %s", path, docId);
  NC_CHECK_PATH(path);
  return DerivedPath(path, DocIdTag(docId), kBackupSuffix);
}

bool ncPathMgr::IsBackupPath(const String& path) {
  NC_TRACE(u"path: %s", path);
  NC_CHECK_PATH(path);
  return IsDerivedPath(path, kBackupSuffix);
}

String ncPathMgr::GetCopyPath(const String& path) {
  NC_TRACE(u"path: %s", path);
  NC_CHECK_PATH(path);
  return DerivedPath(path, String(), kCopySuffix);
}

bool ncPathMgr::IsCopyPath(const String& path) {
  NC_TRACE(u"path: %s", path);
  NC_CHECK_PATH(path);
  return IsDerivedPath(path, kCopySuffix);
}

String ncPathMgr::GetTransferUnsyncPath(const String& path) {
  NC_TRACE(u"path: %s", path);
  NC_CHECK_PATH(path);
  return DerivedPath(path, String(), kTransferUnsyncSuffix);
}

bool ncPathMgr::IsTransferUnsyncPath(const String& path) {
  NC_TRACE(u"path: %s", path);
  NC_CHECK_PATH(path);
  return IsDerivedPath(path, kTransferUnsyncSuffix);
}

String ncPathMgr::GetConflictPath(const String& path) {
  NC_TRACE(u"path: %s", path);
  NC_CHECK_PATH(path);
  String folder, name;
  SplitFolderAndName(path, folder, name);
  const String extension = base::Path::getExtensionName(name);
  const String stem = name.substr(0, name.size() - extension.size());
  const String user = NameSafe(userName_.empty() ? base::User::getName() : userName_);
  const base::LocalTime now = base::Clock::localTime();
  return folder + u"." +
         base::Format(u"%s_%s_%02d_%02d_%02d%s", stem, user, now.hour, now.minute, now.second, extension) +
         kConflictSuffix;
}

bool ncPathMgr::IsConflictPath(const String& path) {
  NC_TRACE(u"path: %s", path);
  NC_CHECK_PATH(path);
  return IsDerivedPath(path, kConflictSuffix);
}

bool ncPathMgr::IsIgnorePath(const String& path) {
  NC_TRACE(u"path: %s", path);
  NC_CHECK_PATH(path);
  const String name = base::Path::getFileName(path);
  // A "\" inside a name cannot reach the server, whose separator it is.
  if (base::Path::kSeparator != u'\\' && name.find(u'\\') != String::npos) return true;

  if (base::StartsWith(name, u"atmp") && name.find(u'.') == String::npos) return true;
  for (const char16_t* prefix : kIgnoredPrefixes)
    if (base::StartsWith(name, prefix)) return true;
  for (const char16_t* extension : kIgnoredExtensions)
    if (ncDocUtils::IsExtensionPath(path, extension)) return true;
  // Folder customisation: desktop.ini on Windows, .directory on POSIX desktops.
  if (base::EqualsIgnoreCase(name, u"desktop.ini") || base::EqualsIgnoreCase(name, u".directory")) return true;
  if (name.size() == 8 && AllAsciiLettersOrDigits(name) && base::File::isFile(platform::AddLongPathPrefix(path)))
    return true;
  if (static_cast<ncIPathMgr*>(this)->IsCadTempPath(path)) return true;
  const String extension = base::Path::getExtensionName(name);
  if (base::StartsWith(name, u"~") && base::EqualsIgnoreCase(extension, u".MPJ~")) return true;
  if (base::EqualsIgnoreCase(name, u"TMP0.MPJ") || base::EqualsIgnoreCase(name, u"TMP0.MTW")) return true;
  if (extension.find(u"___jb_tmp___") != String::npos || extension.find(u"___jb_old___") != String::npos)
    return true;
  return false;
}

bool ncPathMgr::IsCadTempPath(const String& path) {
  NC_TRACE(u"path: %s", path);
  NC_CHECK_PATH(path);
  const String name = base::Path::getFileName(path);
  const String extension = base::Path::getExtensionName(name);
  const String lowerExtension = base::ToLower(extension);
  if (!extension.empty() && !base::StartsWith(lowerExtension, u".prt") && !base::StartsWith(lowerExtension, u".sim"))
    return false;
  const String stem = name.substr(0, name.size() - extension.size());
  if (stem.size() < 13 || stem.size() > 16) return false;
  // CAD temporaries begin with the first four units of the user's login name.
  String user = base::User::getName();
  if (user.size() >= 100) return false;  // longer than the name buffer the rule is made for
  if (user.size() > 4) user.resize(4);
  if (!base::StartsWith(stem, user)) return false;
  const String rest = stem.substr(user.size());
  return rest.size() == 12 && AllAsciiLettersOrDigits(rest);
}

bool ncPathMgr::IsTooLongPath(const String& path) {
  NC_TRACE(u"path: %s", path);
  NC_CHECK_PATH(path);
  return path.size() >= kMaxPathUnits || platform::ExceedsNativePathLimits(path);
}

bool ncPathMgr::IsSiblingPath(const String& path1, const String& path2) {
  NC_TRACE(u"path1: %s, path2: %s", path1, path2);
  NC_CHECK_PATH(path1);
  NC_CHECK_PATH(path2);
  String folder1, name1, folder2, name2;
  SplitFolderAndName(platform::RemoveLongPathPrefix(path1), folder1, name1);
  SplitFolderAndName(platform::RemoveLongPathPrefix(path2), folder2, name2);
  return !name1.empty() && !name2.empty() && SamePathText(folder1, folder2) && !base::EqualsIgnoreCase(name1, name2);
}

bool ncPathMgr::IsSysHoldPath(const String& path) {
  NC_TRACE(u"path: %s", path);
  NC_CHECK_PATH(path);
  const String plain = platform::RemoveLongPathPrefix(path);
  // Windows: the marker right after the drive letter, the entry itself or anything in it.
  for (const char16_t* marker : kDriveRootMarkers) {
    const String text(marker);
    if (plain.size() < 1 + text.size() || !SamePathText(plain.substr(1, text.size()), text)) continue;
    if (plain.size() == 1 + text.size() || base::Path::isSeparator(plain[1 + text.size()])) return true;
  }
  // POSIX: lost+found and the trash folders directly under a mount point, and their content.
  for (size_t start = 0; start < plain.size();) {
    size_t end = plain.find(base::Path::kSeparator, start);
    if (end == String::npos) end = plain.size();
    const String name = plain.substr(start, end - start);
    if (start > 0 && (name == u"lost+found" || IsTrashFolderName(name))) {
      const String parent = start == 1 ? plain.substr(0, 1) : plain.substr(0, start - 1);
      if (ncSystemFileWrapper::isMountPoint(parent)) return true;
    }
    start = end + 1;
  }
  return false;
}

bool ncPathMgr::IsSystemHiddenPath(const String& path) {
  NC_TRACE(u"path: %s", path);
  NC_CHECK_PATH(path);
  const uint32_t attributes = ncSystemFileWrapper::getFileAttrs(path);
  return attributes != platform::kInvalidAttributes && (attributes & platform::kAttrHidden) &&
         (attributes & platform::kAttrSystem);
}

String ncPathMgr::GetContainDocIdTempPathName(const String& path, const String& docId) {
  NC_TRACE(u"path: %s, docId: %s", path, docId);
  NC_CHECK_PATH(path);
  return DerivedPath(path, DocIdTag(docId), kTempSuffix);
}

String ncPathMgr::GetGuidTempPathName(const String& path) {
  NC_TRACE(u"path: %s", path);
  NC_CHECK_PATH(path);
  const base::Guid guid = base::Guid::create();
  const String tag = base::Format(u"%08X%04X%04x%02X%02X%02X%02X%02X%02X%02X%02X", guid.data1, guid.data2, guid.data3,
                                  guid.data4[0], guid.data4[1], guid.data4[2], guid.data4[3], guid.data4[4],
                                  guid.data4[5], guid.data4[6], guid.data4[7]);
  return DerivedPath(path, tag, kTempSuffix);
}
