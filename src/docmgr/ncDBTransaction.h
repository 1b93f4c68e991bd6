// One transaction on a store's connection as an owner: begun by the constructor, rolled back
// by the destructor unless Commit succeeded. Between the two the owning thread holds the
// connection's lock, so no statement of another thread runs inside the transaction. Inside a
// transaction the same thread already holds (a batch), it is a savepoint of that one: its
// writes still go together or not at all, and the batch decides about the rest.
#pragma once

#include "docmgr/ncDBMgr.h"

class ncDBTransaction {
 public:
  // Begins; throws as ncDBMgr::BeginTransaction does, holding nothing afterwards.
  explicit ncDBTransaction(ncDBMgr& db);
  ~ncDBTransaction();
  ncDBTransaction(const ncDBTransaction&) = delete;
  ncDBTransaction& operator=(const ncDBTransaction&) = delete;

  // Makes the writes durable. A failing commit rolls the transaction back and releases the
  // lock before its own error goes on: neither outlives the failure.
  void Commit();

  // The same for a transaction begun by BeginTransaction, as a batch that spans calls is.
  static void CommitOrRollBack(ncDBMgr& db);

 private:
  static void RollBackQuietly(ncDBMgr& db);
  void RollBackSavepointQuietly();

  ncDBMgr& db_;
  base::AutoLock lock_;  // taken before looking for an open transaction of this thread
  const bool nested_;
  bool open_ = true;
};
