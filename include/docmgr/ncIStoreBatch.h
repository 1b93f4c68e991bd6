// A second interface of the cache manager and of the sync log, reached by QueryInterface
// (the component model's way of extending a frozen interface): groups many writes into one
// transaction on the store's connection, so a client can record thousands of items at the
// cost of one commit.
//
// Thread safety: between BeginBatch and CommitBatch or RollbackBatch the calling thread
// holds the store's connection; statements of other threads on that store wait until the
// batch ends. A thread must end every batch it begins; batches do not nest.
#pragma once

#include "docmgr/nsISupports.h"

class ncIStoreBatch : public nsISupports {
 public:
  NS_DECLARE_STATIC_IID_ACCESSOR({0x5947A8D2, 0x222D, 0x4E99, {0xB3, 0xA8, 0xCB, 0x42, 0x3A, 0x3A, 0xE2, 0xC3}})

  // Starts the batch; throws code 1 when the store cannot begin a transaction.
  virtual void BeginBatch() = 0;
  // Makes every write since BeginBatch durable at once. When the commit fails the batch is
  // rolled back whole before the exception (code 1) reaches the caller.
  virtual void CommitBatch() = 0;
  // Drops every write since BeginBatch.
  virtual void RollbackBatch() = 0;

 protected:
  ~ncIStoreBatch() = default;
};
