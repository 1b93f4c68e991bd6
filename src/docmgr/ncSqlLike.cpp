#include "docmgr/ncSqlLike.h"

namespace {

// The bytes of the UTF-8 character at text: a lead byte and the continuation bytes after it,
// as SQLite's own reader takes them.
size_t CharSize(const unsigned char* text, const unsigned char* end) {
  const unsigned char* next = text + 1;
  if (*text >= 0xC0)
    while (next < end && (*next & 0xC0) == 0x80) ++next;
  return static_cast<size_t>(next - text);
}

unsigned char FoldAscii(unsigned char byte) { return byte >= 'A' && byte <= 'Z' ? byte + ('a' - 'A') : byte; }

bool SameChar(const unsigned char* a, size_t aSize, const unsigned char* b, size_t bSize) {
  if (aSize != bSize) return false;
  if (aSize == 1) return FoldAscii(*a) == FoldAscii(*b);
  for (size_t i = 0; i < aSize; ++i)
    if (a[i] != b[i]) return false;
  return true;
}

// The first place from text on where the literal that follows a "%" can begin. An ASCII
// byte always starts a character in UTF-8, so a plain byte search finds them all.
const unsigned char* NextCandidate(const unsigned char* text, const unsigned char* textEnd,
                                   const unsigned char* pattern, const unsigned char* patternEnd) {
  if (pattern == patternEnd || *pattern >= 0x80 || *pattern == '_' || *pattern == '%') return text;
  const unsigned char wanted = FoldAscii(*pattern);
  while (text < textEnd && FoldAscii(*text) != wanted) ++text;
  return text;
}

void Like(sqlite3_context* context, int, sqlite3_value** arguments) {
  const unsigned char* pattern = sqlite3_value_text(arguments[0]);
  const int patternSize = sqlite3_value_bytes(arguments[0]);
  const unsigned char* text = sqlite3_value_text(arguments[1]);
  const int textSize = sqlite3_value_bytes(arguments[1]);
  if (!pattern || !text) return;  // NULL, as SQLite's like() gives
  sqlite3_result_int(context, ncSqlLike::Matches(pattern, static_cast<size_t>(patternSize), text,
                                                 static_cast<size_t>(textSize)));
}

}  // namespace

int ncSqlLike::Install(sqlite3* db) {
  return sqlite3_create_function(db, "like", 2, SQLITE_UTF8 | SQLITE_DETERMINISTIC, nullptr, &Like, nullptr, nullptr);
}

// Greedy matching that returns to the last "%" on a mismatch: linear for the patterns the
// stores write ("P\%", "%key%"), at worst the product of the two lengths.
bool ncSqlLike::Matches(const unsigned char* pattern, size_t patternSize, const unsigned char* text,
                        size_t textSize) {
  const unsigned char* p = pattern;
  const unsigned char* const patternEnd = pattern + patternSize;
  const unsigned char* t = text;
  const unsigned char* const textEnd = text + textSize;
  const unsigned char* resumePattern = nullptr;  // just after the last "%"
  const unsigned char* resumeText = nullptr;     // where that "%" began to match
  while (t < textEnd) {
    if (p < patternEnd && *p == '%') {
      while (p < patternEnd && *p == '%') ++p;
      resumePattern = p;
      resumeText = t = NextCandidate(t, textEnd, p, patternEnd);
      continue;
    }
    const size_t textChar = CharSize(t, textEnd);
    if (p < patternEnd) {
      const size_t patternChar = CharSize(p, patternEnd);
      if (*p == '_' || SameChar(p, patternChar, t, textChar)) {
        p += patternChar;
        t += textChar;
        continue;
      }
    }
    if (!resumePattern) return false;
    resumeText = NextCandidate(resumeText + CharSize(resumeText, textEnd), textEnd, resumePattern, patternEnd);
    t = resumeText;
    p = resumePattern;
  }
  while (p < patternEnd && *p == '%') ++p;
  return p == patternEnd;
}
