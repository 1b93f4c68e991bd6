// 128-bit interface and class identifiers.
#pragma once

#include <cstdint>

struct nsID {
  uint32_t m0;
  uint16_t m1;
  uint16_t m2;
  uint8_t m3[8];

  bool Equals(const nsID& other) const;
};

inline bool operator==(const nsID& a, const nsID& b) { return a.Equals(b); }
inline bool operator!=(const nsID& a, const nsID& b) { return !a.Equals(b); }

typedef nsID nsIID;
typedef nsID nsCID;
