// A third interface of the sync log, reached by QueryInterface: appends entries through one
// statement that the log's connection prepares once and keeps (its triggers compiled into
// it once), with the values bound to it. Inside a batch (ncIStoreBatch) the entries also
// share one commit; outside one every entry is its own transaction, as with RecordSyncLog.
//
// Thread safety: as ncILogMgr; each call holds the store's connection while it runs.
#pragma once

#include "docmgr/ncILogMgr.h"

class ncILogBulkWriter : public nsISupports {
 public:
  NS_DECLARE_STATIC_IID_ACCESSOR({0x602F197B, 0x5994, 0x4016, {0xA0, 0x5D, 0x77, 0x32, 0xB6, 0xB8, 0x02, 0x03}})

  // Appends the entry ncILogMgr::RecordSyncLog(logType, info) appends, counted and trimmed
  // by the same triggers. Values are bound: a NUL character inside one is stored whole.
  virtual void RecordSyncLogBulk(int logType, const ncSyncLogInfo& info) = 0;

 protected:
  ~ncILogBulkWriter() = default;
};
