#include "docmgr/ncDBTransaction.h"

ncDBTransaction::ncDBTransaction(ncDBMgr& db) : db_(db) { db_.BeginTransaction(); }

ncDBTransaction::~ncDBTransaction() {
  if (open_) RollBackQuietly(db_);
}

void ncDBTransaction::Commit() {
  open_ = false;
  CommitOrRollBack(db_);
}

void ncDBTransaction::CommitOrRollBack(ncDBMgr& db) {
  try {
    db.CommitTransaction();
  } catch (const base::Exception&) {
    RollBackQuietly(db);
    throw;
  }
}

void ncDBTransaction::RollBackQuietly(ncDBMgr& db) {
  try {
    db.RollbackTransaction();
  } catch (const base::Exception&) {
    // The failure that led here is the one to report; the lock is released all the same
    // once no transaction is open.
  }
}
