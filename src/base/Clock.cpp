#include "base/Clock.h"

#include <sys/time.h>

#include <ctime>

namespace base {

LocalTime Clock::localTime() {
  struct timeval now;
  gettimeofday(&now, nullptr);
  struct tm local;
  localtime_r(&now.tv_sec, &local);
  return LocalTime{local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
                   local.tm_min,         local.tm_sec,     static_cast<int>(now.tv_usec / 1000)};
}

int64_t Clock::nowMillis() {
  struct timeval now;
  gettimeofday(&now, nullptr);
  return static_cast<int64_t>(now.tv_sec) * 1000 + now.tv_usec / 1000;
}

}  // namespace base
