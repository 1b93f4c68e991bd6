// The JSON value type: what it reads, what it writes back, and how it refuses bad text.
#include <cmath>

#include "TestSupport.h"
#include "dataapi/ncJson.h"

namespace {

using base::String;
using JSON::Value;

// Runs statement and returns the JSON exception it raised (failing when there was none).
template <typename Statement>
base::Exception Raised(Statement statement) {
  try {
    statement();
  } catch (const base::Exception& e) {
    EXPECT_EQ(u"JSON", e.getProvider());
    return e;
  }
  ADD_FAILURE() << "no exception";
  return base::Exception(__FILE__, __LINE__, u"", 0, u"");
}

base::Exception ParseFailure(const std::string& text) {
  return Raised([&] { Value::parse(text); });
}

TEST(JsonTest, ReadsEveryTypeDecodesEscapesAndWritesItBack) {
  const Value root = Value::parse(" {\"list\": [1, -2.5e3, \"x\", true, false, null, {}, []],\r\n\t\"n\": 0} ");
  const Value& list = root.as_object().at("list");
  ASSERT_EQ(8u, list.size());
  const char* expected[] = {"Integer", "Float", "String", "Boolean", "Boolean", "Null", "Object", "Array"};
  for (size_t i = 0; i < list.size(); ++i) EXPECT_STREQ(expected[i], list[i].type_name());
  EXPECT_EQ("{\"list\":[1,-2500,\"x\",true,false,null,{},[]],\"n\":0}", root.to_string());

  EXPECT_EQ(u"Assert false : Format error. [JSON::ValueT<char>::internal_to_string ()]",
            Raised([] { Value(std::nan("")).to_string(); }).getMessage());

  EXPECT_EQ(INT64_MIN, Value::parse("-9223372036854775808").as_integer());
  EXPECT_EQ("-0", Value::parse("-0").to_string());  // a float, so the sign is kept
  EXPECT_EQ(JSON::FloatType, Value::parse("9223372036854775808").type());  // beyond 64 bits
  // Backspace and form feed count as blanks before a number, and nowhere else.
  EXPECT_EQ("[1,2]", Value::parse("[\b1,\f 2]").to_string());

  const std::string text = "\"q\\\" b\\\\ s\\/ \\b\\f\\n\\r\\t \\u00e9\\u4E2D \\ud83d\\ude00 raw 文件\"";
  const Value value = Value::parse(text);
  EXPECT_EQ("q\" b\\ s/ \b\f\n\r\t \xC3\xA9\xE4\xB8\xAD \xF0\x9F\x98\x80 raw 文件", value.as_string());
  // Written back with the short escapes, other control characters as \u00XX, UTF-8 as is.
  EXPECT_EQ("\"q\\\" b\\\\ s/ \\b\\f\\n\\r\\t \xC3\xA9\xE4\xB8\xAD \xF0\x9F\x98\x80 raw 文件\"", value.to_string());
  EXPECT_EQ("\"\\u0001\\u001f\"", Value(std::string("\x01\x1f")).to_string());
  EXPECT_EQ(std::string("a\0b", 3), Value::parse("\"a\\u0000b\"").as_string());
}

TEST(JsonTest, BadTextIsRefusedWithItsCodeAndPositionAndReadingStopsAtTheValue) {
  // Text, code, and what the message says between "Assert false : " and the reader's name.
  const struct { const char* text; int code; const char16_t *what, *where; } cases[] = {
      {"[\f]", JSON::ParseError, u"Parse error: pos=1.", u"read"},
      {"1.", JSON::ParseError, u"Parse error: pos=2.", u"read_number"},
      {"[1}", JSON::ParseError, u"Parse error: pos=2.", u"read_array"},
      {"\"a\nb\"", JSON::ParseError, u"Parse error: pos=2.", u"read_string"},
      {"\"\\u12G4\"", JSON::DecodeError, u"Decode error: invalid character=0x47.", u"hex_to_int"},
      {"\"\\udc00\"", JSON::DecodeError, u"Decode error: in=\\udc00.", u"decode_unicode"},
      {"\"\\ud83d\\u0041\"", JSON::DecodeError, u"Decode error: in=\\ud83d\\u0041.", u"decode_unicode"},
  };
  for (const auto& c : cases) {
    const base::Exception e = ParseFailure(c.text);
    EXPECT_EQ(c.code, e.getCode()) << c.text;
    EXPECT_EQ(String(u"Assert false : ") + c.what + u" [JSON::ValueT<char>::" + c.where + u" ()]", e.getMessage());
  }
  for (const char* bad : {"[1\f]", "\btrue", "01", "-", "1e+", "+1", ".5", "1.e5", "", "[1 2]", "{\"a\":1,}", "{1:2}",
                          "truth", "[\"a\"]]", "[1,]", "\"\\x\""})
    EXPECT_EQ(JSON::ParseError, ParseFailure(bad).getCode()) << bad;

  size_t pos = 0;
  Value().read("[1] {\"a\":2}", pos);
  EXPECT_EQ(3u, pos);

  const std::string deep(Value::kMaxDepth, '[');
  EXPECT_NO_THROW(Value::parse(deep + std::string(Value::kMaxDepth, ']')));
  EXPECT_EQ(u"Assert false : Parse error: pos=512. [JSON::ValueT<char>::read_array ()]",
            ParseFailure(deep + "[]" + std::string(Value::kMaxDepth, ']')).getMessage());
  EXPECT_EQ(JSON::ParseError, ParseFailure(std::string(200000, '{')).getCode());
}

}  // namespace
