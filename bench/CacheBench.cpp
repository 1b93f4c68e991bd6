// The document cache at 1k, 10k, 100k and 1M rows, every operation paired with the raw
// replay of the statements it ran (see BenchSupport.h): Update, Update of a thousand rows in
// one batch, GetInfoByPath, Search with and without hits, subtree Rename and Delete, and the
// unsynchronised-state queries.
//
// The rows: ten top folders, each with (rows / 1000) sub-folders holding the files, whose
// names mix Latin and Chinese words (so their initials differ from the names). One row in 50
// is unsynchronised.
#include <benchmark/benchmark.h>

#include <functional>
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

// The subtree that Delete removes and the benchmark puts back: one sub-folder, 100 files.
const char16_t kDeletedFolder[] = u"top3\\sub 1";
const char kDeletedRows[] =
    "(name = 'sub 1' and parentPath = 'top3') or parentPath = 'top3\\sub 1' or parentPath like 'top3\\sub 1\\%'";

// A database of the given size on two files, ours and the raw side's copy.
struct Database {
  explicit Database(int rows) : rows(rows) {
    ourFile = dir.path() + "/cache.db";
    rawFile = dir.path() + "/raw.db";
    nsCOMPtr<ncCacheMgr> cache(NC_NEW(ncCacheMgr));
    cache->Init(base::FromUtf8(ourFile), false);
    cache->BeginBatch();
    Fill(*cache);
    cache->CommitBatch();
    cache->Close();
    bench::CopyFile(ourFile, rawFile);
  }

  void Fill(ncCacheMgr& cache) {
    const int subs = rows / 1000 > 0 ? rows / 1000 : 1;
    int id = 0;
    auto add = [&](const String& relPath, ncCacheInfo info) {
      info.id = u"gns://" + base::ToString(++id);
      info.otag = u"9F3A" + base::ToString(id);
      cache.Update(relPath, info);
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
      if (i % subs == 0 && samples.size() < 1000) {
        samples.push_back(relPath);
        infos.push_back(file);
      }
    }
  }

  const int rows;
  test::TempDir dir;
  std::string ourFile, rawFile;
  std::vector<String> samples;  // relative paths of rows spread over the table
  std::vector<ncCacheInfo> infos;
};

// The database of one size; the previous size's files go when the next size is asked for.
Database& Prepared(int rows) {
  static std::unique_ptr<Database> database;
  if (!database || database->rows != rows) {
    database.reset();
    database.reset(new Database(rows));
  }
  return *database;
}

// Our store and the raw connection, both open on their own copy.
struct Sides {
  explicit Sides(benchmark::State& state) : database(Prepared(static_cast<int>(state.range(0)))) {
    cache = NC_NEW(ncCacheMgr);
    cache->Init(base::FromUtf8(database.ourFile), false);
    raw = bench::OpenRaw(database.rawFile, "NORMAL");
  }
  ~Sides() {
    sqlite3_close(raw);
    cache->Close();
  }
  // The statements our call ran for each variant, recorded once before the timed loop.
  std::vector<std::vector<std::string>> Record(size_t variants, const std::function<void(size_t)>& ours) {
    std::vector<std::vector<std::string>> statements;
    for (size_t variant = 0; variant < variants; ++variant) {
      bench::StatementRecorder recorder;
      ours(variant);
      statements.push_back(recorder.take());
    }
    return statements;
  }
  // Runs the pair for calls that leave the table as they found it.
  void RunRepeatable(benchmark::State& state, size_t variants, const std::function<void(size_t)>& ours) {
    const auto statements = Record(variants, ours);
    bench::RunPaired(state, variants, ours, [&](size_t variant) { bench::Replay(raw, statements[variant]); });
  }

  Database& database;
  nsCOMPtr<ncCacheMgr> cache;
  sqlite3* raw = nullptr;
};

void CacheUpdate(benchmark::State& state) {
  Sides sides(state);
  const Database& database = sides.database;
  sides.RunRepeatable(state, database.samples.size(),
                      [&](size_t i) { sides.cache->Update(database.samples[i], database.infos[i]); });
}

// A thousand rows spread over the table, rewritten in one batch; the raw side runs the same
// statements between the same begin and commit.
void CacheUpdateBatch(benchmark::State& state) {
  Sides sides(state);
  const Database& database = sides.database;
  sides.RunRepeatable(state, 1, [&](size_t) {
    sides.cache->BeginBatch();
    for (size_t i = 0; i < database.samples.size(); ++i) sides.cache->Update(database.samples[i], database.infos[i]);
    sides.cache->CommitBatch();
  });
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * database.samples.size()));
}

void CacheGetInfoByPath(benchmark::State& state) {
  Sides sides(state);
  const Database& database = sides.database;
  sides.RunRepeatable(state, database.samples.size(), [&](size_t i) {
    ncCacheInfo info;
    benchmark::DoNotOptimize(sides.cache->GetInfoByPath(database.samples[i], info));
  });
}

// "sjw" (initials of 设计文档, common: the first statement fills the 50 hits) and "qzv"
// (nothing has it: all four statements read the whole table).
void CacheSearch(benchmark::State& state, const String& key) {
  Sides sides(state);
  std::vector<ncCacheSearchInfo> hits;
  sides.RunRepeatable(state, 1, [&](size_t) { sides.cache->Search(key, u"[", u"]", hits, 50); });
  state.counters["hits"] = static_cast<double>(hits.size());
}

void CacheUnsyncCountAll(benchmark::State& state) {
  Sides sides(state);
  sides.RunRepeatable(state, 1, [&](size_t) { benchmark::DoNotOptimize(sides.cache->Unsync_CountUnexec(u"")); });
}

void CacheUnsyncCountSubtree(benchmark::State& state) {
  Sides sides(state);
  sides.RunRepeatable(state, 1, [&](size_t) { benchmark::DoNotOptimize(sides.cache->Unsync_CountUnexec(u"top3")); });
}

void CacheUnsyncList(benchmark::State& state) {
  Sides sides(state);
  sides.RunRepeatable(state, 1, [&](size_t) {
    std::vector<ncCacheUnexecInfo> infos;
    sides.cache->Unsync_GetUnexecInfoVec(u"top3", infos, 0);
    benchmark::DoNotOptimize(infos.size());
  });
}

void CacheUnsyncIsPath(benchmark::State& state) {
  Sides sides(state);
  const Database& database = sides.database;
  sides.RunRepeatable(state, database.samples.size(), [&](size_t i) {
    benchmark::DoNotOptimize(sides.cache->Unsync_IsPathUnsync(database.samples[i], false));
  });
}

// Renames top3 (a tenth of the rows) and back: variant 0 renames, variant 1 renames back.
void CacheRename(benchmark::State& state) {
  Sides sides(state);
  auto ours = [&](size_t variant) {
    if (variant == 0) sides.cache->Rename(u"top3", u"top3 renamed");
    else sides.cache->Rename(u"top3 renamed", u"top3");
  };
  const auto statements = sides.Record(2, ours);
  auto raw = [&](size_t variant) { bench::Replay(sides.raw, statements[variant]); };
  bench::RunPaired(state, 2, ours, raw);
  if (state.iterations() % 2 == 1) {  // both sides are renamed: back, untimed
    ours(1);
    raw(1);
  }
}

// Deletes one sub-folder with its 100 files; a side connection on each file puts the rows
// back, untimed, after every pair.
void CacheDeleteSubtree(benchmark::State& state) {
  Sides sides(state);
  std::vector<sqlite3*> restorers;
  for (const std::string& file : {sides.database.ourFile, sides.database.rawFile}) {
    restorers.push_back(bench::OpenRaw(file, "NORMAL"));
    bench::ExecRaw(restorers.back(),
                   std::string("create temp table saved as select * from tb_cacheInfo where ") + kDeletedRows);
  }
  auto restore = [&] {
    for (sqlite3* restorer : restorers) bench::ExecRaw(restorer, "insert or replace into tb_cacheInfo select * from saved");
  };
  auto ours = [&](size_t) { sides.cache->Delete(kDeletedFolder, false); };
  const auto statements = sides.Record(1, ours);
  restore();
  bench::RunPaired(
      state, 1, ours, [&](size_t) { bench::Replay(sides.raw, statements[0]); }, restore);
  for (sqlite3* restorer : restorers) sqlite3_close(restorer);
}

// Iterations for the calls that read or rewrite a large part of the table.
int64_t HeavyIterations(int64_t rows) { return rows >= 1000000 ? 5 : rows >= 100000 ? 9 : 21; }

// Size by size, so that one size's database is built once and dropped before the next.
bool RegisterCacheBenchmarks() {
  struct Definition {
    const char* name;
    std::function<void(benchmark::State&)> run;
    bool heavy;
  };
  const std::vector<Definition> definitions = {
      {"BM_CacheUpdate", CacheUpdate, false},
      {"BM_CacheUpdateBatch1000", CacheUpdateBatch, false},
      {"BM_CacheGetInfoByPath", CacheGetInfoByPath, false},
      {"BM_CacheSearchHit", [](benchmark::State& state) { CacheSearch(state, u"sjw"); }, false},
      {"BM_CacheSearchNoHit", [](benchmark::State& state) { CacheSearch(state, u"qzv"); }, true},
      {"BM_CacheRenameSubtree", CacheRename, true},
      {"BM_CacheDeleteSubtree", CacheDeleteSubtree, true},
      {"BM_CacheUnsyncCountAll", CacheUnsyncCountAll, true},
      {"BM_CacheUnsyncCountSubtree", CacheUnsyncCountSubtree, true},
      {"BM_CacheUnsyncList", CacheUnsyncList, true},
      {"BM_CacheUnsyncIsPath", CacheUnsyncIsPath, false},
  };
  for (int64_t rows : {1000, 10000, 100000, 1000000})
    for (const Definition& definition : definitions) {
      benchmark::internal::Benchmark* benchmark =
          benchmark::RegisterBenchmark(definition.name, definition.run)->Arg(rows)->UseManualTime();
      if (definition.heavy) benchmark->Iterations(HeavyIterations(rows))->Unit(benchmark::kMillisecond);
      else benchmark->MinTime(0.3)->Unit(benchmark::kMicrosecond);
    }
  return true;
}

const bool registered = RegisterCacheBenchmarks();

}  // namespace
