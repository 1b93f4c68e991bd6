#include "docmgr/ncDBMgr.h"

#include <cstdint>
#include <cstdio>
#include <cstring>

#include "docmgr/ncDocUtils.h"
#include "docmgr/ncModuleAllocator.h"
#include "docmgr/ncQueryResult.h"
#include "docmgr/ncSqlLike.h"
#include "platform/ncPlatform.h"

using base::String;

namespace {

// The message is formatted, then passed through the formatter once more: a "%" that came
// in with a path or an SQL text is read as a directive the second time, and "%%" becomes "%".
#define NC_THROW_DB(code, ...) NC_THROW(code, base::Format(__VA_ARGS__))

const char kSecondStatement[] = "only one statement may run per call";

// True when nothing but blanks and semicolons follows the first statement.
bool IsEmptyTail(const char* tail, const char* end) {
  for (; tail < end; ++tail)
    if (*tail != ';' && *tail != ' ' && *tail != '\t' && *tail != '\r' && *tail != '\n' && *tail != '\f' &&
        *tail != '\v')
      return false;
  return true;
}

// The one prepared statement of a call, finalized when it goes out of scope.
class Statement {
 public:
  Statement() = default;
  ~Statement() { sqlite3_finalize(stmt_); }
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  // Prepares the first statement of text; the error text of SQLite, or of a second
  // statement, when that fails. A text of blanks prepares to no statement at all.
  bool Prepare(sqlite3* db, const std::string& text, std::string& error) {
    const char* tail = nullptr;
    if (sqlite3_prepare_v2(db, text.c_str(), static_cast<int>(text.size()) + 1, &stmt_, &tail) != SQLITE_OK) {
      error = sqlite3_errmsg(db);
      return false;
    }
    if (!IsEmptyTail(tail, text.c_str() + text.size())) {
      error = kSecondStatement;
      return false;
    }
    return true;
  }
  sqlite3_stmt* get() const { return stmt_; }
  sqlite3_stmt* Release() {
    sqlite3_stmt* statement = stmt_;
    stmt_ = nullptr;
    return statement;
  }

 private:
  sqlite3_stmt* stmt_ = nullptr;
};

// A result array in the layout sqlite3_get_table hands out and sqlite3_free_table takes
// back: slot 0 counts the slots in use (itself included), the caller sees the array from
// slot 1 on, and every cell is a copy of its own from sqlite3_malloc (null for NULL).
class ResultTable {
 public:
  ResultTable() = default;
  ~ResultTable() {
    if (slots_) sqlite3_free_table(slots_ + 1);
  }
  ResultTable(const ResultTable&) = delete;
  ResultTable& operator=(const ResultTable&) = delete;

  bool Append(const char* text) {
    if (!Reserve()) return false;
    char* copy = nullptr;
    if (text) {
      const size_t size = std::strlen(text) + 1;
      copy = static_cast<char*>(sqlite3_malloc64(size));
      if (!copy) return false;
      std::memcpy(copy, text, size);
    }
    slots_[used_++] = copy;
    slots_[0] = reinterpret_cast<char*>(static_cast<intptr_t>(used_));
    return true;
  }
  char** Release() {
    if (!slots_ && !Reserve()) return nullptr;
    char** cells = slots_ + 1;
    slots_ = nullptr;
    return cells;
  }

 private:
  bool Reserve() {
    if (slots_ && used_ < capacity_) return true;
    const size_t capacity = capacity_ ? capacity_ * 2 : 20;
    char** grown = static_cast<char**>(sqlite3_realloc64(slots_, capacity * sizeof(char*)));
    if (!grown) return false;
    slots_ = grown;
    capacity_ = capacity;
    slots_[0] = reinterpret_cast<char*>(static_cast<intptr_t>(used_));
    return true;
  }

  char** slots_ = nullptr;
  size_t used_ = 1;
  size_t capacity_ = 0;
};

// Reads every row of the statement into table as sqlite3_get_table does: the column names
// come with the first row, so a statement without rows has no columns either.
int ReadRows(sqlite3_stmt* stmt, ResultTable& table, int& rowCount, int& columnCount) {
  rowCount = 0;
  columnCount = 0;
  int rc;
  while ((rc = sqlite3_step(stmt)) == SQLITE_ROW) {
    if (rowCount == 0) {
      columnCount = sqlite3_column_count(stmt);
      for (int column = 0; column < columnCount; ++column)
        if (!table.Append(sqlite3_column_name(stmt, column))) return SQLITE_NOMEM;
    }
    for (int column = 0; column < columnCount; ++column)
      if (!table.Append(reinterpret_cast<const char*>(sqlite3_column_text(stmt, column)))) return SQLITE_NOMEM;
    ++rowCount;
  }
  return rc == SQLITE_DONE ? SQLITE_OK : rc;
}

bool IsSchemaTable(const char* table) {
  return table && (sqlite3_stricmp(table, "sqlite_master") == 0 || sqlite3_stricmp(table, "sqlite_schema") == 0 ||
                   sqlite3_stricmp(table, "sqlite_temp_master") == 0 ||
                   sqlite3_stricmp(table, "sqlite_temp_schema") == 0);
}

bool ChangesSchema(int action, const char* table) {
  switch (action) {
    case SQLITE_CREATE_INDEX:
    case SQLITE_CREATE_TABLE:
    case SQLITE_CREATE_TEMP_INDEX:
    case SQLITE_CREATE_TEMP_TABLE:
    case SQLITE_CREATE_TEMP_TRIGGER:
    case SQLITE_CREATE_TEMP_VIEW:
    case SQLITE_CREATE_TRIGGER:
    case SQLITE_CREATE_VIEW:
    case SQLITE_CREATE_VTABLE:
    case SQLITE_DROP_INDEX:
    case SQLITE_DROP_TABLE:
    case SQLITE_DROP_TEMP_INDEX:
    case SQLITE_DROP_TEMP_TABLE:
    case SQLITE_DROP_TEMP_TRIGGER:
    case SQLITE_DROP_TEMP_VIEW:
    case SQLITE_DROP_TRIGGER:
    case SQLITE_DROP_VIEW:
    case SQLITE_DROP_VTABLE:
    case SQLITE_ALTER_TABLE:
    case SQLITE_ATTACH:
    case SQLITE_DETACH:
      return true;
    case SQLITE_INSERT:
    case SQLITE_UPDATE:
    case SQLITE_DELETE:
      return IsSchemaTable(table);
    default:
      return false;
  }
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
  if (rc == SQLITE_OK) rc = ncSqlLike::Install(db_);  // subtrees of long paths
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
  base::AutoLock lock(transactionLock_);
  sqlite3* db = db_;
  db_ = nullptr;  // forgotten even when closing fails
  schemaProtected_ = false;  // the protection belongs to the connection
  FinalizePrepared();
  const int rc = sqlite3_close(db);
  if (rc != SQLITE_OK) NC_THROW_DB(NC_ERR_DATABASE, u"Close database failed. Error: %d", rc);
}

// One statement through prepare and step: sqlite3_exec would run every statement of the
// text, and a value spliced into it could bring statements of its own.
void ncDBMgr::ExecuteSql(const String& sql) {
  NC_TRACE(u"sql: %s", sql);
  const std::string text = base::ToUtf8(sql);
  base::AutoLock lock(transactionLock_);
  Statement statement;
  std::string error;
  if (statement.Prepare(db_, text, error)) {
    int rc = SQLITE_OK;
    if (statement.get())
      while ((rc = sqlite3_step(statement.get())) == SQLITE_ROW) {
      }
    if (rc == SQLITE_OK || rc == SQLITE_DONE) return;
    error = sqlite3_errmsg(db_);
  }
  NC_THROW_DB(NC_ERR_DATABASE, u"Execute sql failed. Sql: %s. Error: %s", sql, base::FromUtf8(error));
}

void ncDBMgr::RunPrepared(const char16_t* sql, std::initializer_list<BoundValue> values) {
  base::AutoLock lock(transactionLock_);
  sqlite3_stmt* statement = PreparedStatement(sql);
  int index = 1, rc = SQLITE_OK;
  for (const BoundValue& value : values) {
    if (value.text()) {
      const std::string text = base::ToUtf8(*value.text());
      rc = sqlite3_bind_text(statement, index++, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
    } else {
      rc = sqlite3_bind_int64(statement, index++, value.number());
    }
    if (rc != SQLITE_OK) break;
  }
  if (rc == SQLITE_OK)
    while ((rc = sqlite3_step(statement)) == SQLITE_ROW) {
    }
  const std::string error = rc == SQLITE_OK || rc == SQLITE_DONE ? std::string() : sqlite3_errmsg(db_);
  sqlite3_reset(statement);
  sqlite3_clear_bindings(statement);
  if (!error.empty()) NC_THROW_DB(NC_ERR_DATABASE, u"Execute sql failed. Sql: %s. Error: %s", sql, base::FromUtf8(error));
}

sqlite3_stmt* ncDBMgr::PreparedStatement(const char16_t* sql) {
  const auto kept = prepared_.find(sql);
  if (kept != prepared_.end()) return kept->second;
  const std::string text = base::ToUtf8(sql);
  Statement statement;
  std::string error;
  if (!statement.Prepare(db_, text, error) || !statement.get())
    NC_THROW_DB(NC_ERR_DATABASE, u"Execute sql failed. Sql: %s. Error: %s", sql, base::FromUtf8(error));
  return prepared_[sql] = statement.Release();
}

void ncDBMgr::FinalizePrepared() {
  for (const auto& kept : prepared_) sqlite3_finalize(kept.second);
  prepared_.clear();
}

void ncDBMgr::GetTable(const String& sql, int& rowCount, int& columnCount, char**& result) {
  NC_TRACE(u"sql: %s", sql);
  const std::string text = base::ToUtf8(sql);
  base::AutoLock lock(transactionLock_);
  Statement statement;
  ResultTable table;
  std::string error;
  int rows = 0, columns = 0;
  if (statement.Prepare(db_, text, error)) {
    const int rc = statement.get() ? ReadRows(statement.get(), table, rows, columns) : SQLITE_OK;
    char** cells = rc == SQLITE_OK ? table.Release() : nullptr;
    if (cells) {
      rowCount = rows;
      columnCount = columns;
      result = cells;
      return;
    }
    error = rc == SQLITE_OK || rc == SQLITE_NOMEM ? sqlite3_errstr(SQLITE_NOMEM) : sqlite3_errmsg(db_);
  }
  NC_THROW_DB(NC_ERR_DATABASE, u"Get table failed. Sql: %s. Error: %s", sql, base::FromUtf8(error));
}

bool ncDBMgr::IsTableExists(const String& tableName) {
  NC_TRACE(u"tableName: %s", tableName);
  return ncQueryResult(this, base::Format(u"select * from sqlite_master where type='table' and name='%s' COLLATE "
                                          u"NOCASE limit 1",
                                          ncDocUtils::QuoteSql(tableName)))
             .rows() != 0;
}

bool ncDBMgr::IsColumnExists(const String& tableName, const String& columnName) {
  NC_TRACE(u"tableName: %s, columnName: %s", tableName, columnName);
  return ncQueryResult(this, base::Format(u"select * from sqlite_master where name='%s' COLLATE NOCASE and sql like "
                                          u"'%%%s%%' limit 1",
                                          ncDocUtils::QuoteSql(tableName), ncDocUtils::QuoteSql(columnName)))
             .rows() != 0;
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

// The lock stays held while a transaction is still open, and only then: a rollback that
// fails because SQLite already ended the transaction (as it does after some failed
// commits) must not keep every other thread out for good.
void ncDBMgr::RollbackTransaction() {
  NC_TRACE(u"this: 0x%p", this);
  try {
    ExecuteSql(u"rollback transaction");
  } catch (const base::Exception&) {
    UnlockUnlessInTransaction();
    throw;
  }
  transactionLock_.unlock();
}

void ncDBMgr::UnlockUnlessInTransaction() {
  if (!db_ || sqlite3_get_autocommit(db_)) transactionLock_.unlock();
}

void ncDBMgr::ProtectSchema() {
  base::AutoLock lock(transactionLock_);
  if (!db_ || schemaProtected_) return;
  schemaProtected_ = true;
  sqlite3_set_authorizer(db_, &ncDBMgr::Authorize, this);
}

// Runs while a statement is prepared, that is, under the connection lock.
int ncDBMgr::Authorize(void* self, int action, const char* object, const char*, const char*, const char*) {
  const ncDBMgr* db = static_cast<const ncDBMgr*>(self);
  if (db->schemaChangeDepth_ > 0 || !ChangesSchema(action, object)) return SQLITE_OK;
  return SQLITE_DENY;
}

ncDBMgr::SchemaChange::SchemaChange(ncDBMgr& db) : db_(db) {
  db_.transactionLock_.lock();
  ++db_.schemaChangeDepth_;
}

ncDBMgr::SchemaChange::~SchemaChange() {
  --db_.schemaChangeDepth_;
  db_.transactionLock_.unlock();
}
