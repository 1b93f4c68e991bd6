// JSON values over 8-bit (UTF-8) text: a reader and a compact writer. The resume records
// keep the blocks an upload still owes as a JSON array of strings; any other small JSON
// document of the client can use the same type.
//
// Failures raise base::Exception with the provider "JSON" and the message
// "Assert false : <what> [<function> ()]", for instance
// "Assert false : Parse error: pos=3. [JSON::ValueT<char>::read_array ()]".
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <type_traits>
#include <vector>

namespace JSON {

// Type codes; TypeName gives the names used in messages ("Unknown", "Array", ...).
enum ValueType {
  UnknownType = 0,
  ArrayType = 1,
  ObjectType = 2,
  StringType = 3,
  BooleanType = 4,
  FloatType = 5,
  IntegerType = 6,
  NullType = 7,
};

// Exception codes of the provider "JSON".
enum ErrorCode {
  TypeError = 1,    // "Type error: except(%s), actual(%s)"
  ParseError = 2,   // "Parse error: pos=%u."
  DecodeError = 3,  // "Decode error: invalid character=0x%x." / "Decode error: in=%s."
  FormatError = 4,  // "Format error."
};

extern const char16_t kErrorProvider[];  // u"JSON"

const char* TypeName(ValueType type);

template <typename Char>
class ValueT {
 public:
  typedef std::basic_string<Char> string_type;
  typedef std::vector<ValueT> array_type;
  typedef std::map<string_type, ValueT> object_type;

  // Nesting deeper than this is refused as a parse error rather than exhausting the stack.
  static const int kMaxDepth = 512;

  ValueT() = default;  // Unknown: holds nothing and cannot be written
  explicit ValueT(ValueType type) : type_(type) {}
  ValueT(bool value) : type_(BooleanType), boolean_(value) {}
  template <typename T,
            typename std::enable_if<std::is_integral<T>::value && !std::is_same<T, bool>::value &&
                                        !std::is_same<T, Char>::value,
                                    int>::type = 0>
  ValueT(T value) : type_(IntegerType), integer_(static_cast<int64_t>(value)) {}
  ValueT(double value) : type_(FloatType), float_(value) {}
  ValueT(const Char* value) : type_(StringType), string_(value ? value : string_type()) {}
  ValueT(const string_type& value) : type_(StringType), string_(value) {}
  ValueT(string_type&& value) : type_(StringType), string_(std::move(value)) {}
  ValueT(const array_type& value) : type_(ArrayType), array_(value) {}
  ValueT(array_type&& value) : type_(ArrayType), array_(std::move(value)) {}

  ValueType type() const { return type_; }
  const char* type_name() const { return TypeName(type_); }
  bool is_null() const { return type_ == NullType; }

  // Typed access; a value of another type raises the type error (code 1).
  const string_type& as_string() const;
  string_type& as_string();
  const array_type& as_array() const;
  array_type& as_array();
  const object_type& as_object() const;
  object_type& as_object();
  bool as_boolean() const;
  int64_t as_integer() const;
  double as_float() const;

  // Elements of an array or members of an object.
  size_t size() const;
  const ValueT& operator[](size_t index) const;
  ValueT& operator[](size_t index);
  // An Unknown or Null value becomes an empty object (or array) on first use.
  ValueT& operator[](const string_type& key);
  void push_back(const ValueT& element);
  void push_back(ValueT&& element);

  // Reads one value from text at pos, skipping blanks before it, and leaves pos after it.
  void read(const string_type& text, size_t& pos);
  // Reads text that holds exactly one value (blanks around it are allowed).
  void read(const string_type& text);
  static ValueT parse(const string_type& text);

  // Compact JSON text ("[\"1-4\",\"7\"]"); an Unknown value or a non-finite float raises
  // the format error.
  string_type to_string() const;
  void write(string_type& out) const;

 private:
  struct Reader;

  static void read_value(ValueT& value, Reader& reader);
  static void read_string(string_type& out, Reader& reader);
  static void read_number(ValueT& value, Reader& reader);
  static void read_boolean(ValueT& value, Reader& reader);
  static void read_nil(ValueT& value, Reader& reader);
  static void read_array(ValueT& value, Reader& reader);
  static void read_object(ValueT& value, Reader& reader);
  static void decode_unicode(string_type& out, Reader& reader);
  static uint16_t hex_to_ushort(const Char* digits);
  static int hex_to_int(Char digit);
  static string_type internal_to_string(const ValueT& value);
  static void write_string(const string_type& text, string_type& out);

  void check_type(ValueType expected, const char* function) const;

  ValueType type_ = UnknownType;
  bool boolean_ = false;
  int64_t integer_ = 0;
  double float_ = 0;
  string_type string_;
  array_type array_;
  object_type object_;
};

typedef ValueT<char> Value;

}  // namespace JSON
