// Shared test helpers: temporary folders on the real file system, files, and the checks
// of the component's exceptions.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "base/Exception.h"
#include "base/String.h"

namespace test {

using base::String;

// A fresh folder under TMPDIR (or /tmp), removed with everything in it at the end.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  const std::string& path() const { return path_; }
  String wpath() const { return base::FromUtf8(path_); }
  // path()/relative, as a wide string.
  String child(const std::string& relative) const { return base::FromUtf8(path_ + "/" + relative); }

 private:
  std::string path_;
};

void WriteFile(const std::string& path, const std::string& content);
std::string ReadFile(const std::string& path);
bool Exists(const std::string& path);
void MakeDir(const std::string& path);

// Runs a shell command; returns its standard output and error, and its exit status.
std::string RunCommand(const std::string& command, int* status);

// True when the folder's file system takes user extended attributes.
bool SupportsUserXattrs(const std::string& directory);

}  // namespace test

// Runs statement and expects base::Exception with the code and the exact message.
#define EXPECT_THROW_CODE_MESSAGE(statement, expectedCode, expectedMessage)          \
  do {                                                                             \
    try {                                                                          \
      statement;                                                                   \
      ADD_FAILURE() << "no exception from " #statement;                            \
    } catch (const base::Exception& e) {                                           \
      EXPECT_EQ((expectedCode), e.getCode()) << e.what();                          \
      EXPECT_EQ(base::String(expectedMessage), e.getMessage()) << e.what();        \
    }                                                                              \
  } while (0)

#define EXPECT_THROW_CODE(statement, expectedCode)                                 \
  do {                                                                             \
    try {                                                                          \
      statement;                                                                   \
      ADD_FAILURE() << "no exception from " #statement;                            \
    } catch (const base::Exception& e) {                                           \
      EXPECT_EQ((expectedCode), e.getCode()) << e.what();                          \
    }                                                                              \
  } while (0)
