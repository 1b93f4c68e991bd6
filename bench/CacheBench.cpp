// The document cache at 1k, 10k and 100k rows: Update and GetInfoByPath against raw SQLite
// running the same statements on a copy of the same database, Rename of a folder that holds
// a tenth of the rows, and Search of a three-letter key for 50 hits.
//
// The rows: ten top folders, each with (rows / 1000) sub-folders holding the files, whose
// names mix Latin and Chinese words (so their initials differ from the names).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "BenchSupport.h"
#include "docmgr/ncCacheMgr.h"
#include "docmgr/ncModuleAllocator.h"

namespace {

using base::String;

const char16_t* const kWords[] = {u"report", u"plan", u"summary", u"budget", u"draft", u"设计文档", u"项目计划",
                                  u"会议纪要", u"产品说明", u"财务报表", u"minutes", u"合同", u"invoice", u"培训资料"};
const char16_t* const kExtensions[] = {u".docx", u".xlsx", u".pdf", u".txt", u".pptx"};

String Folder(int top) { return u"top" + base::ToString(top); }
String SubFolder(int top, int sub) { return Folder(top) + u"\\sub " + base::ToString(sub); }

// A database of the given size, built once and shared by every benchmark of that size.
// The benchmarks leave it as they found it (Update rewrites rows with their own values,
// Rename renames back and forth).
struct Database {
  explicit Database(int rows) {
    ourFile = dir.path() + "/cache.db";
    rawFile = dir.path() + "/raw.db";
    nsCOMPtr<ncCacheMgr> cache(NC_NEW(ncCacheMgr));
    cache->Init(base::FromUtf8(ourFile), false);
    const int subs = rows / 1000 > 0 ? rows / 1000 : 1;
    cache->GetDBMgr()->BeginTransaction();
    int id = 0;
    auto add = [&](const String& relPath, ncCacheInfo info) {
      info.id = u"gns://" + base::ToString(++id);
      info.otag = u"9F3A" + base::ToString(id);
      cache->Update(relPath, info);
      return info;
    };
    ncCacheInfo folder;
    folder.isDir = 1;
    for (int top = 0; top < 10; ++top) {
      add(Folder(top), folder);
      for (int sub = 0; sub < subs; ++sub) add(SubFolder(top, sub), folder);
    }
    for (int i = 0; i < rows; ++i) {
      const int top = i % 10, sub = (i / 10) % subs;
      const String name = String(kWords[i % 14]) + u" " + base::ToString(i) + kExtensions[i % 5];
      ncCacheInfo file;
      file.state = i % 50 == 0 ? NC_CACHE_STATE_UNSYNC : NC_CACHE_STATE_NORMAL;
      file.serverMTime = file.clientMTime = 1790000000000000 + i;
      file.size = 1000 + i;
      const String relPath = SubFolder(top, sub) + u"\\" + name;
      file = add(relPath, file);
      if (i % (rows / 1000 > 0 ? rows / 1000 : 1) == 0 && samples.size() < 1000) {
        samples.push_back(relPath);
        infos.push_back(file);
      }
    }
    cache->GetDBMgr()->CommitTransaction();
    cache->Close();
    std::ifstream source(ourFile, std::ios::binary);
    std::ofstream(rawFile, std::ios::binary) << source.rdbuf();
  }

  bench::TempDir dir;
  std::string ourFile, rawFile;
  std::vector<String> samples;  // relative paths of rows spread over the table
  std::vector<ncCacheInfo> infos;
};

Database& Prepared(int rows) {
  static std::map<int, std::unique_ptr<Database>> databases;
  std::unique_ptr<Database>& database = databases[rows];
  if (!database) database.reset(new Database(rows));
  return *database;
}

nsCOMPtr<ncCacheMgr> OpenCache(const Database& database) {
  nsCOMPtr<ncCacheMgr> cache(NC_NEW(ncCacheMgr));
  cache->Init(base::FromUtf8(database.ourFile), false);
  return cache;
}

sqlite3* OpenRawCache(const Database& database) {
  sqlite3* db = bench::OpenRaw(database.rawFile);
  bench::ExecRaw(db, "PRAGMA synchronous=NORMAL;");
  return db;
}

// The pairs below run our call and the raw statement alternately in the same loop, on two
// copies of the database, and time each side on its own: load from other processes then
// falls on both sides alike. BM_X reports our side, BM_X_Raw the raw side of the same kind
// of run, and both report the ratio of the two sides' median call times within the run
// ("ours/raw"), which a checkpoint or a busy neighbour process landing on one call does not
// move.
enum class Side { Ours, Raw };

template <typename OurCall, typename RawCall>
void RunInterleaved(benchmark::State& state, Side reported, OurCall ours, RawCall raw) {
  using Clock = std::chrono::steady_clock;
  size_t next = 0;
  bool oursFirst = true;
  std::vector<double> ourTimes, rawTimes;
  for (auto _ : state) {
    Clock::duration ourTime{}, rawTime{};
    for (int turn = 0; turn < 2; ++turn) {
      const Clock::time_point start = Clock::now();
      if ((turn == 0) == oursFirst) {
        ours(next);
        ourTime = Clock::now() - start;
      } else {
        raw(next);
        rawTime = Clock::now() - start;
      }
    }
    const double ourSeconds = std::chrono::duration<double>(ourTime).count();
    const double rawSeconds = std::chrono::duration<double>(rawTime).count();
    ourTimes.push_back(ourSeconds);
    rawTimes.push_back(rawSeconds);
    state.SetIterationTime(reported == Side::Ours ? ourSeconds : rawSeconds);
    oursFirst = !oursFirst;
    next = (next + 1) % 1000;
  }
  auto median = [](std::vector<double>& times) {
    std::nth_element(times.begin(), times.begin() + times.size() / 2, times.end());
    return times[times.size() / 2];
  };
  if (!rawTimes.empty() && median(rawTimes) > 0) state.counters["ours/raw"] = median(ourTimes) / median(rawTimes);
}

void CacheUpdate(benchmark::State& state, Side reported) {
  Database& database = Prepared(static_cast<int>(state.range(0)));
  std::vector<std::string> statements;
  for (size_t i = 0; i < database.samples.size(); ++i) {
    String name, parentPath;
    ncCacheMgr::SplitPath(database.samples[i], name, parentPath);
    statements.push_back(base::ToUtf8(ncCacheMgr::UpdateStatement(name, parentPath, database.infos[i])));
  }
  nsCOMPtr<ncCacheMgr> cache = OpenCache(database);
  sqlite3* db = OpenRawCache(database);
  const size_t count = database.samples.size();
  RunInterleaved(
      state, reported, [&](size_t i) { cache->Update(database.samples[i % count], database.infos[i % count]); },
      [&](size_t i) {
        if (sqlite3_exec(db, statements[i % count].c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
          state.SkipWithError("exec");
      });
  sqlite3_close(db);
  cache->Close();
}

void BM_CacheUpdate(benchmark::State& state) { CacheUpdate(state, Side::Ours); }
void BM_CacheUpdate_Raw(benchmark::State& state) { CacheUpdate(state, Side::Raw); }

// What Update does before SQLite: the statement text and its UTF-8 form.
void BM_CacheUpdateStatementOnly(benchmark::State& state) {
  Database& database = Prepared(static_cast<int>(state.range(0)));
  size_t next = 0;
  for (auto _ : state) {
    String name, parentPath;
    ncCacheMgr::SplitPath(database.samples[next], name, parentPath);
    benchmark::DoNotOptimize(base::ToUtf8(ncCacheMgr::UpdateStatement(name, parentPath, database.infos[next])));
    next = (next + 1) % database.samples.size();
  }
}

void CacheGetInfoByPath(benchmark::State& state, Side reported) {
  Database& database = Prepared(static_cast<int>(state.range(0)));
  std::vector<std::string> statements;
  for (const String& relPath : database.samples) {
    String name, parentPath;
    ncCacheMgr::SplitPath(relPath, name, parentPath);
    statements.push_back(base::ToUtf8(base::Format(
        u"select id, otag, type, isDir, state, serverMTime, clientMTime, size, typeName, attr, viewtype, viewname, "
        u"errcode, execTask, watermark from %s where name='%s' and parentPath='%s' limit 1",
        u"tb_cacheInfo", name, parentPath)));
  }
  nsCOMPtr<ncCacheMgr> cache = OpenCache(database);
  sqlite3* db = OpenRawCache(database);
  const size_t count = database.samples.size();
  RunInterleaved(
      state, reported,
      [&](size_t i) {
        ncCacheInfo info;
        benchmark::DoNotOptimize(cache->GetInfoByPath(database.samples[i % count], info));
      },
      [&](size_t i) {
        char** result = nullptr;
        int rows = 0, columns = 0;
        if (sqlite3_get_table(db, statements[i % count].c_str(), &result, &rows, &columns, nullptr) != SQLITE_OK)
          state.SkipWithError("get_table");
        benchmark::DoNotOptimize(rows);
        sqlite3_free_table(result);
      });
  sqlite3_close(db);
  cache->Close();
}

void BM_CacheGetInfoByPath(benchmark::State& state) { CacheGetInfoByPath(state, Side::Ours); }
void BM_CacheGetInfoByPath_Raw(benchmark::State& state) { CacheGetInfoByPath(state, Side::Raw); }

// Renames top3 (a tenth of the rows) and back, so each iteration is one rename.
void BM_CacheRename(benchmark::State& state) {
  Database& database = Prepared(static_cast<int>(state.range(0)));
  nsCOMPtr<ncCacheMgr> cache = OpenCache(database);
  bool renamed = false;
  for (auto _ : state) {
    if (renamed) cache->Rename(u"top3 renamed", u"top3");
    else cache->Rename(u"top3", u"top3 renamed");
    renamed = !renamed;
  }
  if (renamed) cache->Rename(u"top3 renamed", u"top3");  // after the timed loop
  cache->Close();
}

// Keys: "sjw" (initials of 设计文档, common: the first statement fills the 50 hits) and
// "qzv" (nothing has it: all four statements read the whole table).
void BM_CacheSearch(benchmark::State& state) {
  Database& database = Prepared(static_cast<int>(state.range(0)));
  nsCOMPtr<ncCacheMgr> cache = OpenCache(database);
  const String key = state.range(1) == 0 ? u"sjw" : u"qzv";
  std::vector<ncCacheSearchInfo> hits;
  for (auto _ : state) {
    cache->Search(key, u"[", u"]", hits, 50);
    benchmark::DoNotOptimize(hits.size());
  }
  state.counters["hits"] = static_cast<double>(hits.size());
  cache->Close();
}

const std::vector<int64_t> kSizes = {1000, 10000, 100000};

// Each side checkpoints its write-ahead log every few thousand updates (a spike of tens of
// milliseconds): the update pair runs long enough for many checkpoints on both sides.
BENCHMARK(BM_CacheUpdate)->ArgsProduct({kSizes})->UseManualTime()->MinTime(3)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_CacheUpdate_Raw)->ArgsProduct({kSizes})->UseManualTime()->MinTime(3)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_CacheUpdateStatementOnly)->Arg(1000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_CacheGetInfoByPath)->ArgsProduct({kSizes})->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_CacheGetInfoByPath_Raw)->ArgsProduct({kSizes})->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_CacheRename)->ArgsProduct({kSizes})->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CacheSearch)->ArgsProduct({kSizes, {0, 1}})->Unit(benchmark::kMillisecond);

}  // namespace
