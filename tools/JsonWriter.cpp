#include "JsonWriter.h"

#include <cmath>
#include <cstdio>

void JsonWriter::separate() {
  if (afterKey_) {
    afterKey_ = false;
    return;
  }
  if (firstInLevel_.empty()) return;
  if (!firstInLevel_.back()) out_ += ", ";
  firstInLevel_.back() = false;
}

JsonWriter& JsonWriter::beginObject() {
  separate();
  out_ += '{';
  firstInLevel_.push_back(true);
  return *this;
}

JsonWriter& JsonWriter::endObject() {
  firstInLevel_.pop_back();
  out_ += '}';
  return *this;
}

JsonWriter& JsonWriter::beginArray() {
  separate();
  out_ += '[';
  firstInLevel_.push_back(true);
  return *this;
}

JsonWriter& JsonWriter::endArray() {
  firstInLevel_.pop_back();
  out_ += ']';
  return *this;
}

JsonWriter& JsonWriter::key(const std::string& name) {
  separate();
  out_ += JsonText(name) + ": ";
  afterKey_ = true;
  return *this;
}

JsonWriter& JsonWriter::value(const std::string& text) {
  separate();
  out_ += JsonText(text);
  return *this;
}

JsonWriter& JsonWriter::value(bool flag) {
  separate();
  out_ += flag ? "true" : "false";
  return *this;
}

JsonWriter& JsonWriter::value(int64_t number) {
  separate();
  out_ += std::to_string(number);
  return *this;
}

JsonWriter& JsonWriter::value(double number) {
  if (!std::isfinite(number)) return null();  // JSON has no NaN or infinity
  separate();
  char text[32];
  std::snprintf(text, sizeof text, "%.6g", number);
  out_ += text;
  return *this;
}

JsonWriter& JsonWriter::null() {
  separate();
  out_ += "null";
  return *this;
}

void JsonWriter::print() const { std::printf("%s\n", out_.c_str()); }

std::string JsonText(const std::string& text) {
  std::string out = "\"";
  for (unsigned char c : text) {
    switch (c) {
      case '"': out += "\\\""; break;
      case '\\': out += "\\\\"; break;
      case '\n': out += "\\n"; break;
      case '\r': out += "\\r"; break;
      case '\t': out += "\\t"; break;
      default:
        if (c < 0x20 || c == 0x7F) {
          char escaped[8];
          std::snprintf(escaped, sizeof escaped, "\\u%04x", c);
          out += escaped;
        } else {
          out += static_cast<char>(c);
        }
    }
  }
  return out + "\"";
}
