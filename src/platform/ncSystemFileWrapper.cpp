#include "platform/ncSystemFileWrapper.h"

#include <string>

#include "platform/ncPlatform.h"

namespace {

bool IsSeparator(char16_t unit) {
  return std::char_traits<char16_t>::find(platform::kPathSeparators,
                                          std::char_traits<char16_t>::length(platform::kPathSeparators), unit) != nullptr;
}

}  // namespace

uint32_t ncSystemFileWrapper::getFileAttrs(const base::String& path) {
  return platform::GetFileAttributes(platform::AddLongPathPrefix(path));
}

int32_t ncSystemFileWrapper::getRelativePathPos(const base::String& root, const base::String& path) {
  const base::String plainRoot = platform::RemoveLongPathPrefix(root);
  const base::String plainPath = platform::RemoveLongPathPrefix(path);
  const size_t skipped = path.size() - plainPath.size();
  size_t rootLength = plainRoot.size();
  while (rootLength > 0 && IsSeparator(plainRoot[rootLength - 1])) --rootLength;
  if (rootLength == 0 || plainPath.size() <= rootLength + 1) return -1;
  for (size_t i = 0; i < rootLength; ++i) {
    const char16_t a = plainRoot[i];
    const char16_t b = plainPath[i];
    if (IsSeparator(a) && IsSeparator(b)) continue;
    if (base::ToLowerUnit(a) != base::ToLowerUnit(b)) return -1;
  }
  if (!IsSeparator(plainPath[rootLength])) return -1;
  // Something other than separators must follow, or the path is the root itself.
  size_t rest = rootLength;
  while (rest < plainPath.size() && IsSeparator(plainPath[rest])) ++rest;
  if (rest == plainPath.size()) return -1;
  return static_cast<int32_t>(skipped + rootLength);
}

bool ncSystemFileWrapper::isMountPoint(const base::String& path) {
  return platform::IsMountPoint(platform::AddLongPathPrefix(path));
}
