// Path helpers over the platform's separator.
#pragma once

#include "text/String.h"

namespace base {

class Path {
 public:
  static const char16_t kSeparator;  // '/' on POSIX, '\' on Windows

  static String combine(const String& directory, const String& name);
  // Everything before the last separator ("" when there is none).
  static String getDirectoryName(const String& path);
  // Everything after the last separator.
  static String getFileName(const String& path);
  // The extension of the file name with its dot, "" when the name has no dot.
  static String getExtensionName(const String& path);
  // Non-empty and no NUL unit; lone surrogates are allowed.
  static bool isValidPath(const String& path);
  static bool isSeparator(char16_t unit) { return unit == u'/' || unit == u'\\'; }
};

}  // namespace base
