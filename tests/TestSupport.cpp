#include "TestSupport.h"

#include <fstream>
#include <iterator>

#include "base/LibManager.h"
#include "docmgr/ncAutoGetTable.h"
#include "FileTestSupport.h"
#include "platform/ncPlatform.h"

namespace test {

void WriteFile(const std::string& path, const std::string& content) { std::ofstream(path, std::ios::binary) << content; }

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

bool Exists(const std::string& path) {
  return platform::GetFileAttributes(base::FromNativeBytes(path)) != platform::kInvalidAttributes;
}

void MakeDir(const std::string& path) { platform::CreateDirectory(base::FromNativeBytes(path)); }

void ExpectException(const std::function<void()>& call, int code, const base::String* message, const char* text) {
  try {
    call();
    ADD_FAILURE() << "no exception from " << text;
  } catch (const base::Exception& e) {
    EXPECT_EQ(code, e.getCode()) << text << ": " << e.what();
    if (message) {
      EXPECT_EQ(*message, e.getMessage()) << text << ": " << e.what();
    }
  }
}

const char kNoPosixShellReason[] = "these command lines need a POSIX shell (cmd.exe runs them on Windows)";

CliRun Cli(const std::string& arguments, const std::string& environment) {
  CliRun run;
  const std::string program = base::ToUtf8(Native(base::FromUtf8(DOCMGR_CLI_PATH)));
  run.output = RunCommand(environment + (environment.empty() ? "" : " ") + program + " --quiet " + arguments, &run.status);
  return run;
}

::testing::AssertionResult Has(const std::string& text, const std::vector<std::string>& parts) {
  std::string missing;
  for (const std::string& part : parts)
    if (text.find(part) == std::string::npos) missing += " \"" + part + "\"";
  if (missing.empty()) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "missing" << missing << " in:\n" << text;
}

::testing::AssertionResult CliPrints(const std::string& arguments, int status, const std::vector<std::string>& parts,
                                     const std::string& environment) {
  const CliRun run = Cli(arguments, environment);
  if (run.status != status)
    return ::testing::AssertionFailure() << arguments << ": status " << run.status << ", not " << status << "\n"
                                         << run.output;
  return Has(run.output, parts) << " (" << arguments << ")";
}

Rows Query(ncDBMgr* db, const std::string& sql) {
  int rows = 0, columns = 0;
  char** result = nullptr;
  ncAutoGetTable table(db, base::FromUtf8(sql), rows, columns, result);
  Rows out(rows);
  for (int r = 0; r < rows; ++r)
    for (int c = 0; c < columns; ++c) {
      const char* value = result[(r + 1) * columns + c];
      out[r].push_back(value ? value : "NULL");
    }
  return out;
}

}  // namespace test

// The tests start the library in-process, as the host's module constructor does, with
// English texts whatever the machine's locale.
int main(int argc, char** argv) {
  test::SetEnvironment("KESTROVE_LANG", "en");
  ::testing::InitGoogleTest(&argc, argv);
  base::LibManager::getInstance()->initLibs(base::AppSettings::getCFLAppSettings(), base::AppContext::getInstance(),
                                            nullptr);
  return RUN_ALL_TESTS();
}
