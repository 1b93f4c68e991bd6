// docmgr-cli run as a support engineer runs it, through the module file on real folder
// trees: what it records and finds, output a person can read (names, local times, escaped
// control characters, plurals, translations), output a script can parse (failures as JSON
// objects, one time unit), and help made from the command table.
#include <cctype>

#include "TestSupport.h"
#include "dataapi/ncJson.h"
#include "docmgr/ncDocMgr.h"
#include "docmgr/ncILogMgr.h"

namespace {

using test::Cli;
using test::CliPrints;
using test::CliRun;

// A fresh root, and its path quoted for the shell.
class CliTest : public test::PosixShellTest {
 protected:
  test::TempDir dir;
  const std::string root = dir.path(), quoted = "'" + root + "'";
};

TEST_F(CliTest, InitShowsTheDataDirectoryAndCheckReportsUnsoundDatabases) {
  EXPECT_TRUE(CliPrints("init " + quoted, 0, {root + "/.kestrove.cache"}));
  EXPECT_TRUE(test::Exists(root + "/.kestrove.cache"));
  EXPECT_EQ(0u, Cli("--json init " + quoted).output.find("{\"root\": \"" + root + "\""));
  EXPECT_EQ(2, Cli("nonsense").status);
  EXPECT_TRUE(CliPrints("init /tmp", 1, {"cannot load the module"}, "KESTROVE_MODULE=/nonexistent.so"));

  ASSERT_EQ(0, Cli("upgrade " + quoted).status);  // writes config.db
  EXPECT_TRUE(CliPrints("check " + quoted, 0, {"config.db    ok"}));
  test::WriteFile(root + "/.kestrove.cache/junk.db", std::string(4096, 'x'));
  EXPECT_TRUE(CliPrints("check " + quoted, 1, {"junk.db      corrupt"}));
}

TEST_F(CliTest, ScanTagsAndRecordsFilesSkipsIgnoredNamesAndTheOtherCommandsFindThem) {
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
  const std::string demo = "'" + root + "/demo'";
  ASSERT_TRUE(CliPrints("demo " + demo, 0,
                        {"0 + open range", "blocks [\"1-3\"]", "block 2 sent: [\"3\"]", "no interrupted transfers"}));

  const CliRun log = Cli("--json log " + demo + " --type 0 --size 2 --page 2");
  ASSERT_EQ(0, log.status) << log.output;
  const JSON::Value page = JSON::Value::parse(log.output);
  const JSON::Value& journal = page.as_object().at("logs")[0];
  const JSON::Value& entries = journal.as_object().at("entries");
  ASSERT_EQ(2u, entries.size());
  // The demo's scans log first; its five journal entries are the newest.
  EXPECT_EQ(journal.as_object().at("total").as_integer() - 2, entries[0].as_object().at("id").as_integer());
  EXPECT_EQ("项目/会议纪要.docx", entries[0].as_object().at("relPath").as_string());

  EXPECT_EQ(1, Cli("log " + demo + " --type 0 --page 9").status);
}

// Linux names are bytes: a root and a file whose names are Latin-1, not UTF-8, are reached,
// and JSON output stays UTF-8 with the byte as the escape of the unit that stands for it.
TEST_F(CliTest, ARootWhosePathIsNotUtf8IsReachedAndItsJsonStaysUtf8) {
  const std::string latin = root + "/caf\xe9";
  test::MakeDir(latin);
  test::WriteFile(latin + "/r\xe9sum\xe9.txt", "cv");
  ASSERT_TRUE(CliPrints("--json scan '" + latin + "'", 0, {"\"recorded\": 1,", "caf\\udce9"}));
  const CliRun ls = Cli("--json ls '" + latin + "'");
  EXPECT_TRUE(test::Has(ls.output, {"r\\udce9sum\\udce9.txt"}));
  EXPECT_EQ(std::string::npos, ls.output.find('\xe9')) << ls.output;  // no byte that is not UTF-8
  EXPECT_TRUE(CliPrints("info '" + latin + "/r\xe9sum\xe9.txt'", 0, {"r\xe9sum\xe9.txt"}));  // a terminal gets the bytes
}

// Entries of the unsynchronised log type, written as the client's engine writes them.
void RecordRefusedUploads(const std::string& root, int count) {
  nsCOMPtr<ncIDocMgr> docMgr(new ncDocMgr);
  docMgr->Init(base::FromUtf8(root), base::FromUtf8(root), {}, false, u"test");
  nsCOMPtr<ncILogMgr> log = nsCOMPtr<ncILogMgr>::adopt(docMgr->GetLogMgr());
  for (int i = 1; i <= count; ++i) {
    ncSyncLogInfo entry;
    entry.taskType = 2;
    entry.relPath = base::FromUtf8("refused\\" + std::to_string(i) + ".txt");
    entry.time = 1767225600 + i;  // 2026-01-01 00:00:0i UTC
    log->RecordSyncLog(NC_SYNCLOG_TYPE_UNSYNC, entry);
  }
  docMgr->Close();
}

TEST_F(CliTest, UnsyncShowsWaitingItemsSetAsideDocumentsAndTheirLog) {
  test::WriteFile(root + "/old.txt", "old");
  ASSERT_EQ(0, Cli("scan " + quoted).status);
  test::WriteFile(root + "/new.txt", "new");
  ASSERT_EQ(0, Cli("scan " + quoted).status);
  const std::string setAside =
      JSON::Value::parse(Cli("--json init " + quoted).output).as_object().at("unsyncDocuments").as_string();
  test::MakeDir(setAside);
  test::WriteFile(setAside + "/aside.txt", "12345");
  RecordRefusedUploads(root, 3);

  // The order and kinds are the component's (DocMgrTest); the tool adds '/' and one time unit.
  const CliRun json = Cli("--json unsync " + quoted + " --size 2");
  const JSON::Value report = JSON::Value::parse(json.output);
  EXPECT_EQ(NC_UNSYNC_DOC_SET_ASIDE, report.as_object().at("documents")[1].as_object().at("kind").as_integer());
  const JSON::Value& entries = report.as_object().at("log").as_object().at("entries");
  ASSERT_EQ(2u, entries.size()) << json.output;
  EXPECT_EQ("refused/3.txt", entries[0].as_object().at("relPath").as_string());
  EXPECT_EQ((1767225600 + 3) * 1000000LL, entries[0].as_object().at("time").as_integer()) << "microseconds, as the cache's";

  EXPECT_TRUE(CliPrints("unsync " + quoted, 0,
                        {"waiting for upload", "set aside", "2 items have not reached the server", "3 log entries",
                         "2026-01-01 00:00:03  uploaded"},
                        "TZ=UTC"));
}

TEST_F(CliTest, NamesWithControlCharactersStayOnOneLineAndParseBackFromJson) {
  test::WriteFile(root + "/a\nb\tc.txt", "x");
  ASSERT_EQ(0, Cli("scan " + quoted).status);
  EXPECT_TRUE(CliPrints("ls " + quoted, 0, {"a\\nb\\tc.txt ", "\n1 item\n"}));
  EXPECT_EQ("a\nb\tc.txt", JSON::Value::parse(Cli("--json ls " + quoted).output)[0].as_object().at("name").as_string());
}

TEST_F(CliTest, FailuresUnderJsonAreObjectsWithTheExitCode) {
  const struct { std::string arguments, error; int status; } failures[] = {
      {"--json ls " + quoted + "/nowhere", "no such folder", 1}, {"--json log " + quoted + " --type x", "", 2}};
  for (const auto& failure : failures) {
    const CliRun run = Cli(failure.arguments);
    const JSON::Value object = JSON::Value::parse(run.output);
    EXPECT_EQ(failure.status, run.status) << run.output;
    EXPECT_EQ(failure.status, object.as_object().at("exitCode").as_integer());
    EXPECT_TRUE(test::Has(object.as_object().at("error").as_string(), {failure.error}));
  }
  EXPECT_TRUE(CliPrints("ls " + quoted + "/nowhere", 1, {"文件夹不存在"}, "KESTROVE_LANG=zh_CN"));
}

TEST_F(CliTest, HelpVersionAndTheManualPageComeFromTheCommandTable) {
  const CliRun version = Cli("--version");
  EXPECT_EQ(0u, version.output.find("docmgr-cli ")) << version.output;
  EXPECT_TRUE(version.output.size() > 11 && std::isdigit(static_cast<unsigned char>(version.output[11]))) << version.output;
  EXPECT_TRUE(CliPrints("help scan", 0, {"usage: docmgr-cli scan ROOT [--dry-run] [-v]"}));
  EXPECT_EQ(2, Cli("help nonsense").status);
  EXPECT_TRUE(CliPrints("scan", 2, {"usage: docmgr-cli scan ROOT [--dry-run] [-v]"}));
  const CliRun man = Cli("help --man");
  EXPECT_EQ(0u, man.output.find(".TH DOCMGR-CLI 1")) << man.output;
  EXPECT_TRUE(test::Has(man.output, {".SH COMMANDS", ".B unsync ROOT", ".SH EXIT STATUS"}));
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
