// The JSON value type: what it reads, what it writes back, and how it refuses bad text.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "TestSupport.h"
#include "dataapi/ncJson.h"

using base::String;

namespace {

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

TEST(JsonTest, ReadsEveryTypeWritesItBackAndReportsTypeAndFormatErrors) {
  const Value root = Value::parse(" {\"list\": [1, -2.5e3, \"x\", true, false, null, {}, []],\r\n\t\"n\": 0} ");
  ASSERT_EQ(JSON::ObjectType, root.type());
  const Value& list = root.as_object().at("list");
  ASSERT_EQ(8u, list.size());
  const char* expected[] = {"Integer", "Float", "String", "Boolean", "Boolean", "Null", "Object", "Array"};
  for (size_t i = 0; i < list.size(); ++i) EXPECT_STREQ(expected[i], list[i].type_name());
  EXPECT_EQ(1, list[0].as_integer());
  EXPECT_DOUBLE_EQ(-2500.0, list[1].as_float());
  EXPECT_TRUE(list[3].as_boolean());
  EXPECT_STREQ("Unknown", Value().type_name());
  EXPECT_EQ("{\"list\":[1,-2500,\"x\",true,false,null,{},[]],\"n\":0}", root.to_string());

  // Reading as the wrong type, and writing what has no text.
  // The full text of this one is checked where a block list reaches it.
  EXPECT_EQ(JSON::TypeError, Raised([] { Value(5).as_string(); }).getCode());
  EXPECT_EQ(u"Assert false : Type error: except(Array), actual(Object) [JSON::ValueT<char>::as_array ()]",
            Raised([] { Value::parse("{}").as_array(); }).getMessage());
  const base::Exception format = Raised([] { Value(std::nan("")).to_string(); });
  EXPECT_EQ(JSON::FormatError, format.getCode());
  EXPECT_EQ(u"Assert false : Format error. [JSON::ValueT<char>::internal_to_string ()]", format.getMessage());
  EXPECT_EQ(JSON::FormatError, Raised([] { Value list; list.push_back(Value()); list.to_string(); }).getCode());
}

TEST(JsonTest, NumbersFollowTheGrammarAndStringsDecodeEscapesAndKeepUtf8) {
  EXPECT_EQ(INT64_MAX, Value::parse("9223372036854775807").as_integer());
  EXPECT_EQ(INT64_MIN, Value::parse("-9223372036854775808").as_integer());
  EXPECT_EQ("-0", Value::parse("-0").to_string());  // a float, so the sign is kept
  EXPECT_EQ(JSON::FloatType, Value::parse("9223372036854775808").type());  // beyond 64 bits
  EXPECT_DOUBLE_EQ(150.0, Value::parse("1.5E+2").as_float());
  EXPECT_EQ(0.1, Value::parse("0.1").as_float());
  // Backspace and form feed count as blanks before a number, and nowhere else.
  EXPECT_EQ(7, Value::parse("\b\f 7").as_integer());
  EXPECT_EQ("[1,2]", Value::parse("[\b1,\f 2]").to_string());
  for (const char* bad : {"[\f]", "[1\f]", "[1]\b", "{\f\"a\":1}", "{\"a\"\f:1}", "\f\"s\"", "\btrue", "[\f[]]"})
    EXPECT_EQ(JSON::ParseError, ParseFailure(bad).getCode()) << bad;
  EXPECT_EQ(u"Assert false : Parse error: pos=1. [JSON::ValueT<char>::read ()]", ParseFailure("[\f]").getMessage());
  EXPECT_EQ("0.1", Value(0.1).to_string());
  EXPECT_EQ("-42", Value(-42).to_string());
  for (const char* bad : {"01", "-", "1.", "1e", "1e+", "+1", ".5", "-a", "1.e5"})
    EXPECT_EQ(JSON::ParseError, ParseFailure(bad).getCode()) << bad;
  EXPECT_EQ(u"Assert false : Parse error: pos=1. [JSON::ValueT<char>::read ()]", ParseFailure("01").getMessage());
  EXPECT_EQ(u"Assert false : Parse error: pos=2. [JSON::ValueT<char>::read_number ()]",
            ParseFailure("1.").getMessage());

  // Strings decode their escapes and keep UTF-8.
  const std::string text = "\"q\\\" b\\\\ s\\/ \\b\\f\\n\\r\\t \\u00e9\\u4E2D \\ud83d\\ude00 raw 文件\"";
  const Value value = Value::parse(text);
  EXPECT_EQ("q\" b\\ s/ \b\f\n\r\t \xC3\xA9\xE4\xB8\xAD \xF0\x9F\x98\x80 raw 文件", value.as_string());
  // Written back with the short escapes, other control characters as \u00XX, UTF-8 as is.
  EXPECT_EQ("\"q\\\" b\\\\ s/ \\b\\f\\n\\r\\t \xC3\xA9\xE4\xB8\xAD \xF0\x9F\x98\x80 raw 文件\"", value.to_string());
  EXPECT_EQ("\"\\u0001\\u001f\"", Value(std::string("\x01\x1f")).to_string());
  EXPECT_EQ(std::string("a\0b", 3), Value::parse("\"a\\u0000b\"").as_string());

  EXPECT_EQ(u"Assert false : Decode error: invalid character=0x47. [JSON::ValueT<char>::hex_to_int ()]",
            ParseFailure("\"\\u12G4\"").getMessage());
  EXPECT_EQ(JSON::DecodeError, ParseFailure("\"\\u12G4\"").getCode());
  EXPECT_EQ(u"Assert false : Decode error: in=\\udc00. [JSON::ValueT<char>::decode_unicode ()]",
            ParseFailure("\"\\udc00\"").getMessage());
  EXPECT_EQ(u"Assert false : Decode error: in=\\ud83d\\u0041. [JSON::ValueT<char>::decode_unicode ()]",
            ParseFailure("\"\\ud83d\\u0041\"").getMessage());
  EXPECT_EQ(JSON::DecodeError, ParseFailure("\"\\ud83dx\"").getCode());
  // A raw control character and an unknown escape break the grammar.
  EXPECT_EQ(u"Assert false : Parse error: pos=2. [JSON::ValueT<char>::read_string ()]",
            ParseFailure("\"a\nb\"").getMessage());
  EXPECT_EQ(JSON::ParseError, ParseFailure("\"\\x\"").getCode());
}

TEST(JsonTest, ReadsOneValueAtAPositionAndRefusesTrailingTextAndDeepNesting) {
  const std::string text = "[1] {\"a\":2}";
  size_t pos = 0;
  Value first, second;
  first.read(text, pos);
  EXPECT_EQ(3u, pos);
  second.read(text, pos);
  EXPECT_EQ(text.size(), pos);
  EXPECT_EQ(2, second["a"].as_integer());
  EXPECT_EQ(u"Assert false : Parse error: pos=4. [JSON::ValueT<char>::read ()]", ParseFailure(text).getMessage());
  EXPECT_EQ(u"Assert false : Parse error: pos=3. [JSON::ValueT<char>::read ()]", ParseFailure("[1,]").getMessage());
  EXPECT_EQ(u"Assert false : Parse error: pos=2. [JSON::ValueT<char>::read_array ()]",
            ParseFailure("[1}").getMessage());
  for (const char* bad : {"", "   ", "[1 2]", "{\"a\" 1}", "{\"a\":1,}", "{1:2}", "nul", "truth", "[\"a\"]]", "]"})
    EXPECT_EQ(JSON::ParseError, ParseFailure(bad).getCode()) << bad;

  // Deep nesting is a parse error, not a crash.
  const std::string deep(Value::kMaxDepth, '[');
  EXPECT_NO_THROW(Value::parse(deep + std::string(Value::kMaxDepth, ']')));
  EXPECT_EQ(u"Assert false : Parse error: pos=512. [JSON::ValueT<char>::read_array ()]",
            ParseFailure(deep + "[]" + std::string(Value::kMaxDepth, ']')).getMessage());
  EXPECT_EQ(JSON::ParseError, ParseFailure(std::string(200000, '[')).getCode());
  EXPECT_EQ(JSON::ParseError, ParseFailure(std::string(200000, '{')).getCode());
}

const char* const kDocuments[] = {
    "[\"1-4\",\"7\",\"9-\"]",
    "{\"a\":[{\"b\":[null,true,false]},-0.5e-3,{\"c\":{}}],\"d\":\"\\u4e2d\\ud83d\\ude00\\\"\"}",
    "[\"文件 \\\\ 报告\",\"O'Brien 100%\",[[[[]]]],12345678901234]",
};

// Every proper prefix of a document is refused at its end: the reader never looks past it.
TEST(JsonTest, TruncatedTextStopsAtItsEnd) {
  for (const std::string document : kDocuments) {
    ASSERT_NO_THROW(Value::parse(document)) << document;
    for (size_t size = 0; size < document.size(); ++size) {
      const std::string prefix = document.substr(0, size);
      const base::Exception e = ParseFailure(prefix);
      EXPECT_EQ(JSON::ParseError, e.getCode()) << prefix;
      EXPECT_NE(base::String::npos, e.getMessage().find(base::Format(u"Parse error: pos=%u.", size))) << prefix;
    }
  }
}

}  // namespace
