// Thin helpers over the file system and over paths, as the path rules and file operations
// use them.
#pragma once

#include <cstdint>

#include "text/String.h"

class ncSystemFileWrapper {
 public:
  // The Win32 attribute bits of the path, 0xFFFFFFFF when they cannot be read.
  static uint32_t getFileAttrs(const base::String& path);
  // Where the part of path below root begins (the position just after root), or -1 when
  // path is not strictly below root. Letter case is ignored, "\" and "/" both separate, and
  // a long-path prefix on either side is ignored.
  static int32_t getRelativePathPos(const base::String& root, const base::String& path);
  // True when the folder is the root of a mounted file system (POSIX); false when it
  // cannot be examined.
  static bool isMountPoint(const base::String& path);
};
