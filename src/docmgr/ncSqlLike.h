// LIKE without SQLite's cap on the pattern's length. The library refuses a pattern longer
// than 50,000 bytes and cannot be configured past that, while the subtree of a folder with
// a long path (up to 32,767 UTF-16 units, three UTF-8 bytes each) is selected with one.
// The two-argument like() of a connection is replaced by this one; it matches as SQLite's
// does: "%" any run of characters, "_" one character, ASCII letters without regard to case,
// every other character as it is (byte for byte, so names that differ only in text that is
// not valid Unicode stay apart).
#pragma once

#include <sqlite3.h>

#include <cstddef>

class ncSqlLike {
 public:
  // Returns SQLite's result code of the registration.
  static int Install(sqlite3* db);
  static bool Matches(const unsigned char* pattern, size_t patternSize, const unsigned char* text, size_t textSize);
};
