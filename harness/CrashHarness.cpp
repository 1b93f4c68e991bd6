// Kills a writer with SIGKILL at random moments and checks what it left behind.
//
//   docmgr-crash-harness [KILLS] [DIRECTORY]
//
// A child process opens the stores of one root and writes without pause: cache items (some
// in batches), folder renames, upload records, sync-log entries, messages and the schema
// version. After each write returns it reports the write to the parent through a pipe. The
// parent kills the child after a random few milliseconds, then runs PRAGMA integrity_check
// on every database and looks for every write ever reported. Exits 1 on any corruption or
// loss, and prints the counts either way. The directory is removed when everything held.
#include <signal.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "HarnessSupport.h"
#include "docmgr/ncCacheMgr.h"
#include "docmgr/ncConfigDBInfo.h"
#include "docmgr/ncLogMgr.h"
#include "docmgr/ncModuleAllocator.h"
#include "docmgr/ncMsgMgr.h"
#include "docmgr/ncRelayMgr.h"
#include "docmgr/nsCOMPtr.h"

namespace {

using harness::Column;

// What the child reports: one line per acknowledged write, "<kind> <key>".
void Report(int fd, char kind, const std::string& key) {
  const std::string line = std::string(1, kind) + " " + key + "\n";
  if (write(fd, line.data(), line.size()) != static_cast<ssize_t>(line.size())) _exit(3);
}

base::String Wide(const std::string& text) { return base::FromUtf8(text); }

[[noreturn]] void Write(const std::string& dir, int round, int fd) {
  try {
    nsCOMPtr<ncCacheMgr> cache(NC_NEW(ncCacheMgr));
    cache->Init(Wide(dir + "/cache.db"), false);
    nsCOMPtr<ncRelayMgr> relay(NC_NEW(ncRelayMgr));
    relay->Init(Wide(dir + "/nonius.db"));
    nsCOMPtr<ncLogMgr> log(NC_NEW(ncLogMgr));
    log->Init(Wide(dir + "/log.db"));
    nsCOMPtr<ncMsgMgr> msg(NC_NEW(ncMsgMgr));
    msg->Init(Wide(dir + "/msg.db"));
    std::unique_ptr<ncConfigDBInfo> config(new ncConfigDBInfo);
    config->Init(Wide(dir + "/root"), false);
    for (int n = 0;; ++n) {
      const std::string key = std::to_string(round) + "_" + std::to_string(n);
      ncCacheInfo info;
      info.id = Wide("gns://CRASH/" + key);
      switch (n % 6) {
        case 0:
          cache->Update(Wide("c" + key), info);
          Report(fd, 'C', "c" + key);
          break;
        case 1: {
          cache->BeginBatch();
          for (int i = 0; i < 20; ++i) cache->Update(Wide("b" + key + "_" + std::to_string(i)), info);
          cache->CommitBatch();
          Report(fd, 'C', "b" + key + "_19");
          break;
        }
        case 2:
          info.isDir = true;
          cache->Update(Wide("r" + key), info);
          cache->Update(Wide("r" + key + "\\f"), info);
          cache->Rename(Wide("r" + key), Wide("n" + key));
          Report(fd, 'R', "n" + key);
          break;
        case 3: {
          ncUploadNonius upload;
          upload.srcPath = Wide("/u" + key);
          upload.uploadId = Wide("id'" + key);
          relay->UpdateUploadNonius(upload);
          Report(fd, 'U', "/u" + key);
          break;
        }
        case 4: {
          ncSyncLogInfo entry;
          entry.relPath = Wide("l" + key);
          log->RecordSyncLog(n % 4, entry);
          ncMsgInfo message;
          message.msgId = Wide("m" + key);
          msg->RecordMsg({message});
          Report(fd, 'L', "l" + key);
          Report(fd, 'M', "m" + key);
          break;
        }
        default:
          config->UpdateVersionNum(round * 100000 + n);
          Report(fd, 'V', std::to_string(round * 100000 + n));
      }
    }
  } catch (const base::Exception& e) {
    std::fprintf(stderr, "writer failed: %s\n", base::ToUtf8(e.getMessage()).c_str());
    _exit(2);
  }
}

struct Check {
  int corrupt = 0;
  int lost = 0;
};

// Integrity of the database and the presence of the reported keys of the given kinds.
void Verify(const std::string& path, const char* sql, const std::set<std::string>& reported, Check& check) {
  sqlite3* db = nullptr;
  if (sqlite3_open(path.c_str(), &db) != SQLITE_OK) {
    ++check.corrupt;
    sqlite3_close(db);
    return;
  }
  const std::set<std::string> integrity = Column(db, "PRAGMA integrity_check");
  if (integrity != std::set<std::string>{"ok"}) {
    std::fprintf(stderr, "%s: integrity_check: %s\n", path.c_str(), integrity.empty() ? "?" : integrity.begin()->c_str());
    ++check.corrupt;
  }
  check.lost += harness::CountMissing(path.c_str(), reported, Column(db, sql));
  sqlite3_close(db);
}

// One version row, the last one reported or one written after it (the kill may come between
// a write and its report).
void VerifyVersion(const std::string& path, const std::string& lastVersion, Check& check) {
  if (lastVersion.empty()) return;
  Verify(path, "select versionId from tb_version", {}, check);
  sqlite3* db = nullptr;
  sqlite3_open(path.c_str(), &db);
  const std::set<std::string> rows = Column(db, "select versionId from tb_version");
  sqlite3_close(db);
  if (rows.size() != 1 || std::atoll(rows.begin()->c_str()) < std::atoll(lastVersion.c_str())) {
    std::fprintf(stderr, "%s: version %s lost\n", path.c_str(), lastVersion.c_str());
    ++check.lost;
  }
}

// Reads the child's reports until it is gone.
void Collect(int fd, std::map<char, std::set<std::string>>& reported, std::string& lastVersion, long& writes) {
  std::string pending;
  char buffer[4096];
  ssize_t size;
  while ((size = read(fd, buffer, sizeof buffer)) > 0) pending.append(buffer, static_cast<size_t>(size));
  size_t start = 0;
  for (size_t end = pending.find('\n'); end != std::string::npos; start = end + 1, end = pending.find('\n', start)) {
    const std::string line = pending.substr(start, end - start);
    if (line.size() < 3) continue;
    ++writes;
    if (line[0] == 'V') lastVersion = line.substr(2);
    else reported[line[0]].insert(line.substr(2));
  }
}

}  // namespace

int main(int argc, char** argv) {
  const int kills = argc > 1 ? std::atoi(argv[1]) : 200;
  char pattern[] = "/tmp/docmgr-crash-XXXXXX";
  const std::string dir = argc > 2 ? argv[2] : (mkdtemp(pattern) ? pattern : ".");
  mkdir((dir + "/root").c_str(), 0700);
  std::mt19937 random(std::random_device{}());
  std::map<char, std::set<std::string>> reported;
  std::string lastVersion;
  long writes = 0;
  Check check;
  for (int round = 0; round < kills; ++round) {
    int fds[2];
    if (pipe(fds) != 0) return 2;
    const pid_t child = fork();
    if (child < 0) return 2;
    if (child == 0) {
      close(fds[0]);
      Write(dir, round, fds[1]);
    }
    close(fds[1]);
    usleep(static_cast<useconds_t>(std::uniform_int_distribution<int>(2000, 120000)(random)));
    kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);
    Collect(fds[0], reported, lastVersion, writes);
    close(fds[0]);
    if (!(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL)) {
      std::fprintf(stderr, "round %d: the writer ended by itself (status %d)\n", round, status);
      ++check.corrupt;
    }
    Verify(dir + "/cache.db", "select name from tb_cacheInfo where parentPath = ''", reported['C'], check);
    Verify(dir + "/cache.db", "select parentPath from tb_cacheInfo where name = 'f'", reported['R'], check);
    Verify(dir + "/nonius.db", "select srcPath from tb_upload_nonius", reported['U'], check);
    Verify(dir + "/log.db", "select relPath from tb_synclog", reported['L'], check);
    Verify(dir + "/msg.db", "select msgId from tb_msg", reported['M'], check);
    VerifyVersion(dir + "/root/.kestrove.cache/config.db", lastVersion, check);
  }
  std::printf("kills: %d, acknowledged writes: %ld, corrupt databases: %d, lost writes: %d, directory: %s\n", kills,
              writes, check.corrupt, check.lost, dir.c_str());
  const bool sound = check.corrupt == 0 && check.lost == 0;
  if (sound && argc <= 2) std::filesystem::remove_all(dir);  // kept for a look when something failed
  return sound ? 0 : 1;
}
