#include "base/User.h"

#include "platform/ncPlatform.h"

namespace base {

String User::getName() { return platform::GetUserName(); }

}  // namespace base
