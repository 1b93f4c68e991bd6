// The user the process runs as.
#pragma once

#include "text/String.h"

namespace base {

class User {
 public:
  static String getName();
};

}  // namespace base
