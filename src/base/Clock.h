// Wall clock: the local calendar time.
#pragma once

#include <cstdint>

#include "platform/ncPlatform.h"

namespace base {

using LocalTime = platform::LocalTime;

class Clock {
 public:
  static LocalTime localTime();
};

}  // namespace base
