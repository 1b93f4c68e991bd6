#include "StoreBatches.h"

#include "docmgr/Exception.h"

StoreBatches::StoreBatches(ncICacheMgr* cache, ncILogMgr* log, bool enabled)
    : cache_(enabled ? do_QueryInterface<ncIStoreBatch>(cache) : nsCOMPtr<ncIStoreBatch>()),
      log_(enabled ? do_QueryInterface<ncIStoreBatch>(log) : nsCOMPtr<ncIStoreBatch>()) {}

StoreBatches::~StoreBatches() {
  try {
    if (open_) end(false);
  } catch (const base::Exception&) {
    // Rolling back after a failure: the failure itself is what gets reported.
  }
}

void StoreBatches::wrote() {
  if (!open_) begin();
  if (++writes_ >= kBatchWrites) end(true);
}

void StoreBatches::commit() {
  if (open_) end(true);
}

void StoreBatches::begin() {
  if (cache_) cache_->BeginBatch();
  if (log_) log_->BeginBatch();
  open_ = true;
}

void StoreBatches::end(bool keep) {
  open_ = false;
  writes_ = 0;
  for (ncIStoreBatch* batch : {cache_.get(), log_.get()}) {
    if (!batch) continue;
    if (keep) batch->CommitBatch();
    else batch->RollbackBatch();
  }
}
