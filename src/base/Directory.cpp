#include "base/Directory.h"

#include "docmgr/Exception.h"
#include "base/Path.h"
#include "platform/ncPlatform.h"

namespace base {

namespace {

// "*" stands for any run of units, "?" for one unit; everything else matches itself.
bool MatchesWildcard(const String& name, const String& pattern) {
  size_t n = 0, p = 0, starPattern = String::npos, starName = 0;
  while (n < name.size()) {
    if (p < pattern.size() && (pattern[p] == u'?' || pattern[p] == name[n])) {
      ++n;
      ++p;
    } else if (p < pattern.size() && pattern[p] == u'*') {
      starPattern = p++;
      starName = n;
    } else if (starPattern != String::npos) {
      p = starPattern + 1;
      n = ++starName;
    } else {
      return false;
    }
  }
  while (p < pattern.size() && pattern[p] == u'*') ++p;
  return p == pattern.size();
}

}  // namespace

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
  std::vector<String> entries;
  for (const String& name : names)
    if (MatchesWildcard(name, pattern)) entries.push_back(Path::combine(path, name));
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
