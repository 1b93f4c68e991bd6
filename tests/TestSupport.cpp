#include "TestSupport.h"

#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "base/Directory.h"
#include "base/LibManager.h"
#include "docmgr/ncAutoGetTable.h"

namespace test {

TempDir::TempDir() {
  const char* base = std::getenv("TMPDIR");
  std::string pattern = std::string(base && *base ? base : "/tmp") + "/docmgr-test-XXXXXX";
  if (!::mkdtemp(&pattern[0])) std::abort();
  path_ = pattern;
}

TempDir::TempDir(const std::string& base) {
  std::string pattern = base + "/docmgr-test-XXXXXX";
  if (::mkdtemp(&pattern[0])) path_ = pattern;
}

TempDir::~TempDir() {
  if (path_.empty()) return;
  try {
    base::Directory::removeTree(wpath());
  } catch (const base::Exception&) {
  }
}

void WriteFile(const std::string& path, const std::string& content) { std::ofstream(path, std::ios::binary) << content; }

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

bool Exists(const std::string& path) {
  struct stat info;
  return ::lstat(path.c_str(), &info) == 0;
}

void MakeDir(const std::string& path) { ::mkdir(path.c_str(), 0777); }

std::string RunCommand(const std::string& command, int* status) {
  std::string output;
  FILE* pipe = ::popen((command + " 2>&1").c_str(), "r");
  if (!pipe) {
    *status = -1;
    return output;
  }
  char buffer[4096];
  while (size_t got = std::fread(buffer, 1, sizeof buffer, pipe)) output.append(buffer, got);
  const int rc = ::pclose(pipe);
  *status = WIFEXITED(rc) ? WEXITSTATUS(rc) : -1;
  return output;
}

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

CliRun Cli(const std::string& arguments) {
  CliRun run;
  run.output = RunCommand(std::string(DOCMGR_CLI_PATH) + " --quiet " + arguments, &run.status);
  return run;
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

bool SupportsUserXattrs(const std::string& directory) {
  const std::string probe = directory + "/.xattr-probe";
  WriteFile(probe, "");
  const bool supported = ::setxattr(probe.c_str(), "user.probe", "1", 1, 0) == 0;
  ::unlink(probe.c_str());
  return supported;
}

}  // namespace test

// The tests start the library in-process, as the host's module constructor does, with
// English texts whatever the machine's locale.
int main(int argc, char** argv) {
  ::setenv("KESTROVE_LANG", "en", 1);
  ::testing::InitGoogleTest(&argc, argv);
  base::LibManager::getInstance()->initLibs(base::AppSettings::getCFLAppSettings(), base::AppContext::getInstance(),
                                            nullptr);
  return RUN_ALL_TESTS();
}
