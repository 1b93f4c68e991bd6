// The cache commands of docmgr-cli, run as a support engineer runs them: through the
// module file, on a real folder tree.
#include <sys/wait.h>

#include <cstdio>
#include <string>

#include "TestSupport.h"

namespace {

struct CliRun {
  int status;
  std::string output;
};

CliRun Cli(const std::string& args) {
  CliRun run{-1, ""};
  FILE* pipe = ::popen((std::string(DOCMGR_CLI_PATH) + " --quiet " + args + " 2>&1").c_str(), "r");
  if (!pipe) return run;
  char buffer[512];
  while (size_t got = std::fread(buffer, 1, sizeof buffer, pipe)) run.output.append(buffer, got);
  const int status = ::pclose(pipe);
  run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return run;
}

TEST(CacheCliTest, ScanThenSearchListAndReportNewFiles) {
  test::TempDir root;
  test::MakeDir(root.path() + "/项目");
  test::WriteFile(root.path() + "/项目/计划.txt", "plan");
  const std::string quoted = "'" + root.path() + "'";

  CliRun scan = Cli("--json scan " + quoted);
  ASSERT_EQ(0, scan.status) << scan.output;
  EXPECT_NE(std::string::npos, scan.output.find("\"recorded\": 2")) << scan.output;

  CliRun search = Cli("--json search " + quoted + " jh");
  EXPECT_NE(std::string::npos, search.output.find("\"display\": \"[计划].txt\"")) << search.output;

  test::WriteFile(root.path() + "/项目/new.txt", "new");
  ASSERT_EQ(0, Cli("scan " + quoted).status);
  CliRun unsync = Cli("--json unsync " + quoted);
  EXPECT_NE(std::string::npos, unsync.output.find("\"relPath\": \"项目/new.txt\"")) << unsync.output;

  CliRun info = Cli("info '" + root.path() + "/项目/计划.txt'");
  EXPECT_EQ(0, info.status);
  EXPECT_NE(std::string::npos, info.output.find("document id:   gns://")) << info.output;

  CliRun missing = Cli("ls " + quoted + " nowhere");
  EXPECT_EQ(1, missing.status);
  EXPECT_NE(std::string::npos, missing.output.find("nowhere is not in the cache")) << missing.output;
}

}  // namespace
