#include "base/Clock.h"

namespace base {

LocalTime Clock::localTime() { return platform::GetLocalTime(); }

}  // namespace base
