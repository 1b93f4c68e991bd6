// Builds the tool's --json output: members and elements are separated and texts escaped in
// one place, so no command assembles JSON by hand.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

class JsonWriter {
 public:
  JsonWriter& beginObject();
  JsonWriter& endObject();
  JsonWriter& beginArray();
  JsonWriter& endArray();
  // The name of the next member of the open object.
  JsonWriter& key(const std::string& name);

  JsonWriter& value(const std::string& text);
  JsonWriter& value(const char* text) { return value(std::string(text)); }
  JsonWriter& value(bool flag);
  JsonWriter& value(int64_t number);
  JsonWriter& value(int32_t number) { return value(static_cast<int64_t>(number)); }
  JsonWriter& value(uint32_t number) { return value(static_cast<int64_t>(number)); }
  JsonWriter& value(uint64_t number) { return value(static_cast<int64_t>(number)); }
  JsonWriter& value(double number);
  JsonWriter& null();

  template <typename T>
  JsonWriter& member(const std::string& name, const T& v) {
    return key(name).value(v);
  }

  const std::string& text() const { return out_; }
  // The document and a newline on standard output.
  void print() const;

 private:
  void separate();
  std::string out_;
  std::vector<bool> firstInLevel_;
  bool afterKey_ = false;
};

// A JSON string literal of native bytes, UTF-8 whatever the bytes: control characters and
// the units that stand for bytes that are not UTF-8 are \u escapes.
std::string JsonText(const std::string& text);
