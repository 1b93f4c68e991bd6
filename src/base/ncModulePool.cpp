#include "base/ncModulePool.h"

#include <cstdlib>
#include <cstring>

namespace base {

namespace {

bool EnabledByEnvironment() {
  const char* setting = std::getenv("KESTROVE_POOL");
  return !(setting && std::strcmp(setting, "off") == 0);
}

bool& Enabled() {
  static bool enabled = EnabledByEnvironment();
  return enabled;
}

}  // namespace

ncModulePool* ncModulePool::getInstance() {
  // Never destroyed: objects may be returned to it during static destruction.
  static ncModulePool* instance = new ncModulePool;
  return Enabled() ? instance : nullptr;
}

void ncModulePool::setEnabled(bool enabled) { Enabled() = enabled; }

}  // namespace base
