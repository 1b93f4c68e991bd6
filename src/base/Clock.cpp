#include "base/Clock.h"

namespace base {

LocalTime Clock::localTime() { return platform::GetLocalTime(); }

int64_t Clock::nowMillis() { return platform::GetEpochMillis(); }

}  // namespace base
