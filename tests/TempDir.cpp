#include "TempDir.h"

#include <cstdlib>

#include "base/Directory.h"
#include "base/Guid.h"
#include "docmgr/Exception.h"
#include "platform/ncPlatform.h"

namespace test {

namespace {

// The name is a random GUID without its braces, so that shell command lines take it as it is.
std::string MakeUniqueFolder(const base::String& parent) {
  const base::String guid = base::Guid::create().toString();
  const base::String path = parent + platform::kPathSeparator + u"docmgr-test-" + guid.substr(1, guid.size() - 2);
  return platform::CreateDirectory(path) ? base::ToUtf8(path) : std::string();
}

}  // namespace

TempDir::TempDir() : path_(MakeUniqueFolder(platform::GetTempDirectory())) {
  if (path_.empty()) std::abort();
}

TempDir::TempDir(const std::string& parent) : path_(MakeUniqueFolder(base::FromUtf8(parent))) {}

TempDir::~TempDir() {
  if (path_.empty()) return;
  try {
    base::Directory::removeTree(wpath());
  } catch (const base::Exception&) {
    // A folder left behind in the temporary folder harms nothing.
  }
}

base::String TempDir::child(const std::string& relative) const {
  return Native(wpath() + base::FromNativeBytes("/" + relative));
}

base::String Native(const base::String& path) {
  base::String native = path;
  for (char16_t& unit : native)
    if (unit == u'/') unit = platform::kPathSeparator;
  return native;
}

}  // namespace test
