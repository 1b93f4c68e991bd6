#include "base/ncModulePool.h"

#include <cstdlib>
#include <cstring>

namespace base {

namespace {

bool EnabledByEnvironment() {
  const char* setting = std::getenv("KESTROVE_POOL");
  return !(setting && std::strcmp(setting, "off") == 0);
}

bool Enabled() {
  static const bool enabled = EnabledByEnvironment();
  return enabled;
}

}  // namespace

ncModulePool* ncModulePool::getInstance() {
  // Destroyed with the module; the library object makes sure it is created before the
  // library registers itself, so it outlives the library's close at unload.
  static ncModulePool instance;
  return Enabled() ? &instance : nullptr;
}

}  // namespace base
