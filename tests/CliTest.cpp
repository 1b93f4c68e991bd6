// docmgr-cli run as a support engineer runs it: through the module file, on real folder trees.
#include "TestSupport.h"
#include "dataapi/ncJson.h"

namespace {

using test::Cli;
using test::CliPrints;
using test::CliRun;

using CliTest = test::PosixShellTest;

TEST_F(CliTest, InitShowsTheDataDirectoryAndCheckReportsUnsoundDatabases) {
  test::TempDir dir;
  const std::string root = dir.path();
  EXPECT_TRUE(CliPrints("init " + root, 0, {root + "/.kestrove.cache"}));
  EXPECT_TRUE(test::Exists(root + "/.kestrove.cache"));
  EXPECT_EQ(0u, Cli("--json init " + root).output.find("{\"root\": \"" + root + "\""));
  EXPECT_EQ(2, Cli("nonsense").status);
  EXPECT_TRUE(CliPrints("init /tmp", 1, {"cannot load the module"}, "KESTROVE_MODULE=/nonexistent.so"));

  ASSERT_EQ(0, Cli("upgrade " + root).status);  // writes config.db
  EXPECT_TRUE(CliPrints("check " + root, 0, {"config.db    ok"}));
  test::WriteFile(root + "/.kestrove.cache/junk.db", std::string(4096, 'x'));
  EXPECT_TRUE(CliPrints("check " + root, 1, {"junk.db      corrupt"}));
}

TEST_F(CliTest, ScanTagsAndRecordsFilesSkipsIgnoredNamesAndTheOtherCommandsFindThem) {
  test::TempDir dir;
  const std::string root = dir.path(), quoted = "'" + root + "'";
  test::MakeDir(root + "/项目");
  test::WriteFile(root + "/项目/计划.txt", "plan");
  test::WriteFile(root + "/report.docx", "r");
  test::WriteFile(root + "/~$report.docx", "lock");  // an editor's lock file
  test::MakeDir(root + "/build.partial");             // ignored with what is inside
  test::WriteFile(root + "/build.partial/x.txt", "x");

  EXPECT_TRUE(CliPrints("--json scan " + quoted, 0, {"\"recorded\": 3,", "\"skippedCount\": 2,"}));
  EXPECT_TRUE(CliPrints("--json search " + quoted + " jh", 0, {"\"display\": \"[计划].txt\""}));
  test::WriteFile(root + "/项目/new.txt", "new");
  ASSERT_EQ(0, Cli("scan " + quoted).status);
  EXPECT_TRUE(CliPrints("--json unsync " + quoted, 0, {"\"relPath\": \"项目/new.txt\""}));

  EXPECT_TRUE(CliPrints("info " + quoted + "/项目/计划.txt", 0, {"document id:   gns://"}));
  const CliRun info = Cli("--json info " + quoted + "/report.docx");
  ASSERT_EQ(0, info.status) << info.output;
  const JSON::Value record = JSON::Value::parse(info.output);
  EXPECT_EQ(0u, record.as_object().at("id").as_string().find("gns://")) << info.output;
  EXPECT_EQ(record.as_object().at("id").as_string(), record.as_object().at("tags").as_object().at("docId").as_string());
  EXPECT_EQ(1, Cli("info " + quoted + "/~$report.docx").status);  // never recorded

  EXPECT_TRUE(CliPrints("ls " + quoted + " nowhere", 1, {"nowhere is not in the cache"}));
  const CliRun log = Cli("--json log " + quoted + " --type 0");
  EXPECT_TRUE(test::Has(log.output, {"\"relPath\": \"report.docx\""}));
  EXPECT_EQ(std::string::npos, log.output.find("~$")) << log.output;
}

TEST_F(CliTest, DemoResumesAnUploadAndTheLogReadsBack) {
  test::TempDir dir;
  const std::string root = "'" + dir.path() + "/demo'";
  ASSERT_TRUE(CliPrints("demo " + root, 0,
                        {"0 + open range", "blocks [\"1-3\"]", "block 2 sent: [\"3\"]", "no interrupted transfers"}));

  const CliRun log = Cli("--json log " + root + " --type 0 --size 2 --page 2");
  ASSERT_EQ(0, log.status) << log.output;
  const JSON::Value page = JSON::Value::parse(log.output);
  const JSON::Value& journal = page.as_object().at("logs")[0];
  const JSON::Value& entries = journal.as_object().at("entries");
  // The demo's scans log first; its five journal entries are the newest.
  const int64_t total = journal.as_object().at("total").as_integer();
  EXPECT_GE(total, 5);
  ASSERT_EQ(2u, entries.size());
  EXPECT_EQ(total - 2, entries[0].as_object().at("id").as_integer());
  EXPECT_EQ("项目/会议纪要.docx", entries[0].as_object().at("relPath").as_string());

  EXPECT_EQ(1, Cli("log " + root + " --type 0 --page 9").status);
  EXPECT_EQ(1, Cli("resume '" + dir.path() + "/missing'").status);
}

// Linux names are bytes: a root and a file whose names are Latin-1, not UTF-8, are reached,
// and JSON output stays UTF-8 with the byte as the escape of the unit that stands for it.
TEST_F(CliTest, ARootWhosePathIsNotUtf8IsReachedAndItsJsonStaysUtf8) {
  test::TempDir dir;
  const std::string root = dir.path() + "/caf\xe9";
  test::MakeDir(root);
  test::WriteFile(root + "/r\xe9sum\xe9.txt", "cv");
  ASSERT_TRUE(CliPrints("--json scan '" + root + "'", 0, {"\"recorded\": 1,", "caf\\udce9"}));
  const CliRun ls = Cli("--json ls '" + root + "'");
  EXPECT_TRUE(test::Has(ls.output, {"r\\udce9sum\\udce9.txt"}));
  EXPECT_EQ(std::string::npos, ls.output.find('\xe9')) << ls.output;  // no byte that is not UTF-8
  EXPECT_TRUE(CliPrints("info '" + root + "/r\xe9sum\xe9.txt'", 0, {"r\xe9sum\xe9.txt"}));  // a terminal gets the bytes
}

// A plain tree (ASCII names, no quoting) through the tool on every system, so the Windows
// build runs its own tool too: the system's paths, a dry run's scratch state, JSON read back.
TEST(CliEverywhereTest, ADryRunWritesNothingAndAScanIsListedAndFound) {
  test::TempDir dir;
  const std::string root = dir.path();
  test::MakeDir(root + "/docs");
  test::WriteFile(root + "/docs/plan.txt", "plan");
  ASSERT_EQ(0, Cli("scan --dry-run " + root).status);
  EXPECT_FALSE(test::Exists(root + "/.kestrove.cache"));

  ASSERT_TRUE(CliPrints("--json scan " + root, 0, {"\"recorded\": 2,"}));
  const CliRun ls = Cli("--json ls " + root + " docs");
  const JSON::Value listing = JSON::Value::parse(ls.output);
  ASSERT_EQ(1u, listing.size()) << ls.output;
  EXPECT_EQ("plan.txt", listing[0].as_object().at("name").as_string());
  EXPECT_TRUE(CliPrints("info " + root + "/docs/plan.txt", 0, {"relative path: docs/plan.txt"}));
}

}  // namespace
