#include "xpcom/nsID.h"

#include <cstring>

bool nsID::Equals(const nsID& other) const {
  return m0 == other.m0 && m1 == other.m1 && m2 == other.m2 && std::memcmp(m3, other.m3, sizeof m3) == 0;
}
