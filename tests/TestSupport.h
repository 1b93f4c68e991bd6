// Shared test helpers: temporary folders on the real file system, files, and the checks
// of the component's exceptions.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "TempDir.h"
#include "docmgr/Exception.h"
#include "text/String.h"

class ncDBMgr;

namespace test {

// True where the POSIX backend runs (its own mappings: mount-point markers, "\" in names).
extern const bool kPosixBackend;

// The names of the functions a module file exports.
std::string ExportedFunctions(const std::string& moduleFile);
// The display text a folder's customisation gave it (empty when none).
std::string FolderDisplayText(const std::string& folder);

void WriteFile(const std::string& path, const std::string& content);
std::string ReadFile(const std::string& path);
bool Exists(const std::string& path);
void MakeDir(const std::string& path);

// Runs a shell command; returns its standard output and error, and its exit status.
std::string RunCommand(const std::string& command, int* status);

// True when files in the folder keep named streams of their own (POSIX: the file system
// takes user extended attributes; Wine: never, a "file:stream" name is a separate file).
bool SupportsStreams(const std::string& directory);
extern const char kNoStreamsReason[];

// docmgr-cli run with the arguments (after the VAR=value settings of environment, POSIX
// shells only), as a support engineer runs it.
struct CliRun {
  int status = -1;
  std::string output;
};
CliRun Cli(const std::string& arguments, const std::string& environment = "");
// Whether text holds every part; the failure names the missing parts and shows the text.
::testing::AssertionResult Has(const std::string& text, const std::vector<std::string>& parts);
// Whether docmgr-cli ends with the status and prints every part.
::testing::AssertionResult CliPrints(const std::string& arguments, int status, const std::vector<std::string>& parts,
                                     const std::string& environment = "");

// Tests that drive docmgr-cli through POSIX shell command lines (quoting, VAR=value,
// redirections, UTF-8 arguments) skip where cmd.exe would run them; make windows-demo runs
// the Windows tool instead.
extern const char kNoPosixShellReason[];
class PosixShellTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!kPosixBackend) GTEST_SKIP() << kNoPosixShellReason;
  }
};

// Every row of the result through the component's own connection; NULL reads "NULL".
using Rows = std::vector<std::vector<std::string>>;
Rows Query(ncDBMgr* db, const std::string& sql);

// Expects the call to throw base::Exception with the code and, when given, the exact message.
void ExpectException(const std::function<void()>& call, int code, const base::String* message, const char* text);
}  // namespace test

#define EXPECT_THROW_CODE_MESSAGE(statement, expectedCode, expectedMessage)                          \
  do {                                                                                             \
    SCOPED_TRACE(#statement);                                                                      \
    const base::String expected(expectedMessage);                                                  \
    test::ExpectException([&] { statement; }, (expectedCode), &expected, #statement);              \
  } while (0)

#define EXPECT_THROW_CODE(statement, expectedCode)                                  \
  do {                                                                              \
    SCOPED_TRACE(#statement);                                                       \
    test::ExpectException([&] { statement; }, (expectedCode), nullptr, #statement); \
  } while (0)
