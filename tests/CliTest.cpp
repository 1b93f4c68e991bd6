// docmgr-cli run as a support engineer runs it: through the module file, on real folder trees.
#include <string>

#include "TestSupport.h"
#include "dataapi/ncJson.h"

namespace {

using test::Cli;
using test::CliRun;

using CliTest = test::PosixShellTest;

TEST_F(CliTest, InitShowsTheDataDirectoryAndCheckReportsUnsoundDatabases) {
  test::TempDir dir;
  const CliRun init = Cli("init " + dir.path());
  EXPECT_EQ(0, init.status) << init.output;
  EXPECT_NE(std::string::npos, init.output.find(dir.path() + "/.kestrove.cache")) << init.output;
  EXPECT_TRUE(test::Exists(dir.path() + "/.kestrove.cache"));
  const CliRun json = Cli("--json init " + dir.path());
  EXPECT_EQ(0, json.status);
  EXPECT_EQ(0u, json.output.find("{\"root\": \"" + dir.path() + "\""));

  EXPECT_EQ(2, Cli("nonsense").status);
  int status = 0;
  const std::string missing =
      test::RunCommand("KESTROVE_MODULE=/nonexistent.so " + std::string(DOCMGR_CLI_PATH) + " init /tmp", &status);
  EXPECT_EQ(1, status);
  EXPECT_NE(std::string::npos, missing.find("cannot load the module")) << missing;

  // check reports the databases that are not sound.
  ASSERT_EQ(0, Cli("upgrade " + dir.path()).status);  // writes config.db
  CliRun check = Cli("check " + dir.path());
  EXPECT_EQ(0, check.status) << check.output;
  EXPECT_NE(std::string::npos, check.output.find("config.db    ok")) << check.output;
  test::WriteFile(dir.path() + "/.kestrove.cache/junk.db", std::string(4096, 'x'));
  check = Cli("check " + dir.path());
  EXPECT_EQ(1, check.status) << check.output;
  EXPECT_NE(std::string::npos, check.output.find("junk.db      corrupt")) << check.output;
}

TEST_F(CliTest, ScanTagsAndRecordsFilesSkipsIgnoredNamesAndTheOtherCommandsFindThem) {
  test::TempDir root;
  test::MakeDir(root.path() + "/项目");
  test::WriteFile(root.path() + "/项目/计划.txt", "plan");
  test::WriteFile(root.path() + "/report.docx", "r");
  test::WriteFile(root.path() + "/~$report.docx", "lock");  // an editor's lock file
  test::MakeDir(root.path() + "/build.partial");             // ignored with what is inside
  test::WriteFile(root.path() + "/build.partial/x.txt", "x");
  const std::string quoted = "'" + root.path() + "'";

  CliRun scan = Cli("--json scan " + quoted);
  ASSERT_EQ(0, scan.status) << scan.output;
  EXPECT_NE(std::string::npos, scan.output.find("\"recorded\": 3,")) << scan.output;
  EXPECT_NE(std::string::npos, scan.output.find("\"skippedCount\": 2,")) << scan.output;

  CliRun search = Cli("--json search " + quoted + " jh");
  EXPECT_NE(std::string::npos, search.output.find("\"display\": \"[计划].txt\"")) << search.output;

  test::WriteFile(root.path() + "/项目/new.txt", "new");
  ASSERT_EQ(0, Cli("scan " + quoted).status);
  CliRun unsync = Cli("--json unsync " + quoted);
  EXPECT_NE(std::string::npos, unsync.output.find("\"relPath\": \"项目/new.txt\"")) << unsync.output;

  CliRun info = Cli("info '" + root.path() + "/项目/计划.txt'");
  EXPECT_EQ(0, info.status);
  EXPECT_NE(std::string::npos, info.output.find("document id:   gns://")) << info.output;
  info = Cli("--json info " + quoted + "/report.docx");
  ASSERT_EQ(0, info.status) << info.output;
  const size_t id = info.output.find("\"id\": \"gns://");
  ASSERT_NE(std::string::npos, id) << info.output;
  const std::string docId = info.output.substr(id + 7, info.output.find('"', id + 7) - id - 7);
  EXPECT_NE(std::string::npos, info.output.find("\"tags\": {\"docId\": \"" + docId + "\"}")) << info.output;
  EXPECT_EQ(1, Cli("info " + quoted + "/~$report.docx").status);  // never recorded

  CliRun missing = Cli("ls " + quoted + " nowhere");
  EXPECT_EQ(1, missing.status);
  EXPECT_NE(std::string::npos, missing.output.find("nowhere is not in the cache")) << missing.output;

  CliRun log = Cli("--json log " + quoted + " --type 0");
  EXPECT_NE(std::string::npos, log.output.find("\"relPath\": \"report.docx\"")) << log.output;
  EXPECT_EQ(std::string::npos, log.output.find("~$")) << log.output;
}

TEST_F(CliTest, DemoResumesAnUploadAndTheLogReadsBack) {
  test::TempDir dir;
  const std::string root = dir.path() + "/demo";
  const CliRun demo = Cli("demo '" + root + "'");
  ASSERT_EQ(0, demo.status) << demo.output;
  for (const char* step : {"0 + open range", "blocks [\"1-3\"]", "block 2 sent: [\"3\"]", "no interrupted transfers"})
    EXPECT_NE(std::string::npos, demo.output.find(step)) << step << "\n" << demo.output;

  const CliRun log = Cli("--json log '" + root + "' --type 0 --size 2 --page 2");
  ASSERT_EQ(0, log.status) << log.output;
  const JSON::Value page = JSON::Value::parse(log.output);
  const JSON::Value& entries = page.as_object().at("logs")[0].as_object().at("entries");
  // The demo's scans log first; its five journal entries are the newest.
  const int64_t total = page.as_object().at("logs")[0].as_object().at("total").as_integer();
  EXPECT_GE(total, 5);
  ASSERT_EQ(2u, entries.size());
  EXPECT_EQ(total - 2, entries[0].as_object().at("id").as_integer());
  EXPECT_EQ("项目/会议纪要.docx", entries[0].as_object().at("relPath").as_string());

  EXPECT_EQ(2, Cli("log '" + root + "' --type x 2>/dev/null").status);
  EXPECT_EQ(1, Cli("log '" + root + "' --type 0 --page 9 2>/dev/null").status);
  EXPECT_EQ(1, Cli("resume '" + dir.path() + "/missing' 2>/dev/null").status);
}

// Linux names are bytes: a root and a file whose names are Latin-1, not UTF-8, are reached,
// and JSON output stays UTF-8 with the byte as the escape of the unit that stands for it.
TEST_F(CliTest, ARootWhosePathIsNotUtf8IsReachedAndItsJsonStaysUtf8) {
  test::TempDir dir;
  const std::string root = dir.path() + "/caf\xe9";
  test::MakeDir(root);
  test::WriteFile(root + "/r\xe9sum\xe9.txt", "cv");
  const CliRun scan = Cli("--json scan '" + root + "'");
  ASSERT_EQ(0, scan.status) << scan.output;
  EXPECT_NE(std::string::npos, scan.output.find("\"recorded\": 1,")) << scan.output;
  EXPECT_NE(std::string::npos, scan.output.find("caf\\udce9")) << scan.output;

  const CliRun ls = Cli("--json ls '" + root + "'");
  ASSERT_EQ(0, ls.status) << ls.output;
  EXPECT_EQ(std::string::npos, ls.output.find('\xe9')) << ls.output;  // no byte that is not UTF-8
  EXPECT_NE(std::string::npos, ls.output.find("r\\udce9sum\\udce9.txt")) << ls.output;

  const CliRun info = Cli("info '" + root + "/r\xe9sum\xe9.txt'");
  EXPECT_EQ(0, info.status) << info.output;
  EXPECT_NE(std::string::npos, info.output.find("r\xe9sum\xe9.txt")) << info.output;  // a terminal gets the bytes
}

// A plain tree (ASCII names, no quoting) through the tool on every system, so the Windows
// build runs its own tool too: the system's paths, a dry run's scratch state, JSON read back.
TEST(CliEverywhereTest, ADryRunWritesNothingAndAScanIsListedAndFound) {
  test::TempDir dir;
  const std::string root = dir.path();
  test::MakeDir(root + "/docs");
  test::WriteFile(root + "/docs/plan.txt", "plan");
  const CliRun dry = Cli("scan --dry-run " + root);
  ASSERT_EQ(0, dry.status) << dry.output;
  EXPECT_FALSE(test::Exists(root + "/.kestrove.cache"));

  const CliRun scan = Cli("--json scan " + root);
  ASSERT_EQ(0, scan.status) << scan.output;
  EXPECT_NE(std::string::npos, scan.output.find("\"recorded\": 2,")) << scan.output;
  const CliRun ls = Cli("--json ls " + root + " docs");
  ASSERT_EQ(0, ls.status) << ls.output;
  const JSON::Value listing = JSON::Value::parse(ls.output);
  ASSERT_EQ(1u, listing.size()) << ls.output;
  EXPECT_EQ("plan.txt", listing[0].as_object().at("name").as_string());
  const CliRun info = Cli("info " + root + "/docs/plan.txt");
  EXPECT_EQ(0, info.status) << info.output;
  EXPECT_NE(std::string::npos, info.output.find("relative path: docs/plan.txt")) << info.output;
}

}  // namespace
