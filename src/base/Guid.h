// 128-bit unique identifier (version 4, random).
#pragma once

#include <cstdint>

#include "text/String.h"

namespace base {

struct Guid {
  uint32_t data1 = 0;
  uint16_t data2 = 0;
  uint16_t data3 = 0;
  uint8_t data4[8] = {0, 0, 0, 0, 0, 0, 0, 0};

  static Guid create();
  // {XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}
  String toString() const;
};

}  // namespace base
