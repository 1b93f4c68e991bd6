// Folders: existence, creation, listing with full paths, removal of a tree.
#pragma once

#include <vector>

#include "text/String.h"

namespace base {

class Directory {
 public:
  static bool exists(const String& path);
  // Creates the folder and any missing parents; an existing folder is fine.
  static void create(const String& path);
  // Full paths of the entries whose names match the pattern ("*" and "?" wildcards),
  // without "." and "..".
  static std::vector<String> list(const String& path, const String& pattern = u"*");
  // Removes the folder and everything in it, read-only content included.
  static void removeTree(const String& path);
};

}  // namespace base
