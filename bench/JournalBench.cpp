// The sync log's insert against raw SQLite running the same statement over the same tables
// and triggers, the single insert that trims a type at the cap, and the block-list codec on
// a long list.
#include <chrono>
#include <cstdio>
#include <set>
#include <string>

#include "BenchSupport.h"
#include "text/String.h"
#include "docmgr/ncLogMgr.h"
#include "docmgr/ncModuleAllocator.h"
#include "docmgr/ncRelayMgr.h"

namespace {

const int kCap = 50000;
const int kTrim = 25000;

// The store's schema, for the raw baseline.
const char* const kSchema[] = {
    "PRAGMA synchronous=OFF;",
    "create table if not exists tb_synclog ( id INTEGER PRIMARY KEY, logType int, taskType int, relPath text, "
    "newName text, size int, time int, remark text, visible bool)",
    "create table if not exists tb_logstat ( logType int PRIMARY KEY, logCount int)",
    "insert or ignore into tb_logstat values ('0', 0)",
    "insert or ignore into tb_logstat values ('1', 0)",
    "insert or ignore into tb_logstat values ('2', 0)",
    "insert or ignore into tb_logstat values ('3', 0)",
    "create trigger if not exists trg_cleanlog after insert on tb_synclog when (select logCount from tb_logstat "
    "where logType = new.logType) >= 50000 begin delete from tb_synclog where id in (select id from tb_synclog "
    "where logType = new.logType limit 25000); end",
    "create trigger if not exists trg_insertlog after insert on tb_synclog begin update tb_logstat set logCount = "
    "logCount + 1 where logType = new.logType; end",
    "create trigger if not exists trg_deletelog after delete on tb_synclog begin update tb_logstat set logCount = "
    "logCount - 1 where logType = old.logType; end",
};

// Adds count entries of type 0 in one statement (the triggers fire for each).
void Fill(sqlite3* db, int count) {
  if (count <= 0) return;
  bench::ExecRaw(db, "with recursive n(i) as (select 1 union all select i + 1 from n where i < " +
                         std::to_string(count) +
                         ") insert into tb_synclog select NULL, 0, 1, 'Projects\\Reports\\file ' || i || '.docx', "
                         "'', 4096, i, '', 1 from n");
}

int64_t Counter(sqlite3* db) {
  sqlite3_stmt* statement = nullptr;
  int64_t value = -1;
  if (sqlite3_prepare_v2(db, "select logCount from tb_logstat where logType = 0", -1, &statement, nullptr) ==
          SQLITE_OK &&
      sqlite3_step(statement) == SQLITE_ROW)
    value = sqlite3_column_int64(statement, 0);
  sqlite3_finalize(statement);
  return value;
}

ncSyncLogInfo Entry(int64_t time) {
  ncSyncLogInfo info;
  info.taskType = 1;
  info.relPath = u"Projects\\Reports\\summary 2026.xlsx";
  info.size = 4096;
  info.time = time;
  return info;
}

// The statement the store runs, composed the way a hand-written caller would.
std::string RawInsert(int64_t time) {
  char sql[512];
  std::snprintf(sql, sizeof sql,
                "insert into tb_synclog values(NULL,'%d', '%d', '%s', '%s', '%lld', '%lld', '%s',1)", 0, 1,
                "Projects\\Reports\\summary 2026.xlsx", "", 4096LL, static_cast<long long>(time), "");
  return sql;
}

// A log.db written either by the store or by a raw connection with the same schema. Both
// get a second connection that fills and checks the file, so that the measured connection
// finds the same (cold) page cache either way.
class LogFile {
 public:
  explicit LogFile(bool raw) : path_(dir_.path() + "/log.db") {
    if (raw) {
      writer_ = bench::OpenRaw(path_);
      for (const char* sql : kSchema) bench::ExecRaw(writer_, sql);
    } else {
      log_ = NC_NEW(ncLogMgr);
      log_->Init(base::FromUtf8(path_));
    }
    side_ = bench::OpenRaw(path_);
    bench::ExecRaw(side_, "PRAGMA synchronous=OFF;");
  }
  ~LogFile() {
    if (log_) log_->Close();
    sqlite3_close(writer_);
    sqlite3_close(side_);
  }
  void Insert(int64_t time) {
    if (log_) log_->RecordSyncLog(0, Entry(time));
    else bench::ExecRaw(writer_, RawInsert(time));
  }
  sqlite3* side() const { return side_; }

 private:
  bench::TempDir dir_;
  std::string path_;
  sqlite3* writer_ = nullptr;
  sqlite3* side_ = nullptr;
  nsCOMPtr<ncLogMgr> log_;
};

// Inserts into a log that already holds range(0) entries of the type, staying below the cap.
void RecordSyncLog(benchmark::State& state, bool raw) {
  LogFile file(raw);
  Fill(file.side(), static_cast<int>(state.range(0)));
  int64_t time = 0;
  for (auto _ : state) file.Insert(++time);
  if (Counter(file.side()) >= kCap) state.SkipWithError("the type reached the cap during the run");
  state.SetItemsProcessed(state.iterations());
}

void BM_RecordSyncLog(benchmark::State& state) { RecordSyncLog(state, false); }
void BM_RecordSyncLog_Raw(benchmark::State& state) { RecordSyncLog(state, true); }
BENCHMARK(BM_RecordSyncLog)->Arg(1000)->Arg(10000)->Arg(39000)->Iterations(10000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_RecordSyncLog_Raw)->Arg(1000)->Arg(10000)->Arg(39000)->Iterations(10000)->Unit(benchmark::kMicrosecond);

// The one insert that brings the type to the cap and trims its oldest 25,000 entries.
void RecordSyncLogTrim(benchmark::State& state, bool raw) {
  LogFile file(raw);
  int64_t time = 0;
  for (auto _ : state) {
    Fill(file.side(), kCap - 1 - static_cast<int>(Counter(file.side())));
    const auto start = std::chrono::steady_clock::now();
    file.Insert(++time);
    const auto stop = std::chrono::steady_clock::now();
    state.SetIterationTime(std::chrono::duration<double>(stop - start).count());
    if (Counter(file.side()) != kCap - kTrim) {
      state.SkipWithError("the insert did not trim");
      break;
    }
  }
}

void BM_RecordSyncLogTrim(benchmark::State& state) { RecordSyncLogTrim(state, false); }
void BM_RecordSyncLogTrim_Raw(benchmark::State& state) { RecordSyncLogTrim(state, true); }
BENCHMARK(BM_RecordSyncLogTrim)->Iterations(10)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RecordSyncLogTrim_Raw)->Iterations(10)->UseManualTime()->Unit(benchmark::kMillisecond);

// A list of range(0) blocks as it looks half way through a resumed upload: single blocks
// and short ranges with gaps between them.
base::String BlockList(int64_t blocks) {
  std::string text = "[";
  int64_t listed = 0;
  for (int64_t block = 1; listed < blocks; block += 2) {
    if (text.size() > 1) text += ",";
    if (block % 3 == 0 && listed + 3 <= blocks) {
      text += "\"" + std::to_string(block) + "-" + std::to_string(block + 2) + "\"";
      listed += 3;
      block += 2;
    } else {
      text += "\"" + std::to_string(block) + "\"";
      ++listed;
    }
  }
  return base::FromUtf8(text + "]");
}

void BM_ParseUnuploadBlocks(benchmark::State& state) {
  nsCOMPtr<ncRelayMgr> relay(NC_NEW(ncRelayMgr));
  const base::String list = BlockList(state.range(0));
  const int32_t maxNum = static_cast<int32_t>(state.range(0));
  std::set<int32_t> blocks;
  for (auto _ : state) {
    relay->ParseUnuploadBlocks(list, maxNum, blocks);
    benchmark::DoNotOptimize(blocks.size());
  }
  if (blocks.size() != static_cast<size_t>(state.range(0))) state.SkipWithError("wrong number of blocks");
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_ParseUnuploadBlocks)->Arg(1000)->Arg(100000)->Unit(benchmark::kMillisecond);

// Sending one block of a long list: the list is read, one element split, and written back.
void BM_DeleteFormUnupload(benchmark::State& state) {
  nsCOMPtr<ncRelayMgr> relay(NC_NEW(ncRelayMgr));
  const base::String list = BlockList(state.range(0));
  for (auto _ : state) {
    base::String copy = list;
    relay->DeleteFormUnupload(copy, 1);
    benchmark::DoNotOptimize(copy.size());
  }
}
BENCHMARK(BM_DeleteFormUnupload)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace
