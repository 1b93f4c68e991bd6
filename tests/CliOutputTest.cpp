// What docmgr-cli shows: the unsynchronised-documents reports, output a person can read
// (names, local times, escaped control characters, plurals, translations) and output a
// script can parse (failures as JSON objects, one time unit), and help made from the table.
#include <cctype>

#include "TestSupport.h"
#include "dataapi/ncJson.h"
#include "docmgr/ncDocMgr.h"
#include "docmgr/ncILogMgr.h"

namespace {

using test::Cli;
using test::CliPrints;
using test::CliRun;
using CliOutputTest = test::PosixShellTest;

std::string Quoted(const std::string& path) { return "'" + path + "'"; }

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

TEST_F(CliOutputTest, UnsyncShowsWaitingItemsSetAsideDocumentsAndTheirLog) {
  test::TempDir dir;
  const std::string root = dir.path();
  test::WriteFile(root + "/old.txt", "old");
  ASSERT_EQ(0, Cli("scan " + Quoted(root)).status);
  test::WriteFile(root + "/new.txt", "new");
  ASSERT_EQ(0, Cli("scan " + Quoted(root)).status);
  const std::string setAside =
      JSON::Value::parse(Cli("--json init " + Quoted(root)).output).as_object().at("unsyncDocuments").as_string();
  test::MakeDir(setAside);
  test::WriteFile(setAside + "/aside.txt", "12345");
  RecordRefusedUploads(root, 3);

  const CliRun json = Cli("--json unsync " + Quoted(root) + " --size 2");
  ASSERT_EQ(0, json.status) << json.output;
  const JSON::Value report = JSON::Value::parse(json.output);
  const auto& docs = report.as_object().at("documents");
  ASSERT_EQ(2u, docs.size()) << json.output;
  EXPECT_EQ("new.txt", docs[0].as_object().at("relPath").as_string());
  EXPECT_EQ(NC_UNSYNC_DOC_WAITING, docs[0].as_object().at("kind").as_integer());
  EXPECT_EQ(NC_UNSYNC_DOC_SET_ASIDE, docs[1].as_object().at("kind").as_integer());
  const JSON::Value& entries = report.as_object().at("log").as_object().at("entries");
  ASSERT_EQ(2u, entries.size()) << json.output;
  EXPECT_EQ("refused/3.txt", entries[0].as_object().at("relPath").as_string()) << "newest first";
  EXPECT_EQ((1767225600 + 3) * 1000000LL, entries[0].as_object().at("time").as_integer()) << "microseconds, as the cache's";

  EXPECT_TRUE(CliPrints("unsync " + Quoted(root), 0,
                        {"waiting for upload", "set aside", "2 items have not reached the server", "3 log entries",
                         "2026-01-01 00:00:03  uploaded"},
                        "TZ=UTC"));
}

TEST_F(CliOutputTest, NamesWithControlCharactersStayOnOneLineAndParseBackFromJson) {
  test::TempDir dir;
  const std::string root = dir.path();
  test::WriteFile(root + "/a\nb\tc.txt", "x");
  ASSERT_EQ(0, Cli("scan " + Quoted(root)).status);

  EXPECT_TRUE(CliPrints("ls " + Quoted(root), 0, {"a\\nb\\tc.txt ", "\n1 item\n"}));
  EXPECT_EQ("a\nb\tc.txt", JSON::Value::parse(Cli("--json ls " + Quoted(root)).output)[0].as_object().at("name").as_string());
}

TEST_F(CliOutputTest, FailuresUnderJsonAreObjectsWithTheExitCode) {
  test::TempDir dir;
  const struct { std::string arguments, error; int status; } failures[] = {
      {"--json ls " + Quoted(dir.path() + "/nowhere"), "no such folder", 1},
      {"--json log " + Quoted(dir.path()) + " --type x", "", 2}};
  for (const auto& failure : failures) {
    const CliRun run = Cli(failure.arguments);
    const JSON::Value object = JSON::Value::parse(run.output);
    EXPECT_EQ(failure.status, run.status) << run.output;
    EXPECT_EQ(failure.status, object.as_object().at("exitCode").as_integer());
    EXPECT_TRUE(test::Has(object.as_object().at("error").as_string(), {failure.error}));
  }

  EXPECT_TRUE(CliPrints("ls " + Quoted(dir.path() + "/nowhere"), 1, {"文件夹不存在"}, "KESTROVE_LANG=zh_CN"));
}

TEST_F(CliOutputTest, HelpVersionAndTheManualPageComeFromTheCommandTable) {
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

}  // namespace
