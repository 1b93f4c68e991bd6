// The JSON reader on arbitrary text: it either reads a value or refuses with its own parse
// or decode error; what it read is written back as text that reads to the same value.
#include <cstddef>
#include <cstdint>
#include <string>

#include "FuzzInput.h"
#include "dataapi/ncJson.h"

namespace {

bool HoldsFloat(const JSON::Value& value) {
  switch (value.type()) {
    case JSON::FloatType:
      return true;
    case JSON::ArrayType:
      for (const JSON::Value& element : value.as_array())
        if (HoldsFloat(element)) return true;
      return false;
    case JSON::ObjectType:
      for (const auto& member : value.as_object())
        if (HoldsFloat(member.second)) return true;
      return false;
    default:
      return false;
  }
}

void CheckWrittenTextReadsBack(const JSON::Value& value) {
  std::string written;
  try {
    written = value.to_string();
  } catch (const base::Exception& e) {
    FUZZ_CHECK(e.getCode() == JSON::FormatError && HoldsFloat(value));  // an infinite float
    return;
  }
  const JSON::Value again = JSON::Value::parse(written);
  // "%.16g" may move a float's last digit or write a whole float as an integer, so only
  // values without floats must come back the same.
  if (HoldsFloat(value)) return;
  FUZZ_CHECK(again.type() == value.type());
  FUZZ_CHECK(again.to_string() == written);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  JSON::Value value;
  bool read = false;
  fuzz::ExpectOnlyCodes(
      [&] {
        value.read(text);
        read = true;
      },
      {JSON::ParseError, JSON::DecodeError});
  if (read) CheckWrittenTextReadsBack(value);

  // Reading one value at a position leaves the position inside the text.
  size_t pos = 0;
  JSON::Value first;
  fuzz::ExpectOnlyCodes([&] { first.read(text, pos); }, {JSON::ParseError, JSON::DecodeError});
  FUZZ_CHECK(pos <= text.size());
  return 0;
}
