// Text type of the component: UTF-16 code units, as the client's foundation library uses.
#pragma once

#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

#include "docmgr/String.h"

namespace base {

// ToUtf8 and FromUtf8 (WTF-8) are declared with the text type in docmgr/String.h.
String FromUtf8(const char* text);
// Native file names (bytes on POSIX) <-> String, losslessly in both directions as far as
// the bytes allow. UTF-8 reads as usual; each byte that is not part of valid UTF-8 reads as
// the lone surrogate U+DC80..U+DCFF of its value and is written back as that byte (as
// Python's surrogateescape does), so two names that differ only in such bytes stay two
// names. Any other lone surrogate is written in its 3-byte form and read back as the same
// unit, so a name that came from a system which allows them (NTFS) can be created and
// listed. FromNativeBytes(ToNativeBytes(s)) == s for every String that FromNativeBytes can
// produce; ToNativeBytes(FromNativeBytes(b)) == b for all bytes.
std::string ToNativeBytes(const String& text);
String FromNativeBytes(const std::string& bytes);
// Appends the UTF-8 form of one code point.
void AppendUtf8(std::string& out, uint32_t codePoint);
// Bytes to units one for one (for ASCII texts such as SQLite messages).
String FromAscii(const std::string& text);
// Units to bytes; units above 0xFF become '?'.
std::string ToAscii(const String& text);

String ToLower(const String& text);
char16_t ToLowerUnit(char16_t unit);
bool EqualsIgnoreCase(const String& a, const String& b);
int CompareIgnoreCase(const String& a, const String& b);
bool StartsWith(const String& text, const String& prefix);
bool EndsWith(const String& text, const String& suffix);
// Strips every leading and trailing occurrence of the unit.
String Trim(const String& text, char16_t unit);

// Reads an optional sign and the leading decimal digits; 0 when there are none.
int64_t ToInt64(const String& text);
int64_t ToInt64(const char* text);
int32_t ToInt32(const String& text);
int32_t ToInt32(const char* text);
String ToString(int64_t value);

// ---------------------------------------------------------------------------
// Format: printf-style and type-safe. Directives: %s %d %i %u %x %X %o %c %p
// %e %f %g %%, flags "-0+ #", width, precision, length modifiers h l ll z I64.
// A directive without an argument is written as it stands, so formatting a
// finished message again only turns "%%" into "%".
// ---------------------------------------------------------------------------
struct FormatArg {
  enum Kind { Signed, Unsigned, Floating, Text16, Text8, Pointer };
  Kind kind;
  union {
    int64_t i;
    uint64_t u;
    double d;
    const void* p;
  };
  const char16_t* text16 = nullptr;
  size_t len = 0;
  const char* text8 = nullptr;

  FormatArg(const String& s) : kind(Text16), i(0), text16(s.data()), len(s.size()) {}
  FormatArg(const char16_t* s) : kind(Text16), i(0), text16(s ? s : u"(null)"),
                                 len(std::char_traits<char16_t>::length(s ? s : u"(null)")) {}
  FormatArg(const std::string& s) : kind(Text8), i(0), len(s.size()), text8(s.data()) {}
  FormatArg(const char* s) : kind(Text8), i(0), len(std::char_traits<char>::length(s ? s : "(null)")),
                             text8(s ? s : "(null)") {}
  FormatArg(bool b) : kind(Signed), i(b ? 1 : 0) {}
  FormatArg(char16_t c) : kind(Unsigned), u(c) {}
  FormatArg(double v) : kind(Floating), d(v) {}
  FormatArg(float v) : kind(Floating), d(v) {}
  template <typename T, typename std::enable_if<std::is_integral<T>::value && std::is_signed<T>::value, int>::type = 0>
  FormatArg(T v) : kind(Signed), i(static_cast<int64_t>(v)) {}
  template <typename T, typename std::enable_if<std::is_integral<T>::value && !std::is_signed<T>::value, int>::type = 0>
  FormatArg(T v) : kind(Unsigned), u(static_cast<uint64_t>(v)) {}
  template <typename T, typename std::enable_if<std::is_enum<T>::value, int>::type = 0>
  FormatArg(T v) : kind(Signed), i(static_cast<int64_t>(v)) {}
  template <typename T>
  FormatArg(T* v) : kind(Pointer), p(static_cast<const void*>(v)) {}
};

String FormatArgs(const String& format, const FormatArg* args, size_t count);

template <typename... Args>
String Format(const String& format, const Args&... args) {
  const FormatArg list[] = {FormatArg(args)..., FormatArg(0)};
  return FormatArgs(format, list, sizeof...(Args));
}

}  // namespace base
