#include "dataapi/ncJson.h"

#include <charconv>
#include <cmath>

#include "text/String.h"
#include "docmgr/Exception.h"

using base::String;

namespace JSON {

const char16_t kErrorProvider[] = u"JSON";

const char* TypeName(ValueType type) {
  static const char* const names[] = {"Unknown", "Array", "Object", "String", "Boolean", "Float", "Integer", "Null"};
  const unsigned index = static_cast<unsigned>(type);
  return index < sizeof names / sizeof names[0] ? names[index] : names[0];
}

namespace {

template <typename Char>
struct CharName;
template <>
struct CharName<char> {
  static const char* get() { return "char"; }
};

[[noreturn]] void Raise(const char* file, int line, int code, const base::String& message,
                        const std::string& function) {
  throw base::Exception(file, line, base::Format(u"Assert false : %s [%s ()]", message, function), code,
                        kErrorProvider);
}

// The qualified name of a member of ValueT<Char>, as the messages show it.
template <typename Char>
std::string MemberName(const char* member) {
  return std::string("JSON::ValueT<") + CharName<Char>::get() + ">::" + member;
}

#define JSON_RAISE(Char, code, member, ...) \
  Raise(__FILE__, __LINE__, (code), ::base::Format(__VA_ARGS__), MemberName<Char>(member))

// Blanks between tokens: the JSON grammar's four.
template <typename Char>
bool IsBlank(Char c) {
  return c == 9 || c == 10 || c == 13 || c == 32;
}

// Before a number backspace and form feed are skipped as well: older writers of the client
// put them there.
template <typename Char>
bool IsNumberBlank(Char c) {
  return IsBlank(c) || c == 8 || c == 12;
}

template <typename Char>
bool IsDigit(Char c) {
  return c >= '0' && c <= '9';
}

}  // namespace

// The text being read and the reader's position in it. Every access checks pos against
// size, so a truncated text ends in a parse error at its end.
template <typename Char>
struct ValueT<Char>::Reader {
  const Char* text;
  size_t size;
  size_t pos;
  int depth;

  bool atEnd() const { return pos >= size; }
  Char peek() const { return text[pos]; }
  void skipBlanks() {
    while (pos < size && IsBlank(text[pos])) ++pos;
  }
  void skipNumberBlanks() {
    while (pos < size && IsNumberBlank(text[pos])) ++pos;
  }
  // The unit after the blanks that may precede a number, without moving; 0 at the end.
  Char peekPastNumberBlanks() const {
    size_t at = pos;
    while (at < size && IsNumberBlank(text[at])) ++at;
    return at < size ? text[at] : Char(0);
  }
  [[noreturn]] void fail(const char* member) const {
    JSON_RAISE(Char, ParseError, member, u"Parse error: pos=%u.", static_cast<unsigned>(pos));
  }
  // Fails unless units more units remain; the error then names the end of the text, where
  // the input ran short.
  void require(size_t units, const char* member) {
    if (size - pos >= units) return;
    pos = size;
    fail(member);
  }
  // At the opening bracket of an array or object: one level deeper, past the bracket and
  // the blanks after it. False for an empty one, whose closing bracket is passed as well.
  bool openContainer(Char close, const char* member) {
    if (++depth > kMaxDepth) fail(member);
    ++pos;
    skipBlanks();
    if (atEnd() || peek() != close) return true;
    ++pos;
    --depth;
    return false;
  }
  // After an element or member: true past a comma, false past the closing bracket.
  bool nextInContainer(Char close, const char* member) {
    skipBlanks();
    if (atEnd()) fail(member);
    if (peek() == ',') {
      ++pos;
      return true;
    }
    if (peek() != close) fail(member);
    ++pos;
    --depth;
    return false;
  }
};

// --- typed access ----------------------------------------------------------

template <typename Char>
void ValueT<Char>::check_type(ValueType expected, const char* function) const {
  if (type_ != expected)
    JSON_RAISE(Char, TypeError, function, u"Type error: except(%s), actual(%s)", TypeName(expected), TypeName(type_));
}

template <typename Char>
const typename ValueT<Char>::string_type& ValueT<Char>::as_string() const {
  check_type(StringType, "as_string");
  return string_;
}

template <typename Char>
typename ValueT<Char>::string_type& ValueT<Char>::as_string() {
  check_type(StringType, "as_string");
  return string_;
}

template <typename Char>
const typename ValueT<Char>::array_type& ValueT<Char>::as_array() const {
  check_type(ArrayType, "as_array");
  return array_;
}

template <typename Char>
typename ValueT<Char>::array_type& ValueT<Char>::as_array() {
  check_type(ArrayType, "as_array");
  return array_;
}

template <typename Char>
const typename ValueT<Char>::object_type& ValueT<Char>::as_object() const {
  check_type(ObjectType, "as_object");
  return object_;
}

template <typename Char>
typename ValueT<Char>::object_type& ValueT<Char>::as_object() {
  check_type(ObjectType, "as_object");
  return object_;
}

template <typename Char>
bool ValueT<Char>::as_boolean() const {
  check_type(BooleanType, "as_boolean");
  return boolean_;
}

template <typename Char>
int64_t ValueT<Char>::as_integer() const {
  check_type(IntegerType, "as_integer");
  return integer_;
}

template <typename Char>
double ValueT<Char>::as_float() const {
  check_type(FloatType, "as_float");
  return float_;
}

template <typename Char>
size_t ValueT<Char>::size() const {
  if (type_ == ObjectType) return object_.size();
  check_type(ArrayType, "size");
  return array_.size();
}

template <typename Char>
const ValueT<Char>& ValueT<Char>::operator[](size_t index) const {
  return as_array().at(index);
}

template <typename Char>
ValueT<Char>& ValueT<Char>::operator[](size_t index) {
  return as_array().at(index);
}

template <typename Char>
ValueT<Char>& ValueT<Char>::operator[](const string_type& key) {
  if (type_ == UnknownType || type_ == NullType) type_ = ObjectType;
  return as_object()[key];
}

template <typename Char>
void ValueT<Char>::push_back(const ValueT& element) {
  if (type_ == UnknownType || type_ == NullType) type_ = ArrayType;
  as_array().push_back(element);
}

template <typename Char>
void ValueT<Char>::push_back(ValueT&& element) {
  if (type_ == UnknownType || type_ == NullType) type_ = ArrayType;
  as_array().push_back(std::move(element));
}

// --- reader ----------------------------------------------------------------

template <typename Char>
void ValueT<Char>::read(const string_type& text, size_t& pos) {
  Reader reader{text.data(), text.size(), pos, 0};
  ValueT value;
  read_value(value, reader);
  *this = std::move(value);
  pos = reader.pos;
}

template <typename Char>
void ValueT<Char>::read(const string_type& text) {
  Reader reader{text.data(), text.size(), 0, 0};
  ValueT value;
  read_value(value, reader);
  reader.skipBlanks();
  if (!reader.atEnd()) reader.fail("read");
  *this = std::move(value);
}

template <typename Char>
ValueT<Char> ValueT<Char>::parse(const string_type& text) {
  ValueT value;
  value.read(text);
  return value;
}

template <typename Char>
void ValueT<Char>::read_value(ValueT& value, Reader& reader) {
  reader.skipBlanks();
  if (reader.atEnd()) reader.fail("read");
  const Char c = reader.peek();
  const Char numberStart = reader.peekPastNumberBlanks();
  if (numberStart == '-' || IsDigit(numberStart)) {
    read_number(value, reader);
  } else if (c == '"') {
    value.type_ = StringType;
    read_string(value.string_, reader);
  } else if (c == 't' || c == 'f') {
    read_boolean(value, reader);
  } else if (c == 'n') {
    read_nil(value, reader);
  } else if (c == '[') {
    read_array(value, reader);
  } else if (c == '{') {
    read_object(value, reader);
  } else {
    reader.fail("read");
  }
}

template <typename Char>
void ValueT<Char>::read_number(ValueT& value, Reader& reader) {
  static const char* const kName = "read_number";
  reader.skipNumberBlanks();
  const size_t start = reader.pos;
  // States of the number grammar: -? (0 | [1-9][0-9]*) (. [0-9]+)? ([eE] [+-]? [0-9]+)?
  if (!reader.atEnd() && reader.peek() == '-') ++reader.pos;
  if (reader.atEnd()) reader.fail(kName);
  if (reader.peek() == '0') {
    ++reader.pos;
  } else if (IsDigit(reader.peek())) {
    while (!reader.atEnd() && IsDigit(reader.peek())) ++reader.pos;
  } else {
    reader.fail(kName);
  }
  bool integral = true;
  if (!reader.atEnd() && reader.peek() == '.') {
    integral = false;
    ++reader.pos;
    if (reader.atEnd() || !IsDigit(reader.peek())) reader.fail(kName);
    while (!reader.atEnd() && IsDigit(reader.peek())) ++reader.pos;
  }
  if (!reader.atEnd() && (reader.peek() == 'e' || reader.peek() == 'E')) {
    integral = false;
    ++reader.pos;
    if (!reader.atEnd() && (reader.peek() == '+' || reader.peek() == '-')) ++reader.pos;
    if (reader.atEnd() || !IsDigit(reader.peek())) reader.fail(kName);
    while (!reader.atEnd() && IsDigit(reader.peek())) ++reader.pos;
  }
  const std::string digits(reader.text + start, reader.text + reader.pos);
  const char* first = digits.data();
  const char* last = first + digits.size();
  if (integral) {
    int64_t number = 0;
    const auto result = std::from_chars(first, last, number);
    // "-0" stays a float, so that the sign survives writing it back.
    if (result.ec == std::errc() && result.ptr == last && !(number == 0 && digits[0] == '-')) {
      value.type_ = IntegerType;
      value.integer_ = number;
      return;
    }
    // Beyond 64 bits: kept as a float, as other JSON readers do.
  }
  double number = 0;
  const auto result = std::from_chars(first, last, number);
  if (result.ec == std::errc::result_out_of_range) {
    number = digits[0] == '-' ? -HUGE_VAL : HUGE_VAL;
    // A tiny magnitude underflows to zero rather than to infinity.
    const size_t exponent = digits.find_first_of("eE");
    if (exponent != std::string::npos && digits.find('-', exponent) != std::string::npos) number = 0;
  } else if (result.ec != std::errc()) {
    reader.fail(kName);
  }
  value.type_ = FloatType;
  value.float_ = number;
}

template <typename Char>
int ValueT<Char>::hex_to_int(Char digit) {
  if (digit >= '0' && digit <= '9') return digit - '0';
  if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
  if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
  JSON_RAISE(Char, DecodeError, "hex_to_int", u"Decode error: invalid character=0x%x.",
             static_cast<unsigned>(static_cast<typename std::make_unsigned<Char>::type>(digit)));
}

template <typename Char>
uint16_t ValueT<Char>::hex_to_ushort(const Char* digits) {
  uint16_t value = 0;
  for (int i = 0; i < 4; ++i) value = static_cast<uint16_t>((value << 4) | hex_to_int(digits[i]));
  return value;
}

// At the "u" of a \u escape: four hexadecimal digits, and for a high surrogate the
// \u escape of the low surrogate that must follow.
template <typename Char>
void ValueT<Char>::decode_unicode(string_type& out, Reader& reader) {
  static const char* const kName = "decode_unicode";
  const size_t escape = reader.pos - 1;  // the backslash
  ++reader.pos;
  reader.require(4, kName);
  uint32_t codePoint = hex_to_ushort(reader.text + reader.pos);
  reader.pos += 4;
  const auto invalid = [&]() {
    const std::string in(reader.text + escape, reader.text + reader.pos);
    JSON_RAISE(Char, DecodeError, kName, u"Decode error: in=%s.", in);
  };
  if (codePoint >= 0xDC00 && codePoint <= 0xDFFF) invalid();
  if (codePoint >= 0xD800 && codePoint <= 0xDBFF) {
    reader.require(2, kName);
    if (reader.text[reader.pos] != '\\' || reader.text[reader.pos + 1] != 'u') invalid();
    reader.pos += 2;
    reader.require(4, kName);
    const uint32_t low = hex_to_ushort(reader.text + reader.pos);
    reader.pos += 4;
    if (low < 0xDC00 || low > 0xDFFF) invalid();
    codePoint = 0x10000 + ((codePoint - 0xD800) << 10) + (low - 0xDC00);
  }
  base::AppendUtf8(out, codePoint);
}

template <typename Char>
void ValueT<Char>::read_string(string_type& out, Reader& reader) {
  static const char* const kName = "read_string";
  if (reader.atEnd() || reader.peek() != '"') reader.fail(kName);
  ++reader.pos;
  out.clear();
  for (;;) {
    if (reader.atEnd()) reader.fail(kName);
    const Char c = reader.peek();
    if (c == '"') {
      ++reader.pos;
      return;
    }
    if (static_cast<typename std::make_unsigned<Char>::type>(c) < 0x20) reader.fail(kName);
    if (c != '\\') {
      // Runs of plain characters are copied at once.
      const size_t start = reader.pos;
      while (!reader.atEnd() && reader.peek() != '"' && reader.peek() != '\\' &&
             static_cast<typename std::make_unsigned<Char>::type>(reader.peek()) >= 0x20)
        ++reader.pos;
      out.append(reader.text + start, reader.pos - start);
      continue;
    }
    ++reader.pos;
    if (reader.atEnd()) reader.fail(kName);
    switch (reader.peek()) {
      case '"': out += '"'; break;
      case '\\': out += '\\'; break;
      case '/': out += '/'; break;
      case 'b': out += '\b'; break;
      case 'f': out += '\f'; break;
      case 'n': out += '\n'; break;
      case 'r': out += '\r'; break;
      case 't': out += '\t'; break;
      case 'u': decode_unicode(out, reader); continue;
      default: reader.fail(kName);
    }
    ++reader.pos;
  }
}

template <typename Char>
void ValueT<Char>::read_boolean(ValueT& value, Reader& reader) {
  static const char* const kName = "read_boolean";
  const bool truth = reader.peek() == 't';
  const char* word = truth ? "true" : "false";
  for (const char* c = word; *c; ++c, ++reader.pos)
    if (reader.atEnd() || reader.peek() != *c) reader.fail(kName);
  value.type_ = BooleanType;
  value.boolean_ = truth;
}

template <typename Char>
void ValueT<Char>::read_nil(ValueT& value, Reader& reader) {
  for (const char* c = "null"; *c; ++c, ++reader.pos)
    if (reader.atEnd() || reader.peek() != *c) reader.fail("read_nil");
  value.type_ = NullType;
}

template <typename Char>
void ValueT<Char>::read_array(ValueT& value, Reader& reader) {
  static const char* const kName = "read_array";
  value.type_ = ArrayType;
  value.array_.clear();
  if (!reader.openContainer(']', kName)) return;
  do {
    value.array_.emplace_back();
    read_value(value.array_.back(), reader);
  } while (reader.nextInContainer(']', kName));
}

template <typename Char>
void ValueT<Char>::read_object(ValueT& value, Reader& reader) {
  static const char* const kName = "read_object";
  value.type_ = ObjectType;
  value.object_.clear();
  if (!reader.openContainer('}', kName)) return;
  string_type key;
  do {
    reader.skipBlanks();
    if (reader.atEnd() || reader.peek() != '"') reader.fail(kName);
    read_string(key, reader);
    reader.skipBlanks();
    if (reader.atEnd() || reader.peek() != ':') reader.fail(kName);
    ++reader.pos;
    ValueT member;
    read_value(member, reader);
    value.object_[key] = std::move(member);  // a repeated name keeps the last value
  } while (reader.nextInContainer('}', kName));
}

// --- writer ----------------------------------------------------------------

template <typename Char>
typename ValueT<Char>::string_type ValueT<Char>::internal_to_string(const ValueT& value) {
  base::String text;
  if (value.type_ == IntegerType) {
    text = base::Format(u"%I64d", value.integer_);
  } else if (value.type_ == FloatType && std::isfinite(value.float_)) {
    text = base::Format(u"%.16g", value.float_);
  } else {
    JSON_RAISE(Char, FormatError, "internal_to_string", u"Format error.");
  }
  return string_type(text.begin(), text.end());  // digits, signs and exponents only
}

template <typename Char>
void ValueT<Char>::write_string(const string_type& text, string_type& out) {
  static const char kHex[] = "0123456789abcdef";
  out += '"';
  for (const Char c : text) {
    switch (c) {
      case '"': out += '\\'; out += '"'; break;
      case '\\': out += '\\'; out += '\\'; break;
      case '\b': out += '\\'; out += 'b'; break;
      case '\f': out += '\\'; out += 'f'; break;
      case '\n': out += '\\'; out += 'n'; break;
      case '\r': out += '\\'; out += 'r'; break;
      case '\t': out += '\\'; out += 't'; break;
      default: {
        const auto unit = static_cast<typename std::make_unsigned<Char>::type>(c);
        if (unit < 0x20) {
          const Char escape[] = {'\\', 'u', '0', '0', static_cast<Char>(kHex[unit >> 4]),
                                 static_cast<Char>(kHex[unit & 0xF])};
          out.append(escape, 6);
        } else {
          out += c;  // UTF-8 bytes go out as they are
        }
      }
    }
  }
  out += '"';
}

template <typename Char>
void ValueT<Char>::write(string_type& out) const {
  switch (type_) {
    case NullType: {
      static const Char word[] = {'n', 'u', 'l', 'l'};
      out.append(word, 4);
      return;
    }
    case BooleanType: {
      static const Char yes[] = {'t', 'r', 'u', 'e'};
      static const Char no[] = {'f', 'a', 'l', 's', 'e'};
      if (boolean_) out.append(yes, 4);
      else out.append(no, 5);
      return;
    }
    case IntegerType:
    case FloatType:
      out += internal_to_string(*this);
      return;
    case StringType:
      write_string(string_, out);
      return;
    case ArrayType:
      out += '[';
      for (size_t i = 0; i < array_.size(); ++i) {
        if (i) out += ',';
        array_[i].write(out);
      }
      out += ']';
      return;
    case ObjectType: {
      out += '{';
      bool first = true;
      for (const auto& member : object_) {
        if (!first) out += ',';
        first = false;
        write_string(member.first, out);
        out += ':';
        member.second.write(out);
      }
      out += '}';
      return;
    }
    case UnknownType:
      break;
  }
  JSON_RAISE(Char, FormatError, "write", u"Format error.");
}

template <typename Char>
typename ValueT<Char>::string_type ValueT<Char>::to_string() const {
  string_type out;
  out.reserve(128);
  write(out);
  return out;
}

template class ValueT<char>;

}  // namespace JSON
