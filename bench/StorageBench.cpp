// The database wrapper against the raw replay of the same insert text, and the initials of
// Latin, level-1 and level-2 names.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "BenchSupport.h"
#include "docmgr/ncDBMgr.h"
#include "docmgr/ncDocUtils.h"
#include "docmgr/ncModuleAllocator.h"
#include "platform/ncPlatform.h"
#include "docmgr/nsCOMPtr.h"

namespace {

const char kCreate[] = "create table if not exists t (id text PRIMARY KEY, name text, size int)";

std::string InsertText(int64_t n) {
  return "replace into t (id, name, size) values ('gns://A1B2C3/" + std::to_string(n) +
         "', 'Quarterly report " + std::to_string(n) + ".docx', '" + std::to_string(n * 1024) + "')";
}

// A thousand inserts that replace their rows from the second pass on, paired with the raw
// replay of the same texts.
void BM_ExecuteSqlInsert(benchmark::State& state) {
  test::TempDir dir;
  nsCOMPtr<ncDBMgr> db(NC_NEW(ncDBMgr));
  db->Open(base::FromUtf8(dir.path() + "/wrapped.db"));
  db->ExecuteSql(u"PRAGMA synchronous=NORMAL;");
  db->ExecuteSql(base::FromUtf8(kCreate));
  sqlite3* raw = bench::OpenRaw(dir.path() + "/raw.db", "NORMAL");
  bench::ExecRaw(raw, kCreate);
  std::vector<std::string> texts;
  std::vector<base::String> wideTexts;
  for (int64_t n = 0; n < 1000; ++n) {
    texts.push_back(InsertText(n));
    wideTexts.push_back(base::FromUtf8(texts.back()));
  }
  bench::RunPaired(
      state, texts.size(), [&](size_t i) { db->ExecuteSql(wideTexts[i]); },
      [&](size_t i) { bench::Replay(raw, {texts[i]}); });
  sqlite3_close(raw);
  db->Close();
}

BENCHMARK(BM_ExecuteSqlInsert)->Iterations(20000)->UseManualTime()->Unit(benchmark::kMicrosecond);

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

// The marking of one search hit's display name (initials matched), the work Search adds to
// each hit after SQLite has returned it.
void BM_MarkMatch(benchmark::State& state) {
  const base::String name = u"设计文档 12345.docx";
  for (auto _ : state) benchmark::DoNotOptimize(ncDocUtils::MarkMatch(name, true, true, u"sjw", u"[", u"]"));
  state.SetItemsProcessed(state.iterations());
}

BENCHMARK(BM_MarkMatch);

}  // namespace
