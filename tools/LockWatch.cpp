#include "LockWatch.h"

#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>

#include "JsonWriter.h"

namespace {

using Clock = std::chrono::steady_clock;

std::atomic<Clock::rep> lastProgress{Clock::now().time_since_epoch().count()};

const char* const kDatabases[] = {"cache.db", "nonius.db", "log.db", "msg.db", "config.db"};

}  // namespace

// SQLite's lock bytes: in the shared-memory file of a WAL database the write, checkpoint
// and recovery locks (offsets 120-122); in the database file the pending and reserved bytes.
bool LockWatch::heldByOther(const std::string& file, off_t start, off_t length, long& pid) {
  // Closing any descriptor of a file drops every POSIX lock this process holds on it,
  // SQLite's included, so the descriptors stay open until the watcher ends.
  auto fd = descriptors_.find(file);
  if (fd == descriptors_.end()) {
    const int opened = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
    if (opened < 0) return false;
    fd = descriptors_.emplace(file, opened).first;
  }
  struct flock probe = {};
  probe.l_type = F_WRLCK;
  probe.l_whence = SEEK_SET;
  probe.l_start = start;
  probe.l_len = length;
  const bool held = ::fcntl(fd->second, F_GETLK, &probe) == 0 && probe.l_type != F_UNLCK;
  if (held) pid = static_cast<long>(probe.l_pid);
  return held;
}

LockWatch::LockWatch(int timeoutSeconds, bool json) : timeoutSeconds_(timeoutSeconds), json_(json) {
  thread_ = std::thread(&LockWatch::run, this);
}

LockWatch::~LockWatch() {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    stopping_ = true;
  }
  wake_.notify_all();
  thread_.join();
  for (const auto& fd : descriptors_) ::close(fd.second);
}

void LockWatch::watch(const std::string& dataDirectory) {
  std::lock_guard<std::mutex> lock(mutex_);
  dataDirectory_ = dataDirectory;
  touch();
}

void LockWatch::touch() { lastProgress = Clock::now().time_since_epoch().count(); }

std::string LockWatch::lockedDatabase(long& pid) {
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
    long pid = 0;
    const std::string database = waited >= 1 && !dataDirectory_.empty() ? lockedDatabase(pid) : std::string();
    if (database.empty()) {
      lastReport = -1;
      continue;
    }
    if (timeoutSeconds_ > 0 && waited >= timeoutSeconds_) {
      std::fflush(stdout);
      if (json_)
        JsonWriter().beginObject().member("error", "gave up waiting for " + database + ": locked by another process")
            .member("database", database).member("pid", static_cast<int64_t>(pid)).member("waitedSeconds", waited)
            .endObject().print();
      std::fprintf(stderr, "docmgr-cli: gave up waiting for %s after %d s (--timeout); locked by another process (pid %ld)\n",
                   database.c_str(), waited, pid);
      std::fflush(stdout);
      ::_exit(1);
    }
    // First after a second, then every five seconds.
    if (lastReport < 0 || waited - lastReport >= 5) {
      report(database, pid, waited);
      lastReport = waited;
    }
  }
}

void LockWatch::report(const std::string& database, long pid, int waitedSeconds) {
  if (waitedSeconds <= 1)
    std::fprintf(stderr, "docmgr-cli: waiting for %s: locked by another process (pid %ld)\n", database.c_str(), pid);
  else
    std::fprintf(stderr, "docmgr-cli: still waiting for %s: locked by another process, %d s so far\n", database.c_str(),
                 waitedSeconds);
}
