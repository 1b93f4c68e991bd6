// The SQLite wrapper every store uses: one connection, the component's connection
// settings, statements as wide strings, exactly one statement per call, and a recursive
// lock held by every statement and from BeginTransaction to CommitTransaction or
// RollbackTransaction, so that no statement of another thread lands inside a transaction.
#pragma once

#include <sqlite3.h>

#include <initializer_list>
#include <map>

#include "base/ThreadMutexLock.h"
#include "docmgr/ncDocMgrDefs.h"
#include "docmgr/ncIDBMgr.h"

class ncDBMgr : public ncIDBMgr {
  NC_DECL_ISUPPORTS
 public:
  ncDBMgr();

  void Open(const base::String& path) override;
  void Close() override;
  void ExecuteSql(const base::String& sql) override;
  bool IsTableExists(const base::String& tableName) override;
  bool IsColumnExists(const base::String& tableName, const base::String& columnName) override;
  void BeginTransaction() override;
  void CommitTransaction() override;
  void RollbackTransaction() override;

  // Fills the outputs as sqlite3_get_table does (row 0 holds the column names); the caller
  // frees the table, normally through ncAutoGetTable.
  void GetTable(const base::String& sql, int& rowCount, int& columnCount, char**& result);

  // A value bound to a prepared statement: a text (stored as WTF-8, as the texts of every
  // other statement are) or a whole number. A text is referenced, not copied.
  class BoundValue {
   public:
    BoundValue(const base::String& text) : text_(&text) {}
    BoundValue(int64_t number) : number_(number) {}
    const base::String* text() const { return text_; }
    int64_t number() const { return number_; }

   private:
    const base::String* text_ = nullptr;
    int64_t number_ = 0;
  };
  // Runs sql with the values bound to its parameters in order. The statement is prepared at
  // its first run on this connection and kept until Close: a statement run for thousands
  // of rows (the bulk paths) is parsed and compiled once. The statement is kept by the
  // address of its text, so sql must be a constant of the program. Throws as ExecuteSql
  // does.
  void RunPrepared(const char16_t* sql, std::initializer_list<BoundValue> values);

  sqlite3* GetHandle() const { return db_; }
  // True inside a transaction; meaningful to the thread that holds the lock.
  bool InTransaction() const { return db_ && !sqlite3_get_autocommit(db_); }

  // Schema changes on a protected connection (CREATE, DROP, ALTER, ATTACH, DETACH, any write
  // to sqlite_master) are refused, except inside a SchemaChange scope: the stores open one
  // around their own set-up and repair, and call ProtectSchema once it is done, so that no
  // value spliced into a later statement can change the schema. A connection from
  // ncIDocMgr::CreateDBMgr stays unprotected: it belongs to the client.
  void ProtectSchema();
  // Holds the connection lock for its lifetime: no statement of another thread runs while
  // the schema may change.
  class SchemaChange {
   public:
    explicit SchemaChange(ncDBMgr& db);
    ~SchemaChange();
    SchemaChange(const SchemaChange&) = delete;
    SchemaChange& operator=(const SchemaChange&) = delete;

   private:
    ncDBMgr& db_;
  };

 protected:
  virtual ~ncDBMgr();

 private:
  friend class ncDBTransaction;  // takes the lock before it looks for an open transaction
  static int Authorize(void* self, int action, const char* object, const char* detail, const char* database,
                       const char* trigger);
  // Releases the lock taken by BeginTransaction once no transaction is open any more.
  void UnlockUnlessInTransaction();

  sqlite3_stmt* PreparedStatement(const char16_t* sql);
  void FinalizePrepared();

  sqlite3* db_ = nullptr;
  std::map<const char16_t*, sqlite3_stmt*> prepared_;  // by text address; guarded by transactionLock_
  base::ThreadMutexLock transactionLock_;
  bool schemaProtected_ = false;  // guarded by transactionLock_
  int schemaChangeDepth_ = 0;     // open SchemaChange scopes; guarded by transactionLock_
};
