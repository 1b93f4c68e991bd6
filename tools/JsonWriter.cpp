#include "JsonWriter.h"

#include <cmath>
#include <cstdio>

#include "text/String.h"

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

namespace {

bool IsHighSurrogate(char16_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool IsLowSurrogate(char16_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

void AppendEscaped(std::string& out, uint32_t unit) {
  char escaped[8];
  std::snprintf(escaped, sizeof escaped, "\\u%04x", static_cast<unsigned>(unit));
  out += escaped;
}

}  // namespace

// The text is native bytes; a byte that is not UTF-8 (or a lone surrogate on Windows) goes
// out as the \u escape of the unit that stands for it in the component's strings, so the
// output stays UTF-8 and a reader can tell every name apart.
std::string JsonText(const std::string& text) {
  const base::String units = base::FromNativeBytes(text);
  std::string out = "\"";
  for (size_t i = 0; i < units.size(); ++i) {
    const char16_t unit = units[i];
    if (IsHighSurrogate(unit) && i + 1 < units.size() && IsLowSurrogate(units[i + 1])) {
      base::AppendUtf8(out, 0x10000 + ((unit - 0xD800) << 10) + (units[++i] - 0xDC00));
      continue;
    }
    switch (unit) {
      case u'"': out += "\\\""; break;
      case u'\\': out += "\\\\"; break;
      case u'\n': out += "\\n"; break;
      case u'\r': out += "\\r"; break;
      case u'\t': out += "\\t"; break;
      default:
        if (unit < 0x20 || unit == 0x7F || IsHighSurrogate(unit) || IsLowSurrogate(unit)) AppendEscaped(out, unit);
        else base::AppendUtf8(out, unit);
    }
  }
  return out + "\"";
}
