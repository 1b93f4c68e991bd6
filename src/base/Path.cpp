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

bool Path::isValidPath(const String& path) {
  if (path.empty()) return false;
  for (size_t i = 0; i < path.size(); ++i) {
    const char16_t unit = path[i];
    if (unit == 0) return false;
    if (unit >= 0xD800 && unit <= 0xDBFF) {
      if (i + 1 >= path.size() || path[i + 1] < 0xDC00 || path[i + 1] > 0xDFFF) return false;
      ++i;
    } else if (unit >= 0xDC00 && unit <= 0xDFFF) {
      return false;
    }
  }
  return true;
}

}  // namespace base
