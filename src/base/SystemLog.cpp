#include "base/SystemLog.h"

#include <syslog.h>

namespace base {

void SystemLog::log(int type, const String& message) {
  syslog(LOG_ERR, "docmgr[%d]: %s", type, ToUtf8(message).c_str());
}

}  // namespace base
