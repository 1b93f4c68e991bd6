// The process's module pool. It exists unless pooling is turned off (KESTROVE_POOL=off, or
// setEnabled(false) before the first use), in which case getInstance() is null.
#pragma once

#include "base/ncBasePool.h"

namespace base {

class ncModulePool : public ncBasePool {
 public:
  static ncModulePool* getInstance();
  static void setEnabled(bool enabled);
};

}  // namespace base
