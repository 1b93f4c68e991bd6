#include "text/String.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstring>

namespace base {

void AppendUtf8(std::string& out, uint32_t cp) {
  if (cp < 0x80) {
    out += static_cast<char>(cp);
  } else if (cp < 0x800) {
    out += static_cast<char>(0xC0 | (cp >> 6));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else if (cp < 0x10000) {
    out += static_cast<char>(0xE0 | (cp >> 12));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (cp >> 18));
    out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  }
}

namespace {

void AppendUtf16(String& out, uint32_t cp) {
  if (cp < 0x10000) {
    out += static_cast<char16_t>(cp);
  } else {
    cp -= 0x10000;
    out += static_cast<char16_t>(0xD800 + (cp >> 10));
    out += static_cast<char16_t>(0xDC00 + (cp & 0x3FF));
  }
}

bool IsHighSurrogate(uint32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool IsLowSurrogate(uint32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }
bool IsSurrogate(uint32_t unit) { return unit >= 0xD800 && unit <= 0xDFFF; }

// Length of the UTF-8 sequence led by byte b, 0 when b cannot lead one.
int SequenceLength(unsigned char b) {
  if (b < 0x80) return 1;
  if (b >= 0xC2 && b <= 0xDF) return 2;
  if (b >= 0xE0 && b <= 0xEF) return 3;
  if (b >= 0xF0 && b <= 0xF4) return 4;
  return 0;
}

// Decodes the generalised UTF-8 sequence at bytes[i]: shortest forms only, surrogate code
// points allowed in their 3-byte form. Returns its length, or 0 when the bytes there start
// no such sequence.
int DecodeSequence(const unsigned char* bytes, size_t size, size_t i, uint32_t& cp) {
  const int length = SequenceLength(bytes[i]);
  if (length == 0 || i + static_cast<size_t>(length) > size) return 0;
  cp = length == 1 ? bytes[i] : bytes[i] & (0x7F >> length);
  for (int k = 1; k < length; ++k) {
    if ((bytes[i + k] & 0xC0) != 0x80) return 0;
    cp = (cp << 6) | (bytes[i + k] & 0x3F);
  }
  if ((length == 3 && cp < 0x800) || (length == 4 && (cp < 0x10000 || cp > 0x10FFFF))) return 0;
  return length;
}

// Lone surrogates U+DC80..U+DCFF stand for the bytes 0x80..0xFF of a native name that
// are not UTF-8.
const uint32_t kEscapeBase = 0xDC00;
bool IsByteEscape(uint32_t unit) { return unit >= 0xDC80 && unit <= 0xDCFF; }

// Appends the units from text[i] on; returns how many it took (2 for a pair).
template <typename LoneSurrogate>
size_t AppendUnitAsUtf8(std::string& out, const String& text, size_t i, LoneSurrogate lone) {
  const uint32_t unit = text[i];
  if (IsHighSurrogate(unit) && i + 1 < text.size() && IsLowSurrogate(text[i + 1])) {
    AppendUtf8(out, 0x10000 + ((unit - 0xD800) << 10) + (text[i + 1] - 0xDC00));
    return 2;
  }
  if (IsSurrogate(unit)) {
    lone(out, unit);
  } else {
    AppendUtf8(out, unit);
  }
  return 1;
}

template <typename LoneSurrogate>
std::string EncodeUnits(const String& text, LoneSurrogate lone) {
  // Most texts (SQL, paths) are plain ASCII: copy that leading part in one go.
  size_t ascii = 0;
  while (ascii < text.size() && text[ascii] < 0x80) ++ascii;
  std::string out(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(ascii));
  if (ascii == text.size()) return out;
  out.reserve(text.size() + text.size() / 2);
  for (size_t i = ascii; i < text.size();) i += AppendUnitAsUtf8(out, text, i, lone);
  return out;
}

void AppendEscapes(String& out, const unsigned char* bytes, size_t count) {
  for (size_t k = 0; k < count; ++k) out += static_cast<char16_t>(kEscapeBase + bytes[k]);
}

// Appends the lone high surrogates of a run of 3-byte forms (bytes[0..count)), or the
// escapes of those bytes when the units would pair with what follows and so not be written
// back as the same bytes.
void AppendHighSurrogateRun(String& out, const unsigned char* bytes, size_t count, bool followedByLow) {
  if (followedByLow) {
    AppendEscapes(out, bytes, count);
    return;
  }
  for (size_t k = 0; k < count; k += 3) {
    uint32_t cp = 0;
    DecodeSequence(bytes, count, k, cp);
    out += static_cast<char16_t>(cp);
  }
}

}  // namespace

std::string ToUtf8(const String& text) {
  return EncodeUnits(text, [](std::string& out, uint32_t unit) { AppendUtf8(out, unit); });
}

String FromUtf8(const std::string& text) {
  String out;
  out.reserve(text.size());
  const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
  for (size_t i = 0; i < text.size();) {
    if (bytes[i] < 0x80) {  // most of what SQLite hands back
      out += static_cast<char16_t>(bytes[i++]);
      continue;
    }
    uint32_t cp = 0;
    const int length = DecodeSequence(bytes, text.size(), i, cp);
    if (length == 0) {
      out += u'\xFFFD';
      ++i;
      continue;
    }
    AppendUtf16(out, cp);
    i += static_cast<size_t>(length);
  }
  return out;
}

std::string ToNativeBytes(const String& text) {
  return EncodeUnits(text, [](std::string& out, uint32_t unit) {
    if (IsByteEscape(unit)) {
      out += static_cast<char>(unit - kEscapeBase);
    } else {
      AppendUtf8(out, unit);
    }
  });
}

String FromNativeBytes(const std::string& bytes) {
  String out;
  out.reserve(bytes.size());
  const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
  const size_t size = bytes.size();
  size_t highRun = 0;  // bytes of the 3-byte high surrogates just before i
  for (size_t i = 0; i < size;) {
    uint32_t cp = 0;
    const int length = DecodeSequence(data, size, i, cp);
    if (length > 0 && IsHighSurrogate(cp)) {
      highRun += 3;
      i += 3;
      continue;
    }
    // A low surrogate next (an escape included) would pair with the run's last high one.
    const bool appendsLow = length == 0 || IsLowSurrogate(cp);
    AppendHighSurrogateRun(out, data + i - highRun, highRun, appendsLow);
    highRun = 0;
    if (length == 0 || IsByteEscape(cp)) {
      AppendEscapes(out, data + i, length == 0 ? 1 : static_cast<size_t>(length));
    } else {
      AppendUtf16(out, cp);
    }
    i += length == 0 ? 1 : static_cast<size_t>(length);
  }
  AppendHighSurrogateRun(out, data + size - highRun, highRun, false);
  return out;
}

String FromUtf8(const char* text) { return text ? FromUtf8(std::string(text)) : String(); }

String FromAscii(const std::string& text) {
  String out(text.size(), u'\0');
  for (size_t i = 0; i < text.size(); ++i) out[i] = static_cast<unsigned char>(text[i]);
  return out;
}

std::string ToAscii(const String& text) {
  std::string out(text.size(), '\0');
  for (size_t i = 0; i < text.size(); ++i) out[i] = text[i] > 0xFF ? '?' : static_cast<char>(text[i]);
  return out;
}

char16_t ToLowerUnit(char16_t c) {
  if (c < 0x80) return (c >= u'A' && c <= u'Z') ? static_cast<char16_t>(c + 32) : c;
  if ((c >= 0xC0 && c <= 0xDE && c != 0xD7) || (c >= 0x391 && c <= 0x3AB && c != 0x3A2) ||
      (c >= 0x410 && c <= 0x42F) || (c >= 0xFF21 && c <= 0xFF3A)) {
    return static_cast<char16_t>(c + 32);  // Latin-1, Greek, Cyrillic and full-width Latin
  }
  if (c >= 0x400 && c <= 0x40F) return static_cast<char16_t>(c + 80);
  if (c >= 0x100 && c <= 0x17F && c != 0x130 && c != 0x138 && c != 0x149 && c != 0x17F) {
    // Latin Extended-A pairs: even upper/odd lower up to 0x137, odd upper/even lower after.
    if (c <= 0x137) return (c % 2 == 0) ? static_cast<char16_t>(c + 1) : c;
    if (c >= 0x139 && c <= 0x148) return (c % 2 == 1) ? static_cast<char16_t>(c + 1) : c;
    if (c >= 0x14A && c <= 0x177) return (c % 2 == 0) ? static_cast<char16_t>(c + 1) : c;
    if (c == 0x178) return 0xFF;
    if (c >= 0x179 && c <= 0x17E) return (c % 2 == 1) ? static_cast<char16_t>(c + 1) : c;
  }
  return c;
}

String ToLower(const String& text) {
  String out(text);
  for (auto& c : out) c = ToLowerUnit(c);
  return out;
}

int CompareIgnoreCase(const String& a, const String& b) {
  const size_t n = a.size() < b.size() ? a.size() : b.size();
  for (size_t i = 0; i < n; ++i) {
    const char16_t x = ToLowerUnit(a[i]);
    const char16_t y = ToLowerUnit(b[i]);
    if (x != y) return x < y ? -1 : 1;
  }
  return a.size() == b.size() ? 0 : (a.size() < b.size() ? -1 : 1);
}

bool EqualsIgnoreCase(const String& a, const String& b) {
  return a.size() == b.size() && CompareIgnoreCase(a, b) == 0;
}

bool StartsWith(const String& text, const String& prefix) {
  return text.size() >= prefix.size() && text.compare(0, prefix.size(), prefix) == 0;
}

bool EndsWith(const String& text, const String& suffix) {
  return text.size() >= suffix.size() && text.compare(text.size() - suffix.size(), suffix.size(), suffix) == 0;
}

String Trim(const String& text, char16_t unit) {
  const size_t first = text.find_first_not_of(unit);
  if (first == String::npos) return String();
  const size_t last = text.find_last_not_of(unit);
  return text.substr(first, last - first + 1);
}

namespace {

template <typename Unit>
int64_t ParseLeadingInteger(const Unit* text, size_t size) {
  size_t i = 0;
  while (i < size && (text[i] == ' ' || text[i] == '\t')) ++i;
  bool negative = false;
  if (i < size && (text[i] == '-' || text[i] == '+')) negative = text[i++] == '-';
  uint64_t value = 0;
  for (; i < size && text[i] >= '0' && text[i] <= '9'; ++i) value = value * 10 + static_cast<uint64_t>(text[i] - '0');
  return negative ? static_cast<int64_t>(0 - value) : static_cast<int64_t>(value);
}

}  // namespace

int64_t ToInt64(const String& text) { return ParseLeadingInteger(text.data(), text.size()); }
int64_t ToInt64(const char* text) { return text ? ParseLeadingInteger(text, std::strlen(text)) : 0; }
int32_t ToInt32(const String& text) { return static_cast<int32_t>(ToInt64(text)); }
int32_t ToInt32(const char* text) { return static_cast<int32_t>(ToInt64(text)); }

String ToString(int64_t value) { return FromAscii(std::to_string(value)); }

// ---------------------------------------------------------------------------

namespace {

struct Directive {
  bool leftAlign = false, zeroFill = false, plus = false, space = false, alternate = false;
  int width = -1;
  int precision = -1;
  char conversion = 0;
};

bool IsFlag(char16_t c) { return c == u'-' || c == u'0' || c == u'+' || c == u' ' || c == u'#'; }

// Widths, and precisions that add units, stop here: no message needs more, and a directive
// inside a value (a database error text formatted again) must not ask for gigabytes.
const int kMaxFieldUnits = 4096;

// Reads the decimal digits at format[pos], saturating at INT_MAX; returns the position after.
size_t ParseCount(const String& format, size_t pos, int& value) {
  value = 0;
  for (; pos < format.size() && format[pos] >= u'0' && format[pos] <= u'9'; ++pos) {
    const int digit = format[pos] - u'0';
    value = value > (INT_MAX - digit) / 10 ? INT_MAX : value * 10 + digit;
  }
  return pos;
}

// Parses the directive that starts after '%' at format[pos]; returns the position after
// it, or npos when the text there is not a directive we know.
size_t ParseDirective(const String& format, size_t pos, Directive& d) {
  const size_t size = format.size();
  for (; pos < size && IsFlag(format[pos]); ++pos) {
    switch (format[pos]) {
      case u'-': d.leftAlign = true; break;
      case u'0': d.zeroFill = true; break;
      case u'+': d.plus = true; break;
      case u' ': d.space = true; break;
      default: d.alternate = true; break;
    }
  }
  if (pos < size && format[pos] >= u'0' && format[pos] <= u'9') {
    pos = ParseCount(format, pos, d.width);
    d.width = std::min(d.width, kMaxFieldUnits);
  }
  if (pos < size && format[pos] == u'.') pos = ParseCount(format, pos + 1, d.precision);
  if (format.compare(pos, 3, u"I64") == 0) {
    pos += 3;
  } else {
    while (pos < size && (format[pos] == u'h' || format[pos] == u'l' || format[pos] == u'z' ||
                          format[pos] == u'j' || format[pos] == u't'))
      ++pos;
  }
  if (pos >= size) return String::npos;
  static const String conversions = u"sdiuxXocpefgEG";
  if (conversions.find(format[pos]) == String::npos) return String::npos;
  d.conversion = static_cast<char>(format[pos]);
  return pos + 1;
}

void Pad(String& out, const String& body, const Directive& d, bool numeric) {
  const size_t width = d.width > 0 ? static_cast<size_t>(d.width) : 0;
  if (body.size() >= width) {
    out += body;
  } else if (d.leftAlign) {
    out += body;
    out.append(width - body.size(), u' ');
  } else if (d.zeroFill && numeric) {
    size_t signLength = (!body.empty() && (body[0] == u'-' || body[0] == u'+' || body[0] == u' ')) ? 1 : 0;
    if (body.size() > signLength + 1 && body[signLength] == u'0' && (body[signLength + 1] == u'x' || body[signLength + 1] == u'X'))
      signLength += 2;
    out.append(body, 0, signLength);
    out.append(width - body.size(), u'0');
    out.append(body, signLength, String::npos);
  } else {
    out.append(width - body.size(), u' ');
    out += body;
  }
}

String Digits(uint64_t value, unsigned base, bool upper) {
  const char* digits = upper ? "0123456789ABCDEF" : "0123456789abcdef";
  char buffer[24];
  int n = 0;
  do {
    buffer[n++] = digits[value % base];
    value /= base;
  } while (value);
  String out;
  while (n) out += static_cast<char16_t>(buffer[--n]);
  return out;
}

// A double shown by an integer directive: truncated, saturated at the int64 range, NaN as 0.
int64_t TruncateToInt64(double value) {
  if (!(value == value)) return 0;
  if (value >= 9223372036854775807.0) return INT64_MAX;
  if (value <= -9223372036854775808.0) return INT64_MIN;
  return static_cast<int64_t>(value);
}

String IntegerBody(const FormatArg& arg, const Directive& d) {
  const char c = d.conversion;
  String sign;
  uint64_t magnitude;
  if ((c == 'd' || c == 'i') && arg.kind == FormatArg::Signed && arg.i < 0) {
    sign = u"-";
    magnitude = 0 - static_cast<uint64_t>(arg.i);
  } else {
    magnitude = arg.kind == FormatArg::Floating ? static_cast<uint64_t>(TruncateToInt64(arg.d)) : arg.u;
    if ((c == 'u' || c == 'x' || c == 'X' || c == 'o') && arg.kind == FormatArg::Signed && arg.i < 0 &&
        arg.i >= INT32_MIN) {
      magnitude = static_cast<uint32_t>(arg.i);  // as printf shows a negative int with %u/%x
    }
    if (c == 'd' || c == 'i') {
      if (d.plus) sign = u"+";
      else if (d.space) sign = u" ";
    }
  }
  const unsigned base = (c == 'x' || c == 'X') ? 16 : (c == 'o' ? 8 : 10);
  String digits = Digits(magnitude, base, c == 'X');
  if (d.precision >= 0) {
    if (d.precision == 0 && magnitude == 0) digits.clear();
    const size_t precision = static_cast<size_t>(std::min(d.precision, kMaxFieldUnits));
    if (digits.size() < precision) digits.insert(0, precision - digits.size(), u'0');
  }
  if (d.alternate && magnitude != 0 && base == 16) digits.insert(0, c == 'X' ? u"0X" : u"0x");
  return sign + digits;
}

String FloatBody(const FormatArg& arg, const Directive& d) {
  double value = arg.kind == FormatArg::Floating ? arg.d
                 : arg.kind == FormatArg::Signed ? static_cast<double>(arg.i)
                                                 : static_cast<double>(arg.u);
  char printfFormat[16];
  int n = 0;
  printfFormat[n++] = '%';
  if (d.plus) printfFormat[n++] = '+';
  if (d.space) printfFormat[n++] = ' ';
  if (d.alternate) printfFormat[n++] = '#';
  if (d.precision >= 0)
    n += std::snprintf(printfFormat + n, sizeof printfFormat - n, ".%d", d.precision > 99 ? 99 : d.precision);
  printfFormat[n++] = d.conversion;
  printfFormat[n] = 0;
  char buffer[512];
  std::snprintf(buffer, sizeof buffer, printfFormat, value);
  return FromAscii(buffer);
}

String TextBody(const FormatArg& arg, const Directive& d) {
  String text;
  switch (arg.kind) {
    case FormatArg::Text16: text.assign(arg.text16, arg.len); break;
    case FormatArg::Text8: text = FromUtf8(std::string(arg.text8, arg.len)); break;
    case FormatArg::Signed: text = ToString(arg.i); break;
    case FormatArg::Unsigned: text = FromAscii(std::to_string(arg.u)); break;
    case FormatArg::Floating: text = FloatBody(arg, Directive{false, false, false, false, false, -1, -1, 'g'}); break;
    case FormatArg::Pointer: text = Digits(reinterpret_cast<uintptr_t>(arg.p), 16, true); break;
  }
  if (d.precision >= 0 && static_cast<size_t>(d.precision) < text.size()) text.resize(d.precision);
  return text;
}

void Convert(String& out, const FormatArg& arg, const Directive& d) {
  switch (d.conversion) {
    case 's':
      Pad(out, TextBody(arg, d), d, false);
      return;
    case 'c':
      Pad(out, String(1, static_cast<char16_t>(arg.kind == FormatArg::Signed ? arg.i : arg.u)), d, false);
      return;
    case 'p': {
      const uint64_t value = arg.kind == FormatArg::Pointer ? reinterpret_cast<uintptr_t>(arg.p) : arg.u;
      String body = Digits(value, 16, true);
      if (body.size() < 2 * sizeof(void*)) body.insert(0, 2 * sizeof(void*) - body.size(), u'0');
      Pad(out, body, d, false);
      return;
    }
    case 'e': case 'f': case 'g': case 'E': case 'G':
      Pad(out, FloatBody(arg, d), d, true);
      return;
    default:
      if (arg.kind == FormatArg::Text16 || arg.kind == FormatArg::Text8) {
        Pad(out, TextBody(arg, Directive{}), d, false);  // a text where a number was asked: shown as is
      } else {
        Directive numeric = d;
        if (d.precision >= 0) numeric.zeroFill = false;
        Pad(out, IntegerBody(arg, d), numeric, true);
      }
      return;
  }
}

}  // namespace

String FormatArgs(const String& format, const FormatArg* args, size_t count) {
  String out;
  out.reserve(format.size() + 32 * count);
  size_t next = 0;
  size_t pos = 0;
  while (pos < format.size()) {
    const size_t percent = format.find(u'%', pos);
    if (percent == String::npos) {
      out.append(format, pos, String::npos);
      break;
    }
    out.append(format, pos, percent - pos);
    if (percent + 1 < format.size() && format[percent + 1] == u'%') {
      out += u'%';
      pos = percent + 2;
      continue;
    }
    Directive d;
    const size_t end = ParseDirective(format, percent + 1, d);
    if (end == String::npos || next >= count) {
      // Not a directive, or no argument left for it: keep the text as it stands.
      const size_t stop = end == String::npos ? percent + 1 : end;
      out.append(format, percent, stop - percent);
      pos = stop;
      continue;
    }
    Convert(out, args[next++], d);
    pos = end;
  }
  return out;
}

}  // namespace base
