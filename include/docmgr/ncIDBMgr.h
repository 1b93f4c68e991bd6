// One SQLite connection with the component's settings. Every failure is thrown.
//
// Ownership: reference counted; the object closes its connection when the last reference
// goes. Thread safety: one wrapper may be shared by every thread; its statements run one at
// a time, and BeginTransaction holds the connection for the calling thread until it commits
// or rolls back (the lock is recursive: the same thread may run statements inside it).
#pragma once

#include "docmgr/String.h"
#include "docmgr/nsISupports.h"

class ncIDBMgr : public nsISupports {
 public:
  NS_DECLARE_STATIC_IID_ACCESSOR({0x7601DB78, 0x53DF, 0x4218, {0xBD, 0xBA, 0x8F, 0xF8, 0x5C, 0x09, 0x02, 0xE5}})

  virtual void Open(const base::String& path) = 0;
  virtual void Close() = 0;
  virtual void ExecuteSql(const base::String& sql) = 0;
  virtual bool IsTableExists(const base::String& tableName) = 0;
  // A loose test: the column name occurs in the stored create statement of the object.
  virtual bool IsColumnExists(const base::String& tableName, const base::String& columnName) = 0;
  // The transaction lock is held from Begin to Commit or Rollback.
  virtual void BeginTransaction() = 0;
  virtual void CommitTransaction() = 0;
  virtual void RollbackTransaction() = 0;

 protected:
  ~ncIDBMgr() = default;
};
