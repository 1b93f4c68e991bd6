// Format with an arbitrary format text and arguments of every kind, formatted once and
// then again as the component does with error texts; and the text conversions, which must
// give back what they were given.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "FuzzInput.h"

namespace {

using base::String;

// Output of one directive: its clamped width or precision, or the argument itself.
const size_t kMaxUnitsPerDirective = 4096 + 512;

void CheckFormat(fuzz::FuzzInput& input) {
  const String format = input.units();
  const String text = input.units();
  const std::string narrow = input.bytes();
  const int32_t number = input.int32();
  double real = 0;
  const int32_t low = input.int32(), high = input.int32();
  const uint64_t bits = (uint64_t(uint32_t(high)) << 32) | uint32_t(low);
  std::memcpy(&real, &bits, sizeof real);

  const String once = base::Format(format, number, text, real, narrow, int64_t(bits), uint16_t(low), &input);
  const size_t directives = static_cast<size_t>(std::count(format.begin(), format.end(), u'%'));
  FUZZ_CHECK(once.size() <= format.size() + directives * (kMaxUnitsPerDirective + text.size() + narrow.size()));
  const String twice = base::Format(once);
  FUZZ_CHECK(twice.size() <= once.size());
  if (format.find(u'%') == String::npos) FUZZ_CHECK(once == format);
}

void CheckConversions(const std::string& bytes, const String& units) {
  FUZZ_CHECK(base::ToNativeBytes(base::FromNativeBytes(bytes)) == bytes);
  const String native = base::FromNativeBytes(base::ToNativeBytes(units));
  FUZZ_CHECK(base::FromNativeBytes(base::ToNativeBytes(native)) == native);
  FUZZ_CHECK(base::FromUtf8(base::ToUtf8(units)) == units);
  const String read = base::FromUtf8(bytes);
  FUZZ_CHECK(base::FromUtf8(base::ToUtf8(read)) == read);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::FuzzInput whole(data, size);
  const std::string bytes = whole.rest();
  fuzz::FuzzInput asUnits(data, size);
  CheckConversions(bytes, asUnits.units());
  fuzz::FuzzInput input(data, size);
  CheckFormat(input);
  return 0;
}
