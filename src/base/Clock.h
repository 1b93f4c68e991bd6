// Wall clock: local calendar time and milliseconds since the epoch.
#pragma once

#include <cstdint>

#include "platform/ncPlatform.h"

namespace base {

using LocalTime = platform::LocalTime;

class Clock {
 public:
  static LocalTime localTime();
  static int64_t nowMillis();
};

}  // namespace base
