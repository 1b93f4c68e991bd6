#include "xpcom/nsID.h"

#include <cstdio>
#include <cstring>

bool nsID::Equals(const nsID& other) const {
  return m0 == other.m0 && m1 == other.m1 && m2 == other.m2 && std::memcmp(m3, other.m3, sizeof m3) == 0;
}

std::string nsID::ToString() const {
  char text[40];
  std::snprintf(text, sizeof text, "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}", m0, m1, m2, m3[0], m3[1],
                m3[2], m3[3], m3[4], m3[5], m3[6], m3[7]);
  return text;
}
