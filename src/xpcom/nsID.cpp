#include "xpcom/nsID.h"

#include <cstdio>
#include <cstring>

bool nsID::Equals(const nsID& other) const {
  return m0 == other.m0 && m1 == other.m1 && m2 == other.m2 && std::memcmp(m3, other.m3, sizeof m3) == 0;
}

bool nsID::Parse(const char* text) {
  if (!text) return false;
  unsigned int a, b, c, d[8];
  const char* start = text[0] == '{' ? text + 1 : text;
  int consumed = 0;
  if (std::sscanf(start, "%8x-%4x-%4x-%2x%2x-%2x%2x%2x%2x%2x%2x%n", &a, &b, &c, &d[0], &d[1], &d[2], &d[3], &d[4],
                  &d[5], &d[6], &d[7], &consumed) != 11 || consumed != 36)
    return false;
  if (text[0] == '{' && (start[36] != '}' || start[37] != 0)) return false;
  if (text[0] != '{' && start[36] != 0) return false;
  m0 = a;
  m1 = static_cast<uint16_t>(b);
  m2 = static_cast<uint16_t>(c);
  for (int i = 0; i < 8; ++i) m3[i] = static_cast<uint8_t>(d[i]);
  return true;
}

std::string nsID::ToString() const {
  char text[40];
  std::snprintf(text, sizeof text, "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}", m0, m1, m2, m3[0], m3[1],
                m3[2], m3[3], m3[4], m3[5], m3[6], m3[7]);
  return text;
}
