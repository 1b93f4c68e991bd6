#include "base/Directory.h"

#include <fnmatch.h>

#include "docmgr/Exception.h"
#include "base/Path.h"
#include "platform/ncPlatform.h"

namespace base {

bool Directory::exists(const String& path) {
  const uint32_t attributes = platform::GetFileAttributes(path);
  return attributes != platform::kInvalidAttributes && (attributes & platform::kAttrDirectory);
}

void Directory::create(const String& path) {
  if (exists(path)) return;
  const String parent = Path::getDirectoryName(platform::RemoveLongPathPrefix(path));
  if (!parent.empty() && !exists(parent)) create(parent);
  if (!platform::CreateDirectory(path) && platform::GetLastError() != platform::kErrorAlreadyExists)
    throw BASE_SYSTEM_ERROR(platform::GetLastError(), path);
}

std::vector<String> Directory::list(const String& path, const String& pattern) {
  std::vector<String> names;
  if (!platform::ListDirectory(path, names)) throw BASE_SYSTEM_ERROR(platform::GetLastError(), path);
  const std::string glob = ToUtf8(pattern);
  std::vector<String> entries;
  for (const String& name : names)
    if (::fnmatch(glob.c_str(), ToUtf8(name).c_str(), 0) == 0) entries.push_back(Path::combine(path, name));
  return entries;
}

void Directory::removeTree(const String& path) {
  // A read-only folder would refuse to give up its entries.
  platform::SetFileAttributes(path, platform::kAttrNormal);
  for (const String& entry : list(path)) {
    const uint32_t attributes = platform::GetFileAttributes(entry);
    if (attributes != platform::kInvalidAttributes && (attributes & platform::kAttrDirectory)) {
      removeTree(entry);
    } else if (!platform::DeleteFile(entry) && platform::GetLastError() != platform::kErrorFileNotFound) {
      throw BASE_SYSTEM_ERROR(platform::GetLastError(), entry);
    }
  }
  if (!platform::RemoveDirectory(path) && platform::GetLastError() != platform::kErrorFileNotFound)
    throw BASE_SYSTEM_ERROR(platform::GetLastError(), path);
}

}  // namespace base
