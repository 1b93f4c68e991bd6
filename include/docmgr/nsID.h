// 128-bit interface and class identifiers.
#pragma once

#include <cstdint>
#include <cstring>

struct nsID {
  uint32_t m0;
  uint16_t m1;
  uint16_t m2;
  uint8_t m3[8];

  bool Equals(const nsID& other) const {
    return m0 == other.m0 && m1 == other.m1 && m2 == other.m2 && std::memcmp(m3, other.m3, sizeof m3) == 0;
  }
};

inline bool operator==(const nsID& a, const nsID& b) { return a.Equals(b); }
inline bool operator!=(const nsID& a, const nsID& b) { return !a.Equals(b); }

typedef nsID nsIID;
typedef nsID nsCID;
