// The system log (syslog at LOG_ERR on POSIX).
#pragma once

#include "text/String.h"

namespace base {

class SystemLog {
 public:
  // type is handed on as the client's log type; every entry goes out as an error.
  static void log(int type, const String& message);
};

}  // namespace base
