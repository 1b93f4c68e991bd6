// The sync log in a real log.db: paging, hiding, the per-type cap kept by the triggers, and
// the repair of a log.db that holds the old delete trigger.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <string>

#include "TestSupport.h"
#include "docmgr/ncLogMgr.h"
#include "docmgr/ncModuleAllocator.h"

using base::String;

namespace {

// A second, raw connection to the same file, to look behind the store and to build files.
class RawDb {
 public:
  explicit RawDb(const String& path) { sqlite3_open(base::ToUtf8(path).c_str(), &db_); }
  ~RawDb() { sqlite3_close(db_); }
  // "" on success, else SQLite's message.
  std::string Exec(const std::string& sql) {
    char* error = nullptr;
    const int rc = sqlite3_exec(db_, sql.c_str(), nullptr, nullptr, &error);
    std::string message = rc == SQLITE_OK ? "" : (error ? error : "error");
    sqlite3_free(error);
    return message;
  }
  int64_t Number(const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    int64_t value = -1;
    if (sqlite3_prepare_v2(db_, sql.c_str(), -1, &statement, nullptr) == SQLITE_OK &&
        sqlite3_step(statement) == SQLITE_ROW)
      value = sqlite3_column_int64(statement, 0);
    sqlite3_finalize(statement);
    return value;
  }
  // Inserts count entries of a type in one statement; the triggers fire for each row.
  void Fill(int logType, int count) {
    ASSERT_EQ("", Exec("with recursive n(i) as (select 1 union all select i + 1 from n where i < " +
                       std::to_string(count) + ") insert into tb_synclog select NULL, " + std::to_string(logType) +
                       ", 1, 'bulk\\' || i, '', i, i, '', 1 from n"));
  }
  int64_t Counter(int type) { return Number("select logCount from tb_logstat where logType = " + std::to_string(type)); }
  int64_t Rows(int type) { return Number("select count(*) from tb_synclog where logType = " + std::to_string(type)); }

 private:
  sqlite3* db_ = nullptr;
};

ncSyncLogInfo Entry(const String& relPath, int64_t time) {
  ncSyncLogInfo info;
  info.taskType = 2;
  info.relPath = relPath;
  info.size = 10 * time;
  info.time = time;
  return info;
}

std::vector<int64_t> Times(const std::vector<ncSyncLogInfo>& entries) {
  std::vector<int64_t> times;
  for (const ncSyncLogInfo& e : entries) times.push_back(e.time);
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
  ASSERT_EQ(20u, page.size());
  EXPECT_EQ(11, page.front().time);
  EXPECT_EQ(30, page.back().time);
  log->GetSyncLog(1, page, 21, 30, total);
  EXPECT_EQ((std::vector<int64_t>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}), Times(page));
  // begin 0 and end 0: one row past the last, so nothing; an empty type pages to nothing too.
  log->GetSyncLog(1, page, 0, 0, total);
  EXPECT_TRUE(page.empty());
  log->GetSyncLog(3, page, 0, 5, total);
  EXPECT_EQ(0u, total);

  page.resize(3);
  EXPECT_THROW_CODE_MESSAGE(log->GetSyncLog(1, page, 3, 2, total), 2,
                            u"Invalid param: begin\uFF1A3\uFF0Cend\uFF1A2, total\uFF1A30");
  EXPECT_TRUE(page.empty());
  EXPECT_THROW_CODE_MESSAGE(log->GetSyncLog(2, page, 6, 9, total), 2,
                            u"Invalid param: begin\uFF1A6\uFF0Cend\uFF1A9, total\uFF1A5");

  // Numbers at their limits round-trip intact (hostile text has its own test).
  ncSyncLogInfo info = Entry(u"O'Brien\\报告.txt", -5);
  info.size = INT64_MAX;
  info.taskType = -3;
  log->RecordSyncLog(3, info);
  log->GetSyncLog(3, page, 1, 1, total);
  ASSERT_EQ(1u, page.size());
  EXPECT_EQ((std::vector<int64_t>{info.size, info.time, info.taskType}),
            (std::vector<int64_t>{page[0].size, page[0].time, page[0].taskType}));
}

TEST_F(LogMgrTest, NewestFirstByIdAndHiddenEntries) {
  Record(0, 1, 250);
  log->GetSyncLogById(0, page, 0, total);
  EXPECT_EQ(250u, total);
  ASSERT_EQ(200u, page.size());
  EXPECT_EQ(250, page.front().time);
  EXPECT_EQ(51, page.back().time);

  const int64_t id247 = page[3].id;
  page.clear();
  log->GetSyncLogById(0, page, id247, total);
  EXPECT_EQ((std::vector<int64_t>{250, 249, 248}), Times(page));

  // Hidden entries leave the listings and the total but stay in the counter.
  log->HideSyncLog(id247 + 1);
  page.clear();
  log->GetSyncLogById(0, page, id247, total);
  EXPECT_EQ((std::vector<int64_t>{250, 249}), Times(page));
  EXPECT_EQ(249u, total);
  log->HideAllSyncLog(0);
  log->GetSyncLog(0, page, 0, 20, total);
  EXPECT_EQ(0u, total);
  RawDb raw(path);
  EXPECT_EQ(250, raw.Counter(0));

  // Clearing removes the type's entries, hidden or not, and its counter follows.
  Record(3, 1, 2);
  log->ClearSyncLog(0);
  EXPECT_EQ((std::vector<int64_t>{0, 0, 2}), (std::vector<int64_t>{raw.Rows(0), raw.Counter(0), raw.Counter(3)}));
}

// 60,000 entries of one type: the oldest are trimmed at 50,000 and the counter stays equal
// to the number of entries. A type without a counter is never trimmed.
TEST_F(LogMgrTest, TheCapHoldsAndTheCounterMatches) {
  RawDb raw(path);
  raw.Fill(1, 45000);
  raw.Fill(7, 50000);
  Record(1, 45001, 60000);
  log->RecordSyncLog(7, Entry(u"uncounted", 1));
  const int64_t rows = raw.Rows(1);
  EXPECT_GE(rows, 25000);
  EXPECT_LE(rows, 50000);
  EXPECT_EQ(rows, raw.Counter(1));
  EXPECT_EQ(0, raw.Number("select count(*) from tb_synclog where logType = 1 and time <= 60000 - " +
                          std::to_string(rows)));  // the oldest went
  EXPECT_EQ(50001, raw.Rows(7));
  EXPECT_EQ(-1, raw.Counter(7));
}

// A log.db from an earlier release: its delete trigger reads new.logType, which makes
// current SQLite refuse every insert and delete, and its counters are off. The trigger is
// either created, or written straight into the schema.
const char kOldDeleteTrigger[] =
    "create trigger if not exists trg_deletelog after delete on tb_synclog begin update tb_logstat set logCount = "
    "logCount - 1 where logType = new.logType; end";

void BuildOldLogDb(const String& path, bool writtenIntoSchema) {
  RawDb raw(path);
  for (const char* sql : {
           "create table tb_synclog ( id INTEGER PRIMARY KEY, logType int, taskType int, relPath text, newName text, "
           "size int, time int, remark text, visible bool)",
           "create table tb_logstat ( logType int PRIMARY KEY, logCount int)",
           "insert into tb_logstat values (0, 999), (1, 7), (2, 0), (3, 0)",
           "create trigger trg_insertlog after insert on tb_synclog begin update tb_logstat set logCount = "
           "logCount + 1 where logType = new.logType; end"})
    ASSERT_EQ("", raw.Exec(sql));
  raw.Fill(0, 10);
  raw.Fill(2, 5);
  ASSERT_EQ("", raw.Exec("update tb_synclog set visible = 0 where id = 1"));
  ASSERT_EQ("", raw.Exec(writtenIntoSchema ? std::string("PRAGMA writable_schema=ON; insert into sqlite_master "
                                                         "values('trigger', 'trg_deletelog', 'tb_synclog', 0, '") +
                                                 kOldDeleteTrigger + "'); PRAGMA writable_schema=OFF"
                                           : std::string(kOldDeleteTrigger)));
}

TEST(LogRepairTest, InitReplacesTheOldDeleteTriggerAndRecounts) {
  for (bool writtenIntoSchema : {false, true}) {
    SCOPED_TRACE(writtenIntoSchema ? "written into the schema" : "created");
    test::TempDir dir;
    const String path = dir.child("log.db");
    BuildOldLogDb(path, writtenIntoSchema);
    RawDb raw(path);  // a new connection reads a schema written behind SQLite's back
    EXPECT_EQ("no such column: new.logType", raw.Exec("delete from tb_synclog where logType = 2"));

    nsCOMPtr<ncLogMgr> log(NC_NEW(ncLogMgr));
    log->Init(path);
    EXPECT_EQ(1, raw.Number("select count(*) from sqlite_master where name = 'trg_deletelog' and "
                            "sql like '%old.logType%'"));
    EXPECT_EQ(15, raw.Number("select count(*) from tb_synclog"));
    EXPECT_EQ((std::vector<int64_t>{10, 0, 5}), (std::vector<int64_t>{raw.Counter(0), raw.Counter(1), raw.Counter(2)}));
    std::vector<ncSyncLogInfo> entries;
    uint32_t total = 0;
    log->GetSyncLog(0, entries, 1, 20, total);
    EXPECT_EQ(9u, total);  // the hidden entry stays hidden

    log->RecordSyncLog(0, Entry(u"after repair", 11));
    log->ClearSyncLog(2);
    EXPECT_EQ((std::vector<int64_t>{11, 0}), (std::vector<int64_t>{raw.Counter(0), raw.Counter(2)}));
    log->Close();

    // A repaired file is left alone on the next start.
    ASSERT_EQ("", raw.Exec("update tb_logstat set logCount = 40 where logType = 3"));
    log->Init(path);
    EXPECT_EQ(40, raw.Counter(3));
    log->Close();
  }
}

}  // namespace
