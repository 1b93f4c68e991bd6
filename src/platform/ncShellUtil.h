// Shell customisation of a folder: its icon and, when text is not null, its display text
// (".directory" on POSIX desktops, desktop.ini on Windows).
#pragma once

#include "text/String.h"

class ncShellUtil {
 public:
  // Non-zero on success; the Win32 last-error code on failure.
  static int CustomizeFolder(const base::String& path, const base::String* text, const base::String& iconFile,
                             int iconIndex);
};
