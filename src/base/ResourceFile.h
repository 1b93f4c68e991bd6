// Where a module's resource files are: KESTROVE_RESOURCE_DIR, else
// "../share/kestrove/locale/<lang>/" beside the module. The language is KESTROVE_LANG, else
// the process locale's language, else English.
#pragma once

#include "base/ISharedLibrary.h"
#include "text/String.h"

namespace base {

class ResourceFile {
 public:
  // moduleAddress is any address inside the module that asks.
  static String getResourceFileName(const String& baseName, AppSettings* settings, AppContext* context,
                                    const String& extension, const void* moduleAddress);
  // "zh_CN" from "zh_CN.UTF-8"; "en" for the C and POSIX locales.
  static String currentLanguage();
};

}  // namespace base
