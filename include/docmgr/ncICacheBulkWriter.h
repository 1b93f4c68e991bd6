// A third interface of the cache manager, reached by QueryInterface: writes cache rows
// through one statement that the cache's connection prepares once and keeps, with the
// values bound to it. A client recording thousands of items (a local scan) pays for one
// parse instead of one per row; inside a batch (ncIStoreBatch) the rows also share one
// commit. Outside a batch every row is its own transaction, as with Update.
//
// Thread safety: as ncICacheMgr; each call holds the store's connection while it runs, so
// it waits for another thread's batch.
#pragma once

#include "docmgr/ncICacheMgr.h"

class ncICacheBulkWriter : public nsISupports {
 public:
  NS_DECLARE_STATIC_IID_ACCESSOR({0xBA070DAB, 0x0596, 0x41CC, {0xB9, 0xBE, 0x42, 0x17, 0xE1, 0x67, 0x67, 0x03}})

  // Writes the row ncICacheMgr::Update(relPath, info) writes, after the same checks and
  // with the same failure codes. The values are bound rather than spliced into a text, so
  // a value holding a NUL character is stored whole where Update fails on it.
  virtual void UpdateBulk(const base::String& relPath, const ncCacheInfo& info) = 0;

 protected:
  ~ncICacheBulkWriter() = default;
};
