#include "docmgr/ncDBMgr.h"

#include <cstdio>

#include "docmgr/ncAutoGetTable.h"
#include "docmgr/ncModuleAllocator.h"
#include "platform/ncPlatform.h"

namespace {

// The message is formatted, then passed through the formatter once more: a "%" that came
// in with a path or an SQL text is read as a directive the second time, and "%%" becomes "%".
#define NC_THROW_DB(code, ...) NC_THROW(code, base::Format(__VA_ARGS__))

String TakeSqliteMessage(char* message) {
  String text = base::FromUtf8(message ? message : "");
  sqlite3_free(message);
  return text;
}

// A file name as the path of a "file:" URI: the characters a URI gives meaning to are
// percent-encoded.
std::string UriPath(const std::string& native) {
  std::string uri;
  for (const unsigned char c : native) {
    if (c == '%' || c == '?' || c == '#' || c < 0x20) {
      char escaped[4];
      std::snprintf(escaped, sizeof escaped, "%%%02X", c);
      uri += escaped;
    } else {
      uri += static_cast<char>(c);
    }
  }
  return uri;
}

}  // namespace

NC_IMPL_POOLED_ISUPPORTS1(ncDBMgr, ncIDBMgr)

ncDBMgr::ncDBMgr() { NC_TRACE(u"this: 0x%p", this); }

ncDBMgr::~ncDBMgr() {
  NC_TRACE(u"this: 0x%p", this);
  try {
    Close();
  } catch (const base::Exception&) {
    // A destructor cannot report; the handle is forgotten either way.
  }
}

void ncDBMgr::Open(const String& path) {
  NC_TRACE(u"path: %s", path);
  if (!ncIsValidPath(path)) NC_THROW_DB(NC_ERR_INVALID_ARG, u"Path (%s) is INVALID.", path);
  const std::string native = platform::NativePath(platform::AddLongPathPrefix(path));
  int rc = sqlite3_open(native.c_str(), &db_);
  // A file this process may not write (inspection of another user's data, a read-only
  // medium) is opened read-only; a WAL database then cannot build its shared-memory index
  // beside it, so it is read as immutable instead.
  const bool readOnly = rc == SQLITE_OK && sqlite3_db_readonly(db_, "main") == 1;
  if (readOnly) {
    sqlite3_close(db_);
    db_ = nullptr;
    rc = sqlite3_open_v2(("file:" + UriPath(native) + "?immutable=1").c_str(), &db_,
                         SQLITE_OPEN_READONLY | SQLITE_OPEN_URI, nullptr);
  }
  if (rc != SQLITE_OK) {
    // sqlite3_open hands back a handle even on failure; it must still be closed.
    sqlite3_close(db_);
    db_ = nullptr;
    NC_THROW_DB(NC_ERR_DATABASE, u"Open database failed. Path: %s. Error: %d", path, rc);
  }
  ExecuteSql(u"PRAGMA busy_timeout=300000;");
  ExecuteSql(u"PRAGMA cache_size=8000;");
  if (readOnly) return;
  ExecuteSql(u"PRAGMA journal_mode=WAL;");
  ExecuteSql(u"PRAGMA wal_autocheckpoint=10000;");
}

void ncDBMgr::Close() {
  NC_TRACE(u"this: 0x%p", this);
  if (!db_) return;
  sqlite3* db = db_;
  db_ = nullptr;  // forgotten even when closing fails
  const int rc = sqlite3_close(db);
  if (rc != SQLITE_OK) NC_THROW_DB(NC_ERR_DATABASE, u"Close database failed. Error: %d", rc);
}

void ncDBMgr::ExecuteSql(const String& sql) {
  NC_TRACE(u"sql: %s", sql);
  const std::string text = base::ToUtf8(sql);
  char* error = nullptr;
  if (sqlite3_exec(db_, text.c_str(), nullptr, nullptr, &error) != SQLITE_OK) {
    const String message = error ? TakeSqliteMessage(error) : base::FromUtf8(sqlite3_errmsg(db_));
    NC_THROW_DB(NC_ERR_DATABASE, u"Execute sql failed. Sql: %s. Error: %s", sql, message);
  }
}

void ncDBMgr::GetTable(const String& sql, int& rowCount, int& columnCount, char**& result) {
  NC_TRACE(u"sql: %s", sql);
  const std::string text = base::ToUtf8(sql);
  char* error = nullptr;
  if (sqlite3_get_table(db_, text.c_str(), &result, &rowCount, &columnCount, &error) != SQLITE_OK) {
    const String message = error ? TakeSqliteMessage(error) : base::FromUtf8(sqlite3_errmsg(db_));
    NC_THROW_DB(NC_ERR_DATABASE, u"Get table failed. Sql: %s. Error: %s", sql, message);
  }
}

bool ncDBMgr::IsTableExists(const String& tableName) {
  NC_TRACE(u"tableName: %s", tableName);
  int rows = 0, columns = 0;
  char** result = nullptr;
  ncAutoGetTable table(
      this,
      base::Format(u"select * from sqlite_master where type='table' and name='%s' COLLATE NOCASE limit 1", tableName),
      rows, columns, result);
  return rows != 0;
}

bool ncDBMgr::IsColumnExists(const String& tableName, const String& columnName) {
  NC_TRACE(u"tableName: %s, columnName: %s", tableName, columnName);
  int rows = 0, columns = 0;
  char** result = nullptr;
  ncAutoGetTable table(
      this,
      base::Format(u"select * from sqlite_master where name='%s' COLLATE NOCASE and sql like '%%%s%%' limit 1",
                   tableName, columnName),
      rows, columns, result);
  return rows != 0;
}

void ncDBMgr::BeginTransaction() {
  NC_TRACE(u"this: 0x%p", this);
  transactionLock_.lock();
  try {
    ExecuteSql(u"begin transaction");
  } catch (...) {
    transactionLock_.unlock();  // no transaction began, so no commit or rollback will follow
    throw;
  }
}

void ncDBMgr::CommitTransaction() {
  NC_TRACE(u"this: 0x%p", this);
  ExecuteSql(u"commit transaction");
  transactionLock_.unlock();
}

void ncDBMgr::RollbackTransaction() {
  NC_TRACE(u"this: 0x%p", this);
  ExecuteSql(u"rollback transaction");
  transactionLock_.unlock();
}

void ncDBMgr::ProtectSchema() { schemaProtected_ = true; }

ncDBMgr::SchemaChange::SchemaChange(ncDBMgr& db) : db_(db) { ++db_.schemaChangeDepth_; }

ncDBMgr::SchemaChange::~SchemaChange() { --db_.schemaChangeDepth_; }
