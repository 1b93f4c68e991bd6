#include "base/File.h"

#include "docmgr/Exception.h"
#include "platform/ncPlatform.h"

namespace base {

bool File::exists(const String& path) { return platform::GetFileAttributes(path) != platform::kInvalidAttributes; }

bool File::isFile(const String& path) {
  const uint32_t attributes = platform::GetFileAttributes(path);
  return attributes != platform::kInvalidAttributes && !(attributes & platform::kAttrDirectory);
}

void File::create(const String& path) {
  if (!platform::CreateEmptyFile(path)) throw BASE_SYSTEM_ERROR(platform::GetLastError(), path);
}

void File::remove(const String& path) {
  if (!platform::DeleteFile(path)) throw BASE_SYSTEM_ERROR(platform::GetLastError(), path);
}

}  // namespace base
