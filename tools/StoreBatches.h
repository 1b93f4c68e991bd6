// Scan's writes to the cache and the sync log, grouped into one transaction per store for
// every kBatchWrites items, so a large tree costs a few commits instead of one per row. What
// a batch holds is lost together if the scan is cut off; scan writes its first-scan marker
// only after the last commit. An open batch is rolled back when the owner goes away.
#pragma once

#include <cstddef>

#include "docmgr/ncICacheMgr.h"
#include "docmgr/ncILogMgr.h"
#include "docmgr/ncIStoreBatch.h"
#include "docmgr/nsCOMPtr.h"

class StoreBatches {
 public:
  static const size_t kBatchWrites = 2000;

  // disabled: every write stands alone (a dry run writes nothing anyway).
  StoreBatches(ncICacheMgr* cache, ncILogMgr* log, bool enabled);
  ~StoreBatches();
  StoreBatches(StoreBatches&&) = default;

  // Counts one write; commits and begins anew when the batch is full.
  void wrote();
  void commit();

 private:
  void begin();
  void end(bool keep);

  nsCOMPtr<ncIStoreBatch> cache_;
  nsCOMPtr<ncIStoreBatch> log_;
  bool open_ = false;
  size_t writes_ = 0;
};
