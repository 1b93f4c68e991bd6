// The raw baseline of a first `docmgr-cli scan ROOT`: the same walk and the same writes
// (one cache row per file and folder with the same columns, the document-id tag on every
// file, one sync-log entry per item) done the way a careful raw SQLite program does them:
// prepared statements, one transaction over cache.db with log.db attached.
//
// Only the initials of a name come from the component (ncDocUtils::GetAcronym): they are
// part of the row, and computing them is the same work on both sides.
//
// usage: docmgr-scan-baseline ROOT
#include <dirent.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <algorithm>
#include <cstdio>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "text/String.h"
#include "docmgr/ncDocUtils.h"

using base::String;

namespace {

const char kDataDirectory[] = ".kestrove.cache";
const char kDocIdAttribute[] = "user.kestrove.docId";

const char* const kCacheSchema[] = {
    "PRAGMA busy_timeout=300000;", "PRAGMA cache_size=8000;", "PRAGMA journal_mode=WAL;",
    "PRAGMA wal_autocheckpoint=10000;", "PRAGMA synchronous=NORMAL;",
    "create table if not exists tb_cacheInfo (id text PRIMARY KEY, otag text, isDir int, state int, serverMTime text, "
    "clientMTime text, size text, name text, parentPath text, acronym text, type int, typeName text, viewType int, "
    "viewName text, parentId text, attr int, errcode int, execTask int, watermark int)",
    "create unique index if not exists tb_cacheInfo_name_parent_path_idx on tb_cacheInfo(name, parentPath)",
    "create index if not exists tb_cacheInfo_parent_path_idx on tb_cacheInfo(parentPath)",
    "create index if not exists tb_cacheInfo_parent_id_idx on tb_cacheInfo(parentId)"};

const char* const kLogSchema[] = {
    "PRAGMA log.journal_mode=WAL;", "PRAGMA log.synchronous=OFF;",
    "create table if not exists log.tb_synclog ( id INTEGER PRIMARY KEY, logType int, taskType int, relPath text, "
    "newName text, size int, time int, remark text, visible bool)",
    "create table if not exists log.tb_logstat ( logType int PRIMARY KEY, logCount int)",
    "insert or ignore into log.tb_logstat values ('0', 0)", "insert or ignore into log.tb_logstat values ('1', 0)",
    "insert or ignore into log.tb_logstat values ('2', 0)", "insert or ignore into log.tb_logstat values ('3', 0)",
    "create trigger if not exists log.trg_cleanlog after insert on tb_synclog when (select logCount from tb_logstat "
    "where logType = new.logType) >= 50000 begin delete from tb_synclog where id in (select id from tb_synclog "
    "where logType = new.logType limit 25000); end",
    "create trigger if not exists log.trg_insertlog after insert on tb_synclog begin update tb_logstat set logCount = "
    "logCount + 1 where logType = new.logType; end",
    "create trigger if not exists log.trg_deletelog after delete on tb_synclog begin update tb_logstat set logCount = "
    "logCount - 1 where logType = old.logType; end"};

struct Entry {
  std::string path;     // absolute
  std::string relPath;  // "\" separators
  bool isDir;
  int64_t mtime;  // microseconds since 1970
  int64_t size;
};

// Parents before children, names in byte order; links and special files left out.
void Collect(const std::string& folder, const std::string& relFolder, std::vector<Entry>& entries) {
  DIR* dir = ::opendir(folder.c_str());
  if (!dir) return;
  std::vector<std::string> names;
  while (const dirent* item = ::readdir(dir)) {
    const std::string name = item->d_name;
    if (name != "." && name != ".." && name != kDataDirectory) names.push_back(name);
  }
  ::closedir(dir);
  std::sort(names.begin(), names.end());
  for (const std::string& name : names) {
    const std::string path = folder + "/" + name, relPath = relFolder.empty() ? name : relFolder + "\\" + name;
    struct stat info;
    if (::lstat(path.c_str(), &info) != 0 || (!S_ISDIR(info.st_mode) && !S_ISREG(info.st_mode))) continue;
    const int64_t mtime = static_cast<int64_t>(info.st_mtim.tv_sec) * 1000000 + info.st_mtim.tv_nsec / 1000;
    const bool isDir = S_ISDIR(info.st_mode);
    entries.push_back({path, relPath, isDir, mtime, isDir ? 0 : static_cast<int64_t>(info.st_size)});
    if (isDir) Collect(path, relPath, entries);
  }
}

void Exec(sqlite3* db, const char* sql) {
  char* error = nullptr;
  if (sqlite3_exec(db, sql, nullptr, nullptr, &error) != SQLITE_OK) {
    const std::string message = error ? error : "error";
    sqlite3_free(error);
    throw std::runtime_error(message + " in " + sql);
  }
}

class Statement {
 public:
  Statement(sqlite3* db, const char* sql) : db_(db) {
    if (sqlite3_prepare_v2(db, sql, -1, &statement_, nullptr) != SQLITE_OK) throw std::runtime_error(sqlite3_errmsg(db));
  }
  ~Statement() { sqlite3_finalize(statement_); }
  Statement& text(int index, const std::string& value) {
    sqlite3_bind_text(statement_, index, value.data(), static_cast<int>(value.size()), SQLITE_TRANSIENT);
    return *this;
  }
  Statement& number(int index, int64_t value) {
    sqlite3_bind_int64(statement_, index, value);
    return *this;
  }
  void run() {
    if (sqlite3_step(statement_) != SQLITE_DONE) throw std::runtime_error(sqlite3_errmsg(db_));
    sqlite3_reset(statement_);
  }

 private:
  sqlite3* db_;
  sqlite3_stmt* statement_ = nullptr;
};

std::string NodeName(std::mt19937_64& random) {
  char text[33];
  std::snprintf(text, sizeof text, "%016llX%016llX", static_cast<unsigned long long>(random()),
                static_cast<unsigned long long>(random()));
  return text;
}

std::string Quoted(const std::string& text) {
  std::string doubled;
  for (char c : text) doubled += c == '\'' ? std::string("''") : std::string(1, c);
  return doubled;
}

// The initials of the quote-doubled name, as they read once spliced between quotes.
std::string Acronym(const std::string& name) {
  const std::string initials = base::ToUtf8(ncDocUtils::GetAcronym(base::FromUtf8(Quoted(name))));
  std::string stored;
  for (size_t i = 0; i < initials.size(); ++i) {
    stored += initials[i];
    if (initials[i] == '\'' && i + 1 < initials.size() && initials[i + 1] == '\'') ++i;
  }
  return stored;
}

// The document id tag as the component writes it: the id in UTF-16LE, no terminator.
void Tag(const std::string& path, const std::string& id) {
  const base::String wide = base::FromUtf8(id);
  std::string bytes;
  for (char16_t unit : wide) bytes += {static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)};
  if (::setxattr(path.c_str(), kDocIdAttribute, bytes.data(), bytes.size(), 0) != 0)
    throw std::runtime_error("cannot tag " + path);
}

int Scan(const std::string& root) {
  std::vector<Entry> entries;
  Collect(root, "", entries);
  const std::string data = root + "/" + kDataDirectory;
  ::mkdir(data.c_str(), 0755);
  sqlite3* db = nullptr;
  if (sqlite3_open((data + "/cache.db").c_str(), &db) != SQLITE_OK) throw std::runtime_error("cannot open cache.db");
  for (const char* sql : kCacheSchema) Exec(db, sql);
  Exec(db, ("attach database '" + Quoted(data + "/log.db") + "' as log").c_str());
  for (const char* sql : kLogSchema) Exec(db, sql);
  {
    Statement row(db,
                  "replace into tb_cacheInfo (id, otag, isDir, state, serverMTime, clientMTime, size, name, parentPath, "
                  "acronym, type, typeName, viewType, viewName, parentId, attr, errcode, execTask, watermark) values "
                  "(?, ?, ?, 0, ?, ?, ?, ?, ?, ?, 0, '', 0, '', ?, 0, 0, 0, 0)");
    Statement event(db, "insert into log.tb_synclog values(NULL, 0, 1, ?, '', ?, ?, ?, 1)");
    std::mt19937_64 random(std::random_device{}());
    std::vector<std::pair<std::string, std::string>> folderIds;  // (relPath, id) of the open folders, outermost first
    Exec(db, "begin transaction");
    for (const Entry& entry : entries) {
      const size_t slash = entry.relPath.rfind('\\');
      const std::string parent = slash == std::string::npos ? "" : entry.relPath.substr(0, slash);
      const std::string name = slash == std::string::npos ? entry.relPath : entry.relPath.substr(slash + 1);
      while (!folderIds.empty() && folderIds.back().first != parent) folderIds.pop_back();
      const std::string parentNode = folderIds.empty() ? "" : folderIds.back().second.substr(folderIds.back().second.rfind('/') + 1);
      const std::string id = (folderIds.empty() ? std::string("gns:/") : folderIds.back().second) + "/" + NodeName(random);
      const std::string mtime = std::to_string(entry.mtime);
      row.text(1, id).text(2, NodeName(random)).number(3, entry.isDir).text(4, mtime).text(5, mtime);
      row.text(6, std::to_string(entry.size)).text(7, name).text(8, parent);
      row.text(9, Acronym(name)).text(10, parentNode).run();
      event.text(1, entry.relPath).number(2, entry.size).number(3, entry.mtime / 1000000);
      event.text(4, entry.isDir ? "folder" : "file").run();
      if (entry.isDir) folderIds.emplace_back(entry.relPath, id);
      else Tag(entry.path, id);
    }
    Exec(db, "commit transaction");
  }
  sqlite3_close(db);
  std::printf("Recorded %zu items in the cache of %s.\n", entries.size(), root.c_str());
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: docmgr-scan-baseline ROOT\n");
    return 2;
  }
  try {
    return Scan(argv[1]);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "docmgr-scan-baseline: %s\n", error.what());
    return 1;
  }
}
