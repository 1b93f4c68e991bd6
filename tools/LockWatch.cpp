#include "LockWatch.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>

#include "CliContext.h"
#include "JsonWriter.h"

namespace {

using Clock = std::chrono::steady_clock;

std::atomic<Clock::rep> lastProgress{Clock::now().time_since_epoch().count()};

const char* const kDatabases[] = {"cache.db", "nonius.db", "log.db", "msg.db", "config.db"};

}  // namespace

// SQLite's lock bytes: in the shared-memory file of a WAL database the write, checkpoint
// and recovery locks (offsets 120-122); in the database file the pending and reserved bytes.
bool LockWatch::heldByOther(const std::string& file, int64_t start, int64_t length, int64_t& pid) {
  auto probe = probes_.find(file);
  if (probe == probes_.end() || !probe->second->isOpen()) {
    std::unique_ptr<ncFileLockProbe> opened(new ncFileLockProbe(Wide(file)));
    if (!opened->isOpen()) return false;  // not there yet: asked again next time
    probe = probes_.insert_or_assign(file, std::move(opened)).first;
  }
  return probe->second->heldByOther(start, length, pid);
}

LockWatch::LockWatch(int timeoutSeconds, bool json) : timeoutSeconds_(timeoutSeconds), json_(json) {
  if (!ncFileLockProbe::isSupported()) {
    if (timeoutSeconds_ > 0)
      std::fprintf(stderr, "docmgr-cli: --timeout has no effect here: this system cannot tell which process "
                           "holds a database, so waits are not reported\n");
    return;
  }
  thread_ = std::thread(&LockWatch::run, this);
}

LockWatch::~LockWatch() {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    stopping_ = true;
  }
  wake_.notify_all();
  if (thread_.joinable()) thread_.join();
}

void LockWatch::watch(const std::string& dataDirectory) {
  std::lock_guard<std::mutex> lock(mutex_);
  dataDirectory_ = dataDirectory;
  touch();
}

void LockWatch::touch() { lastProgress = Clock::now().time_since_epoch().count(); }

std::string LockWatch::lockedDatabase(int64_t& pid) {
  for (const char* name : kDatabases) {
    const std::string file = dataDirectory_ + "/" + name;
    if (heldByOther(file + "-shm", 120, 3, pid) || heldByOther(file, 0x40000000, 2, pid)) return name;
  }
  return std::string();
}

void LockWatch::run() {
  std::unique_lock<std::mutex> lock(mutex_);
  int lastReport = -1;
  while (!wake_.wait_for(lock, std::chrono::milliseconds(250), [this] { return stopping_; })) {
    const auto idle = Clock::now() - Clock::time_point(Clock::duration(lastProgress.load()));
    const int waited = static_cast<int>(std::chrono::duration_cast<std::chrono::seconds>(idle).count());
    int64_t pid = 0;
    const std::string database = waited >= 1 && !dataDirectory_.empty() ? lockedDatabase(pid) : std::string();
    if (database.empty()) {
      lastReport = -1;
      continue;
    }
    if (timeoutSeconds_ > 0 && waited >= timeoutSeconds_) {
      std::fflush(stdout);
      if (json_)
        JsonWriter().beginObject().member("error", "gave up waiting for " + database + ": locked by another process")
            .member("database", database).member("pid", pid).member("waitedSeconds", waited)
            .endObject().print();
      std::fprintf(stderr, "docmgr-cli: gave up waiting for %s after %d s (--timeout); locked by another process (pid %lld)\n",
                   database.c_str(), waited, static_cast<long long>(pid));
      std::fflush(stdout);
      std::_Exit(1);
    }
    // First after a second, then every five seconds.
    if (lastReport < 0 || waited - lastReport >= 5) {
      report(database, pid, waited);
      lastReport = waited;
    }
  }
}

void LockWatch::report(const std::string& database, int64_t pid, int waitedSeconds) {
  if (waitedSeconds <= 1)
    std::fprintf(stderr, "docmgr-cli: waiting for %s: locked by another process (pid %lld)\n", database.c_str(),
                 static_cast<long long>(pid));
  else
    std::fprintf(stderr, "docmgr-cli: still waiting for %s: locked by another process, %d s so far\n", database.c_str(),
                 waitedSeconds);
}
