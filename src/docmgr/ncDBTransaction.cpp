#include "docmgr/ncDBTransaction.h"

namespace {

const char16_t kSavepoint[] = u"savepoint nc_part";
const char16_t kRelease[] = u"release savepoint nc_part";
const char16_t kRollbackToSavepoint[] = u"rollback transaction to savepoint nc_part";

}  // namespace

ncDBTransaction::ncDBTransaction(ncDBMgr& db)
    : db_(db), lock_(db.transactionLock_), nested_(db.InTransaction()) {
  if (nested_) db_.ExecuteSql(kSavepoint);
  else db_.BeginTransaction();
}

ncDBTransaction::~ncDBTransaction() {
  if (!open_) return;
  if (nested_) RollBackSavepointQuietly();
  else RollBackQuietly(db_);
}

void ncDBTransaction::Commit() {
  open_ = false;
  if (!nested_) {
    CommitOrRollBack(db_);
    return;
  }
  try {
    db_.ExecuteSql(kRelease);
  } catch (const base::Exception&) {
    RollBackSavepointQuietly();
    throw;
  }
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

void ncDBTransaction::RollBackSavepointQuietly() {
  try {
    db_.ExecuteSql(kRollbackToSavepoint);
    db_.ExecuteSql(kRelease);
  } catch (const base::Exception&) {
    // As above: the first failure is the one the caller sees.
  }
}
