#include "base/SystemLog.h"

#include "platform/ncPlatform.h"

namespace base {

void SystemLog::log(int type, const String& message) {
  platform::WriteSystemLog("docmgr[" + std::to_string(type) + "]: " + ToUtf8(message));
}

}  // namespace base
