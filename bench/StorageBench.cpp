// The database wrapper against raw sqlite3_exec of the same insert text, and the initials of
// Latin, level-1 and level-2 names.
#include <benchmark/benchmark.h>

#include "BenchSupport.h"
#include "docmgr/ncDBMgr.h"
#include "docmgr/ncDocUtils.h"
#include "docmgr/ncModuleAllocator.h"
#include "platform/ncPlatform.h"
#include "xpcom/nsCOMPtr.h"

namespace {

const char kCreate[] = "create table if not exists t (id text PRIMARY KEY, name text, size int)";

std::string InsertText(int64_t n) {
  return "replace into t (id, name, size) values ('gns://A1B2C3/" + std::to_string(n) +
         "', 'Quarterly report " + std::to_string(n) + ".docx', '" + std::to_string(n * 1024) + "')";
}

void BM_ExecuteSqlInsert(benchmark::State& state) {
  bench::TempDir dir;
  nsCOMPtr<ncDBMgr> db(NC_NEW(ncDBMgr));
  db->Open(base::FromUtf8(dir.path() + "/wrapped.db"));
  db->ExecuteSql(u"PRAGMA synchronous=NORMAL;");
  db->ExecuteSql(base::FromUtf8(kCreate));
  int64_t n = 0;
  for (auto _ : state) {
    state.PauseTiming();
    const base::String sql = base::FromUtf8(InsertText(n++));
    state.ResumeTiming();
    db->ExecuteSql(sql);
  }
  db->Close();
}

void BM_ExecuteSqlInsert_Raw(benchmark::State& state) {
  bench::TempDir dir;
  sqlite3* db = bench::OpenRaw(dir.path() + "/raw.db", "NORMAL");
  bench::ExecRaw(db, kCreate);
  int64_t n = 0;
  for (auto _ : state) {
    state.PauseTiming();
    const std::string sql = InsertText(n++);
    state.ResumeTiming();
    sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr);
  }
  sqlite3_close(db);
}

BENCHMARK(BM_ExecuteSqlInsert)->Iterations(20000);
BENCHMARK(BM_ExecuteSqlInsert_Raw)->Iterations(20000);

base::String Level2Name() {
  std::string bytes;
  for (unsigned char b2 = 0xA1; b2 < 0xA1 + 12; ++b2) bytes += {char(0xE0), char(b2)};
  return platform::FromCodePage936(bytes);
}

void BM_GetAcronym(benchmark::State& state) {
  const base::String names[] = {u"Quarterly financial report (final).docx", u"项目设计文档与会议纪要汇总.docx",
                                Level2Name()};
  const base::String& name = names[state.range(0)];
  for (auto _ : state) benchmark::DoNotOptimize(ncDocUtils::GetAcronym(name));
  state.SetItemsProcessed(state.iterations());
  state.SetLabel(state.range(0) == 0 ? "latin" : state.range(0) == 1 ? "level-1" : "level-2");
}

BENCHMARK(BM_GetAcronym)->Arg(0)->Arg(1)->Arg(2);

}  // namespace
