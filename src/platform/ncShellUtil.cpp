#include "platform/ncShellUtil.h"

#include "platform/ncPlatform.h"

int ncShellUtil::CustomizeFolder(const base::String& path, const base::String* text, const base::String& iconFile,
                                 int iconIndex) {
  return platform::CustomizeFolder(platform::AddLongPathPrefix(path), text, iconFile, iconIndex) ? 1 : 0;
}
