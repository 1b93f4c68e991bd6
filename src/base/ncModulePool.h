// The process's module pool. It exists unless pooling is turned off (KESTROVE_POOL=off),
// in which case getInstance() is null.
#pragma once

#include "base/ncBasePool.h"

namespace base {

class ncModulePool : public ncBasePool {
 public:
  static ncModulePool* getInstance();
};

}  // namespace base
