// The user the process runs as.
#pragma once

#include "base/String.h"

namespace base {

class User {
 public:
  static String getName();
};

}  // namespace base
