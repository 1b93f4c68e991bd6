// Peak memory of listing the 100,000 children of one folder (the scan's listing,
// GetScanSubInfos), as a ratio to the size of the result it hands back.
//
// Memory is counted where it is allocated: SQLite's own allocator reports its high-water
// mark (the result table, the statement), and the operators new and delete of this binary
// count the C++ heap (the rows' strings, the map). The result's size is what the map still
// holds after the call.
#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <map>
#include <new>

#include "BenchSupport.h"
#include "docmgr/ncCacheMgr.h"
#include "docmgr/ncModuleAllocator.h"

namespace {

std::atomic<bool> counting{false};
std::atomic<int64_t> liveBytes{0}, peakBytes{0};

void Count(int64_t change) {
  const int64_t live = liveBytes.fetch_add(change, std::memory_order_relaxed) + change;
  int64_t peak = peakBytes.load(std::memory_order_relaxed);
  while (live > peak && !peakBytes.compare_exchange_weak(peak, live, std::memory_order_relaxed)) {
  }
}

// Starts counting the C++ heap from zero.
void StartCounting() {
  liveBytes = 0;
  peakBytes = 0;
  counting = true;
}

}  // namespace

// Out of line, so the compiler does not pair an inlined free with an allocator's new.
__attribute__((noinline)) void* operator new(size_t size) {
  void* memory = std::malloc(size ? size : 1);
  if (!memory) throw std::bad_alloc();
  if (counting.load(std::memory_order_relaxed)) Count(static_cast<int64_t>(malloc_usable_size(memory)));
  return memory;
}

__attribute__((noinline)) void operator delete(void* memory) noexcept {
  if (memory && counting.load(std::memory_order_relaxed)) Count(-static_cast<int64_t>(malloc_usable_size(memory)));
  std::free(memory);
}

void operator delete(void* memory, size_t) noexcept { operator delete(memory); }

namespace {

const int kChildren = 100000;

void BM_ListingPeakMemory(benchmark::State& state) {
  test::TempDir dir;
  nsCOMPtr<ncCacheMgr> cache(NC_NEW(ncCacheMgr));
  cache->Init(base::FromUtf8(dir.path() + "/cache.db"), false);
  cache->BeginBatch();
  for (int i = 0; i < kChildren; ++i) {
    ncCacheInfo info;
    info.id = u"gns://A1B2C3D4E5F60718/" + base::ToString(1000000 + i);
    info.size = 4096 + i;
    info.clientMTime = 1790000000000000 + i;
    cache->Update(u"Projects\\Quarterly reports\\report " + base::ToString(i) + u".docx", info);
  }
  cache->CommitBatch();
  std::map<base::String, ncCacheScanInfo> children;
  cache->GetScanSubInfos(u"Projects\\Quarterly reports", children);  // the page cache is warm from here on
  children.clear();

  double peak = 0, result = 0;
  for (auto _ : state) {
    sqlite3_int64 sqliteNow = 0, sqliteHigh = 0;
    sqlite3_status64(SQLITE_STATUS_MEMORY_USED, &sqliteNow, &sqliteHigh, 1);
    StartCounting();
    cache->GetScanSubInfos(u"Projects\\Quarterly reports", children);
    counting = false;
    sqlite3_int64 sqliteAfter = 0;
    sqlite3_status64(SQLITE_STATUS_MEMORY_USED, &sqliteAfter, &sqliteHigh, 0);
    // The result table and the map are alive together at the end of the listing.
    peak = static_cast<double>(sqliteHigh - sqliteNow + peakBytes.load());
    result = static_cast<double>(liveBytes.load());
    if (children.size() != kChildren) state.SkipWithError("the listing lost children");
    state.PauseTiming();
    children.clear();
    state.ResumeTiming();
  }
  state.counters["peak/result"] = peak / result;
  state.counters["result_MB"] = result / 1e6;
  state.counters["peak_MB"] = peak / 1e6;
  state.counters["children"] = kChildren;
  cache->Close();
}

BENCHMARK(BM_ListingPeakMemory)->Iterations(5)->Unit(benchmark::kMillisecond);

}  // namespace
