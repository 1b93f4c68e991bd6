// Eight threads on the stores of one root at once, for ThreadSanitizer and for lost writes.
//
//   docmgr-stress-harness [SECONDS] [DIRECTORY]
//
// Cache writers, a batch writer, a thread whose renames fail inside their transaction, a
// thread that deletes and clears version tags of its own rows, a searcher, a sync-log
// writer and an upload-record writer share one connection per store. Afterwards every write
// a call acknowledged must be stored: a statement of another thread that ran inside a
// failed rename's transaction would have been rolled back with it. Exits 1 on any loss.
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "HarnessSupport.h"
#include "docmgr/ncCacheMgr.h"
#include "docmgr/ncLogMgr.h"
#include "docmgr/ncModuleAllocator.h"
#include "docmgr/ncRelayMgr.h"
#include "docmgr/nsCOMPtr.h"

namespace {

using base::String;

String Wide(const std::string& text) { return base::FromUtf8(text); }

struct Stores {
  nsCOMPtr<ncCacheMgr> cache;
  nsCOMPtr<ncRelayMgr> relay;
  nsCOMPtr<ncLogMgr> log;
};

// What one thread wrote and was told was written; read only after the threads end.
struct Acknowledged {
  std::set<std::string> cache, uploads, log;
  long failures = 0;  // calls that threw when they should not have
  long refused = 0;   // renames that failed as intended
};

ncCacheInfo Item(const std::string& key, bool isDir = false) {
  ncCacheInfo info;
  info.id = Wide("gns://STRESS/" + key);
  info.isDir = isDir;
  return info;
}

using Worker = std::function<void(Stores&, int, long, Acknowledged&)>;

void WriteCache(Stores& s, int thread, long n, Acknowledged& done) {
  const std::string name = "w" + std::to_string(thread) + "_" + std::to_string(n);
  s.cache->Update(Wide(name), Item(name));
  done.cache.insert(name);
}

void WriteBatch(Stores& s, int thread, long n, Acknowledged& done) {
  std::vector<std::string> names;
  s.cache->BeginBatch();
  for (int i = 0; i < 10; ++i) {
    names.push_back("b" + std::to_string(thread) + "_" + std::to_string(n) + "_" + std::to_string(i));
    // Half through the kept statement the other threads' bulk writes share.
    i % 2 ? s.cache->Update(Wide(names.back()), Item(names.back()))
          : s.cache->UpdateBulk(Wide(names.back()), Item(names.back()));
  }
  s.cache->CommitBatch();
  done.cache.insert(names.begin(), names.end());
}

// The folder's child collides with a stale row under the new name, after the folder's own
// row has already been renamed inside the transaction.
void FailRename(Stores& s, int, long n, Acknowledged& done) {
  if (n == 0) {
    s.cache->Update(u"rf", Item("rf", true));
    s.cache->Update(u"rf\\x.txt", Item("rf\\x.txt"));
    s.cache->Update(u"rg\\x.txt", Item("rg\\x.txt"));
  }
  try {
    s.cache->Rename(u"rf", u"rg");
  } catch (const base::Exception&) {
    ++done.refused;
    return;
  }
  ++done.failures;  // the rename should not have succeeded
}

void DeleteAndClear(Stores& s, int thread, long n, Acknowledged&) {
  const std::string folder = "d" + std::to_string(thread) + "_" + std::to_string(n);
  s.cache->Update(Wide(folder), Item(folder, true));
  s.cache->Update(Wide(folder + "\\f"), Item(folder + "\\f"));
  s.cache->UpdateOtag(Wide(folder + "\\f"), String());
  s.cache->Delete(Wide(folder), false);
}

void Search(Stores& s, int, long, Acknowledged&) {
  std::vector<ncCacheSearchInfo> hits;
  s.cache->Search(u"w1", u"[", u"]", hits, 20);
  ncCacheInfo info;
  s.cache->GetInfoByPath(u"rf", info);
}

void WriteLog(Stores& s, int thread, long n, Acknowledged& done) {
  const std::string path = "l" + std::to_string(thread) + "_" + std::to_string(n);
  ncSyncLogInfo entry;
  entry.relPath = Wide(path);
  // A type without a cap, so nothing is trimmed.
  n % 2 ? s.log->RecordSyncLog(7, entry) : s.log->RecordSyncLogBulk(7, entry);
  done.log.insert(path);
}

void WriteUpload(Stores& s, int thread, long n, Acknowledged& done) {
  const std::string path = "/u" + std::to_string(thread) + "_" + std::to_string(n);
  ncUploadNonius upload;
  upload.srcPath = Wide(path);
  s.relay->UpdateUploadNonius(upload);
  done.uploads.insert(path);
}

void Run(Stores& stores, const Worker& work, int thread, const std::atomic<bool>& stop, Acknowledged& done) {
  for (long n = 0; !stop; ++n) {
    try {
      work(stores, thread, n, done);
    } catch (const base::Exception& e) {
      std::fprintf(stderr, "thread %d: %s\n", thread, base::ToUtf8(e.getMessage()).c_str());
      ++done.failures;
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  const int seconds = argc > 1 ? std::atoi(argv[1]) : 60;
  char pattern[] = "/tmp/docmgr-stress-XXXXXX";
  const std::string dir = argc > 2 ? argv[2] : (mkdtemp(pattern) ? pattern : ".");
  Stores stores{NC_NEW(ncCacheMgr), NC_NEW(ncRelayMgr), NC_NEW(ncLogMgr)};
  stores.cache->Init(Wide(dir + "/cache.db"), false);
  stores.relay->Init(Wide(dir + "/nonius.db"));
  stores.log->Init(Wide(dir + "/log.db"));

  const std::vector<Worker> workers = {WriteCache, WriteCache, WriteBatch, FailRename,
                                       DeleteAndClear, Search, WriteLog, WriteUpload};
  std::vector<Acknowledged> done(workers.size());
  std::atomic<bool> stop{false};
  std::vector<std::thread> threads;
  for (size_t i = 0; i < workers.size(); ++i)
    threads.emplace_back(Run, std::ref(stores), std::cref(workers[i]), static_cast<int>(i), std::cref(stop),
                         std::ref(done[i]));
  std::this_thread::sleep_for(std::chrono::seconds(seconds));
  stop = true;
  for (std::thread& thread : threads) thread.join();

  Acknowledged all;
  long acknowledged = 0;
  for (const Acknowledged& d : done) {
    all.cache.insert(d.cache.begin(), d.cache.end());
    all.uploads.insert(d.uploads.begin(), d.uploads.end());
    all.log.insert(d.log.begin(), d.log.end());
    all.failures += d.failures;
    all.refused += d.refused;
    acknowledged += static_cast<long>(d.cache.size() + d.uploads.size() + d.log.size());
  }
  using harness::Column;
  const int lost =
      harness::CountMissing("cache", all.cache, Column(stores.cache->GetDBMgr()->GetHandle(), "select name from tb_cacheInfo")) +
      harness::CountMissing("uploads", all.uploads,
                            Column(stores.relay->GetDBMgr()->GetHandle(), "select srcPath from tb_upload_nonius")) +
      harness::CountMissing("log", all.log, Column(stores.log->GetDBMgr()->GetHandle(), "select relPath from tb_synclog"));
  stores.cache->Close();
  stores.relay->Close();
  stores.log->Close();
  std::printf("seconds: %d, threads: %zu, acknowledged writes: %ld, lost: %d, failed renames: %ld, unexpected failures: %ld\n",
              seconds, workers.size(), acknowledged, lost, all.refused, all.failures);
  const bool sound = lost == 0 && all.failures == 0 && all.refused > 0;
  if (sound && argc <= 2) std::filesystem::remove_all(dir);
  return sound ? 0 : 1;
}
