// The sync log's insert and its trim at the cap, and the resume records' updates, at 1k,
// 10k, 100k and 1M rows, each paired with the raw replay of the statements it ran (see
// BenchSupport.h); and the block-list codec on a long list.
#include <algorithm>
#include <cstdio>
#include <stdexcept>
#include <functional>
#include <set>
#include <string>

#include "BenchSupport.h"
#include "text/String.h"
#include "docmgr/ncLogMgr.h"
#include "docmgr/ncModuleAllocator.h"
#include "docmgr/ncRelayMgr.h"

using base::String;

namespace {

const int kCap = 50000;
const int kTrim = 25000;
const int kOtherType = 5;  // a type without a counter: never trimmed, it only makes the table larger
const int64_t kSizes[] = {1000, 10000, 100000, 1000000};

// Adds count entries of a type in one statement (the triggers fire for each).
void Fill(sqlite3* db, int logType, int64_t count) {
  if (count <= 0) return;
  bench::ExecRaw(db, "with recursive n(i) as (select 1 union all select i + 1 from n where i < " +
                         std::to_string(count) + ") insert into tb_synclog select NULL, " + std::to_string(logType) +
                         ", 1, 'Projects\\Reports\\file ' || i || '.docx', '', 4096, i, '', 1 from n");
}

int64_t TypeCount(sqlite3* db) { return bench::QueryNumber(db, "select logCount from tb_logstat where logType = 0"); }

// A log.db of ours and its raw copy, each with a side connection that fills and checks it.
class LogFiles {
 public:
  LogFiles(int64_t otherRows, int64_t typeRows) {
    const std::string ourFile = dir_.path() + "/log.db", rawFile = dir_.path() + "/raw.db";
    log_ = NC_NEW(ncLogMgr);
    log_->Init(base::FromUtf8(ourFile));
    log_->Close();
    sqlite3* filler = bench::OpenRaw(ourFile, "OFF");
    Fill(filler, kOtherType, otherRows);
    Fill(filler, 0, typeRows);
    sqlite3_close(filler);
    bench::CopyFile(ourFile, rawFile);
    log_ = NC_NEW(ncLogMgr);
    log_->Init(base::FromUtf8(ourFile));
    raw_ = bench::OpenRaw(rawFile, "OFF");
    sides_[0] = bench::OpenRaw(ourFile, "OFF");
    sides_[1] = bench::OpenRaw(rawFile, "OFF");
  }
  ~LogFiles() {
    log_->Close();
    for (sqlite3* db : {raw_, sides_[0], sides_[1]}) sqlite3_close(db);
  }
  ncLogMgr& log() { return *log_; }
  sqlite3* raw() { return raw_; }
  // The side connections of our file and of the raw copy.
  sqlite3* side(int which) { return sides_[which]; }

 private:
  test::TempDir dir_;
  nsCOMPtr<ncLogMgr> log_;
  sqlite3* raw_ = nullptr;
  sqlite3* sides_[2] = {nullptr, nullptr};
};

ncSyncLogInfo Entry() {
  ncSyncLogInfo info;
  info.taskType = 1;
  info.relPath = u"Projects\\Reports\\O'Brien summary 2026.xlsx";
  info.size = 4096;
  info.time = 1790000000;
  return info;
}

std::vector<std::string> Recorded(const std::function<void()>& call) {
  bench::StatementRecorder recorder;
  call();
  return recorder.take();
}

// One insert into a log of range(0) rows, of which the inserted type holds at most 40,000,
// so that the run stays below the cap.
void BM_RecordSyncLog(benchmark::State& state) {
  const int64_t typeRows = std::min<int64_t>(state.range(0), 40000);
  LogFiles files(state.range(0) - typeRows, typeRows);
  const ncSyncLogInfo entry = Entry();
  auto ours = [&](size_t) { files.log().RecordSyncLog(0, entry); };
  const auto statements = Recorded([&] { ours(0); });
  bench::RunPaired(state, 1, ours, [&](size_t) { bench::Replay(files.raw(), statements); });
  if (TypeCount(files.side(0)) >= kCap) state.SkipWithError("the type reached the cap during the run");
}

// The one insert that brings a type to the cap and trims its oldest 25,000 entries, in a log
// that holds range(0) rows of another type besides. The type is filled back, untimed.
void BM_RecordSyncLogTrim(benchmark::State& state) {
  LogFiles files(state.range(0), kCap - 1);
  const ncSyncLogInfo entry = Entry();
  auto refill = [&] {
    for (int which = 0; which < 2; ++which) {
      if (TypeCount(files.side(which)) != kCap - kTrim) throw std::runtime_error("the insert did not trim");
      Fill(files.side(which), 0, kCap - 1 - TypeCount(files.side(which)));
    }
  };
  auto ours = [&](size_t) { files.log().RecordSyncLog(0, entry); };
  const auto statements = Recorded([&] { ours(0); });
  bench::ExecRaw(files.side(1), "insert into tb_synclog select NULL, 0, 1, 'x', '', 0, 0, '', 1");  // the same trim
  refill();
  bench::RunPaired(state, 1, ours, [&](size_t) { bench::Replay(files.raw(), statements); }, refill);
}

BENCHMARK(BM_RecordSyncLog)->ArgsProduct({{kSizes[0], kSizes[1], kSizes[2], kSizes[3]}})
    ->Iterations(5000)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_RecordSyncLogTrim)->ArgsProduct({{kSizes[0], kSizes[1], kSizes[2], kSizes[3]}})
    ->Iterations(9)->UseManualTime()->Unit(benchmark::kMillisecond);

// nonius.db with range(0) records in the table the benchmark updates, ours and a raw copy.
class RelayFiles {
 public:
  enum Table { Upload, Download };
  RelayFiles(int64_t rows, Table table) {
    const std::string ourFile = dir_.path() + "/nonius.db", rawFile = dir_.path() + "/raw.db";
    relay_ = NC_NEW(ncRelayMgr);
    relay_->Init(base::FromUtf8(ourFile));
    relay_->Close();
    sqlite3* filler = bench::OpenRaw(ourFile, "NORMAL");
    const std::string numbers =
        "with recursive n(i) as (select 0 union all select i + 1 from n where i < " + std::to_string(rows - 1) + ") ";
    if (table == Upload)
      bench::ExecRaw(filler, numbers + "insert into tb_upload_nonius (srcPath, destPath, docId, size, unUploadBlocks, "
                                     "status) select " + kSource + ", 'gns://A1/' || i, 'gns://A1/' || i, i, '[\"1-\"]', "
                                     "i % 3 from n");
    else
      bench::ExecRaw(filler, numbers + "insert into tb_download_nonius (srcPath, destPath, docId, size, range, status) "
                                     "select " + kSource + ", 'gns://B1/' || i, 'gns://B1/' || i, i, 0, i % 3 from n");
    sqlite3_close(filler);
    bench::CopyFile(ourFile, rawFile);
    relay_ = NC_NEW(ncRelayMgr);
    relay_->Init(base::FromUtf8(ourFile));
    raw_ = bench::OpenRaw(rawFile, "NORMAL");
    for (int64_t i = 0; i < rows && samples_.size() < 1000; i += rows / 1000 > 0 ? rows / 1000 : 1)
      samples_.push_back(u"/home/kim/Sync/folder " + base::ToString(i % 100) + u"/file " + base::ToString(i) + u".docx");
  }
  ~RelayFiles() {
    relay_->Close();
    sqlite3_close(raw_);
  }

  // Runs the pair for an update of the record of each sample path.
  void Run(benchmark::State& state, const std::function<void(const base::String&)>& update) {
    auto ours = [&](size_t i) { update(samples_[i]); };
    std::vector<std::vector<std::string>> statements;
    for (size_t i = 0; i < samples_.size(); ++i) statements.push_back(Recorded([&] { ours(i); }));
    bench::RunPaired(state, samples_.size(), ours, [&](size_t i) { bench::Replay(raw_, statements[i]); });
  }
  ncRelayMgr& relay() { return *relay_; }

 private:
  static constexpr const char* kSource = "'/home/kim/Sync/folder ' || (i % 100) || '/file ' || i || '.docx'";
  test::TempDir dir_;
  nsCOMPtr<ncRelayMgr> relay_;
  sqlite3* raw_ = nullptr;
  std::vector<base::String> samples_;
};

void BM_UpdateUploadNonius(benchmark::State& state) {
  RelayFiles files(state.range(0), RelayFiles::Upload);
  files.Run(state, [&](const base::String& path) {
    ncUploadNonius record;
    record.srcPath = path;
    record.destPath = u"gns://A1/" + path.substr(path.rfind(u' ') + 1);
    record.md5 = u"9e107d9d372bb6826bd81d3542a419d6";
    record.unUploadBlocks = u"[\"3-\"]";
    record.partSize = 4194304;
    record.size = 41943040;
    record.ratios = 0.2;
    files.relay().UpdateUploadNonius(record);
  });
}

void BM_UpdateUploadNoniusUnuploadBlocks(benchmark::State& state) {
  RelayFiles files(state.range(0), RelayFiles::Upload);
  files.Run(state, [&](const base::String& path) {
    files.relay().UpdateUploadNoniusUnuploadBlocks(path, u"[\"1\",\"4-9\",\"12-\"]", 1);
  });
}

void BM_UpdateDownloadNoniusRange(benchmark::State& state) {
  RelayFiles files(state.range(0), RelayFiles::Download);
  files.Run(state, [&](const base::String& path) {
    files.relay().UpdateDownloadNoniusRange(path, 8388608, 1, 1790000000);
  });
}

BENCHMARK(BM_UpdateUploadNonius)->ArgsProduct({{kSizes[0], kSizes[1], kSizes[2], kSizes[3]}})
    ->MinTime(0.3)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_UpdateUploadNoniusUnuploadBlocks)->ArgsProduct({{kSizes[0], kSizes[1], kSizes[2], kSizes[3]}})
    ->MinTime(0.3)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_UpdateDownloadNoniusRange)->ArgsProduct({{kSizes[0], kSizes[1], kSizes[2], kSizes[3]}})
    ->MinTime(0.3)->UseManualTime()->Unit(benchmark::kMicrosecond);

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
