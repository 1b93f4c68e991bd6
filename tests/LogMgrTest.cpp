// The sync log in a real log.db: paging, hiding, the counters kept by the triggers, and the
// trim at the per-type cap, and the repair of a log.db that holds the old delete trigger.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <string>

#include "TestSupport.h"
#include "docmgr/ncLogMgr.h"
#include "docmgr/ncModuleAllocator.h"

using base::String;
using test::Rows;

namespace {

// SQL on a connection of its own, behind the store: "" on success, else SQLite's message.
std::string RawExec(const String& path, const std::string& sql) {
  sqlite3* db = nullptr;
  sqlite3_open(base::ToUtf8(path).c_str(), &db);
  const bool ok = sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
  const std::string message = ok ? "" : sqlite3_errmsg(db);
  sqlite3_close(db);
  return message;
}

// Inserts count entries of a type in one statement; the triggers fire for each row.
std::string Fill(int logType, int count) {
  return "with recursive n(i) as (select 1 union all select i + 1 from n where i < " + std::to_string(count) +
         ") insert into tb_synclog select NULL, " + std::to_string(logType) + ", 1, 'bulk\\' || i, '', i, i, '', 1 from n;";
}

const char kCounters[] = "select logType, logCount from tb_logstat order by logType";

ncSyncLogInfo Entry(const String& relPath, int64_t time) {
  ncSyncLogInfo info;
  info.taskType = -2;
  info.relPath = relPath;
  info.size = INT64_MAX - time;
  info.time = time;
  return info;
}

std::vector<int64_t> Times(const std::vector<ncSyncLogInfo>& entries) {
  std::vector<int64_t> times;
  for (const ncSyncLogInfo& e : entries) times.push_back(e.time);
  return times;
}

// The times from first to last, counting up or down.
std::vector<int64_t> Span(int64_t first, int64_t last) {
  std::vector<int64_t> times{first};
  while (times.back() != last) times.push_back(times.back() + (first < last ? 1 : -1));
  return times;
}

class LogMgrTest : public ::testing::Test {
 protected:
  void SetUp() override { log->Init(path); }
  void TearDown() override { log->Close(); }
  // Entries of the type with times first..last.
  void Record(int logType, int first, int last) {
    for (int time = first; time <= last; ++time) log->RecordSyncLog(logType, Entry(base::Format(u"f%d", time), time));
  }
  Rows Query(const std::string& sql) { return test::Query(log->GetDBMgr(), sql); }

  test::TempDir dir;
  const String path = dir.child("log.db");
  nsCOMPtr<ncLogMgr> log{NC_NEW(ncLogMgr)};
  std::vector<ncSyncLogInfo> page;
  uint32_t total = 0;
};

TEST_F(LogMgrTest, PagesCountBackFromTheNewestEntryAndEntriesRoundTripIntact) {
  Record(1, 1, 30);
  Record(2, 100, 104);
  log->GetSyncLog(1, page, 1, 20, total);
  EXPECT_EQ(30u, total);
  EXPECT_EQ(Span(11, 30), Times(page));
  // Hostile text has its own test; here the numbers at their limits.
  EXPECT_EQ((std::vector<int64_t>{INT64_MAX - 30, -2}), (std::vector<int64_t>{page.back().size, page.back().taskType}));
  // begin 0 and end 0: one row past the last, so nothing.
  log->GetSyncLog(1, page, 0, 0, total);
  EXPECT_TRUE(page.empty());

  page.resize(3);
  EXPECT_THROW_CODE_MESSAGE(log->GetSyncLog(1, page, 3, 2, total), 2,
                            u"Invalid param: begin\uFF1A3\uFF0Cend\uFF1A2, total\uFF1A30");
  EXPECT_TRUE(page.empty());
}

TEST_F(LogMgrTest, NewestFirstByIdAndHiddenEntries) {
  Record(0, 1, 250);
  log->GetSyncLogById(0, page, 0, total);
  EXPECT_EQ(250u, total);
  EXPECT_EQ(Span(250, 51), Times(page));

  const int64_t id247 = page[3].id;
  page.clear();
  log->GetSyncLogById(0, page, id247, total);
  EXPECT_EQ(Span(250, 248), Times(page));

  // Hidden entries leave the listings and the total but stay in the counter.
  log->HideSyncLog(id247 + 1);
  page.clear();
  log->GetSyncLogById(0, page, id247, total);
  EXPECT_EQ((std::vector<int64_t>{250, 249}), Times(page));
  EXPECT_EQ(249u, total);
  log->HideAllSyncLog(0);
  log->GetSyncLog(0, page, 0, 20, total);
  EXPECT_EQ(0u, total);
  EXPECT_EQ((Rows{{"0", "250"}, {"1", "0"}, {"2", "0"}, {"3", "0"}}), Query(kCounters));

  // Clearing removes the type's entries, hidden or not, and its counter follows.
  Record(3, 1, 2);
  log->ClearSyncLog(0);
  EXPECT_EQ((Rows{{"0", "0"}, {"1", "0"}, {"2", "0"}, {"3", "2"}}), Query(kCounters));
  EXPECT_EQ((Rows{{"0"}}), Query("select count(*) from tb_synclog where logType = 0"));
}

// A log.db from an earlier release: its delete trigger reads new.logType, which makes
// current SQLite refuse every insert and delete, and its counters are off. Some releases
// wrote that trigger straight into the schema; UpgradeStepsTest repairs a created one.
const char kOldTables[] =
    "create table tb_synclog ( id INTEGER PRIMARY KEY, logType int, taskType int, relPath text, newName text, "
    "size int, time int, remark text, visible bool); create table tb_logstat ( logType int PRIMARY KEY, logCount int);"
    "insert into tb_logstat values (0, 999), (1, 7), (2, 0), (3, 0); create trigger trg_insertlog after insert on "
    "tb_synclog begin update tb_logstat set logCount = logCount + 1 where logType = new.logType; end;";
const char kOldDeleteTrigger[] =
    "update tb_synclog set visible = 0 where id = 1; PRAGMA writable_schema=ON; insert into sqlite_master values("
    "'trigger', 'trg_deletelog', 'tb_synclog', 0, 'create trigger if not exists trg_deletelog after delete on "
    "tb_synclog begin update tb_logstat set logCount = logCount - 1 where logType = new.logType; end');"
    "PRAGMA writable_schema=OFF";

// The type that reaches 50,000 entries loses its oldest half; the other types keep theirs,
// and every counter still counts the rows of its type.
TEST_F(LogMgrTest, TheCapTrimsOnlyTheTypeThatReachesIt) {
  log->Close();
  ASSERT_EQ("", RawExec(path, Fill(1, 49999) + Fill(2, 10)));
  log->Init(path);
  Record(1, 1, 2);
  const Rows counted = Query("select logType, count(*) from tb_synclog group by logType order by logType");
  ASSERT_EQ(2u, counted.size());
  EXPECT_LT(std::stoi(counted[0][1]), 50000);
  EXPECT_EQ("10", counted[1][1]);
  EXPECT_EQ((Rows{{"0", "0"}, counted[0], counted[1], {"3", "0"}}), Query(kCounters));
  EXPECT_EQ((Rows{{"2"}}), Query("select max(time) from tb_synclog where logType = 1 and relPath like 'f%'"));
}

TEST(LogRepairTest, InitReplacesTheOldDeleteTriggerAndRecounts) {
  test::TempDir dir;
  const String path = dir.child("log.db");
  ASSERT_EQ("", RawExec(path, kOldTables + Fill(0, 10) + Fill(2, 5) + kOldDeleteTrigger));
  // A new connection reads a schema written behind SQLite's back.
  EXPECT_EQ("no such column: new.logType", RawExec(path, "delete from tb_synclog where logType = 2"));

  nsCOMPtr<ncLogMgr> log(NC_NEW(ncLogMgr));
  log->Init(path);
  const auto query = [&log](const std::string& sql) { return test::Query(log->GetDBMgr(), sql); };
  EXPECT_EQ((Rows{{"1", "15"}}), query("select (select count(*) from sqlite_master where name = 'trg_deletelog' and "
                                       "sql like '%old.logType%'), count(*) from tb_synclog"));
  EXPECT_EQ((Rows{{"0", "10"}, {"1", "0"}, {"2", "5"}, {"3", "0"}}), query(kCounters));
  std::vector<ncSyncLogInfo> entries;
  uint32_t total = 0;
  log->GetSyncLog(0, entries, 1, 20, total);
  EXPECT_EQ(9u, total);  // the hidden entry stays hidden

  log->RecordSyncLog(0, Entry(u"after repair", 11));
  log->ClearSyncLog(2);
  EXPECT_EQ((Rows{{"0", "11"}, {"1", "0"}, {"2", "0"}, {"3", "0"}}), query(kCounters));
  log->Close();
}

}  // namespace
