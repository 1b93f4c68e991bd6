// Tells the person at the terminal when a statement of the tool waits on a database that
// another process has locked, and ends the wait at the tool's own --timeout.
//
// The stores' connections live inside the module with the component's busy timeout; the
// interfaces offer no way to shorten it or interrupt a statement. So a watcher thread in
// the tool looks from outside: when the tool has made no progress for a second it asks the
// system (ncFileLockProbe) whether another process holds the write lock of one of the root's
// databases, says so on stderr, and keeps saying how long. Past --timeout it ends the
// process: a statement that waits has written nothing, and SQLite rolls back whatever
// transaction was open when the database is next opened, so nothing is half-written.
// Where the system cannot be asked, the watcher says so once when --timeout is given and
// otherwise stays silent: it never reports a lock it has not seen.
#pragma once

#include <atomic>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "platform/ncFileLockProbe.h"

class LockWatch {
 public:
  // timeoutSeconds 0: wait as long as the component does.
  LockWatch(int timeoutSeconds, bool json);
  ~LockWatch();
  LockWatch(const LockWatch&) = delete;
  LockWatch& operator=(const LockWatch&) = delete;

  // The data directory whose databases are watched ("" for none).
  void watch(const std::string& dataDirectory);
  // The tool made progress: the waiting clock starts again.
  static void touch();

 private:
  void run();
  // The database of the watched directory another process holds locked ("" for none), and
  // that process's id.
  std::string lockedDatabase(int64_t& pid);
  bool heldByOther(const std::string& file, int64_t start, int64_t length, int64_t& pid);
  void report(const std::string& database, int64_t pid, int waitedSeconds);

  const int timeoutSeconds_;
  const bool json_;
  std::mutex mutex_;
  std::condition_variable wake_;
  bool stopping_ = false;
  std::string dataDirectory_;
  std::map<std::string, std::unique_ptr<ncFileLockProbe>> probes_;  // open for the watcher's life
  std::thread thread_;
};
