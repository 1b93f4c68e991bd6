// The cache commands of docmgr-cli, run as a support engineer runs them: through the
// module file, on a real folder tree.
#include <string>

#include "TestSupport.h"

namespace {

struct CliRun {
  int status;
  std::string output;
};

CliRun Cli(const std::string& args) {
  CliRun run{-1, ""};
  run.output = test::RunCommand(std::string(DOCMGR_CLI_PATH) + " --quiet " + args, &run.status);
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

TEST(CacheCliTest, ScanTagsFilesSkipsIgnoredNamesAndLogsWhatItRecorded) {
  test::TempDir root;
  test::WriteFile(root.path() + "/report.docx", "r");
  test::WriteFile(root.path() + "/~$report.docx", "lock");  // an editor's lock file
  test::MakeDir(root.path() + "/build.partial");             // ignored with what is inside
  test::WriteFile(root.path() + "/build.partial/x.txt", "x");
  const std::string quoted = "'" + root.path() + "'";

  CliRun scan = Cli("--json scan " + quoted);
  ASSERT_EQ(0, scan.status) << scan.output;
  EXPECT_NE(std::string::npos, scan.output.find("\"recorded\": 1,")) << scan.output;
  EXPECT_NE(std::string::npos, scan.output.find("\"ignored\": 2}")) << scan.output;

  CliRun info = Cli("--json info " + quoted + "/report.docx");
  ASSERT_EQ(0, info.status) << info.output;
  const size_t id = info.output.find("\"id\": \"gns://");
  ASSERT_NE(std::string::npos, id) << info.output;
  const std::string docId = info.output.substr(id + 7, info.output.find('"', id + 7) - id - 7);
  EXPECT_NE(std::string::npos, info.output.find("\"tags\": {\"docId\": \"" + docId + "\"}")) << info.output;
  EXPECT_EQ(1, Cli("info " + quoted + "/~$report.docx").status);  // never recorded

  CliRun log = Cli("--json log " + quoted + " --type 0");
  EXPECT_NE(std::string::npos, log.output.find("\"relPath\": \"report.docx\"")) << log.output;
  EXPECT_EQ(std::string::npos, log.output.find("~$")) << log.output;
}

}  // namespace
