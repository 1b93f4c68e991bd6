// A fresh, uniquely named folder for one test or benchmark, removed with everything in it
// at the end.
#pragma once

#include <string>

#include "text/String.h"

namespace test {

class TempDir {
 public:
  // Under the system's temporary folder; aborts when it cannot be made.
  TempDir();
  // Under parent; path() is empty when it cannot be made there.
  explicit TempDir(const std::string& parent);
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const std::string& path() const { return path_; }
  base::String wpath() const { return base::FromUtf8(path_); }
  // path()/relative as a wide string, with the system's separators.
  base::String child(const std::string& relative) const;

 private:
  std::string path_;
};

// The path with '/' turned into the system's separator.
base::String Native(const base::String& path);

}  // namespace test
