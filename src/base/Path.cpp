#include "base/Path.h"

#include "platform/ncPlatform.h"

namespace base {

const char16_t Path::kSeparator = platform::kPathSeparator;

namespace {

size_t LastSeparator(const String& path) { return path.find_last_of(platform::kPathSeparators); }

}  // namespace

String Path::combine(const String& directory, const String& name) {
  if (directory.empty()) return name;
  if (name.empty()) return directory;
  if (isSeparator(directory.back())) return directory + name;
  return directory + kSeparator + name;
}

String Path::getDirectoryName(const String& path) {
  const size_t last = LastSeparator(path);
  return last == String::npos ? String() : path.substr(0, last);
}

String Path::getFileName(const String& path) {
  const size_t last = LastSeparator(path);
  return last == String::npos ? path : path.substr(last + 1);
}

String Path::getExtensionName(const String& path) {
  const String name = getFileName(path);
  const size_t dot = name.rfind(u'.');
  return dot == String::npos ? String() : name.substr(dot);
}

// Lone surrogates pass: NTFS allows them in names, and on POSIX they stand for the bytes of
// a name that are not UTF-8; refusing them would leave such files unsynchronisable.
bool Path::isValidPath(const String& path) {
  return !path.empty() && path.find(u'\0') == String::npos;
}

}  // namespace base
