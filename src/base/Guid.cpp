#include "base/Guid.h"

#include "platform/ncPlatform.h"

namespace base {

Guid Guid::create() {
  uint8_t bytes[16];
  platform::CreateGuidBytes(bytes);
  Guid guid;
  guid.data1 = (uint32_t(bytes[0]) << 24) | (uint32_t(bytes[1]) << 16) | (uint32_t(bytes[2]) << 8) | bytes[3];
  guid.data2 = static_cast<uint16_t>((bytes[4] << 8) | bytes[5]);
  guid.data3 = static_cast<uint16_t>((bytes[6] << 8) | bytes[7]);
  for (int i = 0; i < 8; ++i) guid.data4[i] = bytes[8 + i];
  return guid;
}

String Guid::toString() const {
  return Format(u"{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}", data1, data2, data3, data4[0], data4[1],
                data4[2], data4[3], data4[4], data4[5], data4[6], data4[7]);
}

}  // namespace base
