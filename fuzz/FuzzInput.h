// Helpers shared by the fuzz targets: turn the fuzzer's bytes into the arguments of the
// operation under test, and stop the run on a broken invariant.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "docmgr/Exception.h"
#include "text/String.h"

namespace fuzz {

// Reads the input front to back; every read succeeds, running out yields zeros and "".
class FuzzInput {
 public:
  FuzzInput(const uint8_t* data, size_t size) : data_(data), size_(size) {}

  bool empty() const { return pos_ >= size_; }
  uint8_t byte() { return empty() ? 0 : data_[pos_++]; }
  int32_t int32() {
    uint32_t value = 0;
    for (int i = 0; i < 4; ++i) value |= uint32_t(byte()) << (8 * i);
    return static_cast<int32_t>(value);
  }
  // Bytes up to the next separator byte 0x00 (not included) or the end.
  std::string bytes() {
    std::string out;
    while (!empty() && data_[pos_] != 0) out += static_cast<char>(data_[pos_++]);
    if (!empty()) ++pos_;
    return out;
  }
  // A String of any units, lone surrogates and NULs included: a 16-bit length, then that
  // many UTF-16LE units (fewer when the input ends first).
  base::String units() {
    const size_t length = byte() | (size_t(byte()) << 8);
    base::String out;
    for (size_t i = 0; i < length && !empty(); ++i) out += static_cast<char16_t>(byte() | (byte() << 8));
    return out;
  }
  // The rest of the input, separators included.
  std::string rest() {
    std::string out(reinterpret_cast<const char*>(data_ + pos_), size_ - pos_);
    pos_ = size_;
    return out;
  }

 private:
  const uint8_t* data_;
  size_t size_;
  size_t pos_ = 0;
};

[[noreturn]] inline void Broken(const char* invariant) {
  std::fprintf(stderr, "invariant broken: %s\n", invariant);
  std::abort();
}

#define FUZZ_CHECK(condition) \
  do {                        \
    if (!(condition)) ::fuzz::Broken(#condition); \
  } while (0)

// The operations under test may refuse an argument only with the component's exception
// and one of the given codes; anything else escapes and ends the run.
template <typename Call>
void ExpectOnlyCodes(Call call, std::initializer_list<int> codes) {
  try {
    call();
  } catch (const base::Exception& e) {
    for (int code : codes)
      if (e.getCode() == code) return;
    Broken("an exception with an unexpected code");
  }
}

}  // namespace fuzz
