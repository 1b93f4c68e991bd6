// Files: existence and removal. Failures throw the system-error exception.
#pragma once

#include "text/String.h"

namespace base {

class File {
 public:
  // True for anything at the path (file, folder or other).
  static bool exists(const String& path);
  static bool isFile(const String& path);
  // Creates an empty file, truncating an existing one.
  static void create(const String& path);
  static void remove(const String& path);
};

}  // namespace base
