// Wall clock: local calendar time and milliseconds since the epoch.
#pragma once

#include <cstdint>

namespace base {

struct LocalTime {
  int year, month, day, hour, minute, second, millisecond;
};

class Clock {
 public:
  static LocalTime localTime();
  static int64_t nowMillis();
};

}  // namespace base
