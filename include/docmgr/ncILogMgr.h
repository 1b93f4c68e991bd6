// The sync log: a journal of file events in log.db, split by log type. The counted types
// (0 to NC_SYNCLOG_COUNTED_TYPES - 1) are capped inside the database: when a type reaches
// 50,000 entries, its oldest 25,000 go.
//
// Ownership: owned by the document manager (one for the main root); the pointer from
// ncIDocMgr::GetLogMgr carries a reference the caller releases.
// Thread safety: any thread; statements on log.db run one at a time, and wait while another
// thread holds a batch (ncIStoreBatch).
#pragma once

#include <cstdint>
#include <vector>

#include "docmgr/String.h"
#include "docmgr/nsISupports.h"

// Log types 0 to NC_SYNCLOG_COUNTED_TYPES - 1 have a counter row, and so the cap.
const int NC_SYNCLOG_COUNTED_TYPES = 4;

// One entry of the log. The log type is not part of the entry; every call names it.
struct ncSyncLogInfo {
  int64_t id = 0;         // assigned by the database
  int32_t taskType = 0;   // the caller's code for the task that produced the entry
  base::String relPath;   // relative path of the item
  base::String newName;   // new name, for renames
  int64_t size = 0;
  int64_t time = 0;
  base::String remark;
};

class ncILogMgr : public nsISupports {
 public:
  NS_DECLARE_STATIC_IID_ACCESSOR({0x02DFE9BF, 0xC93E, 0x41AB, {0xB3, 0x3A, 0x5C, 0xD7, 0x4F, 0xC8, 0x5A, 0x48}})

  // Adds a visible entry; info.id is not read.
  virtual void RecordSyncLog(int logType, const ncSyncLogInfo& info) = 0;
  // A page of the visible entries counted back from the newest: begin 1 and end 20 give
  // the 20 newest, in storage order. total is the number of visible entries of the type.
  // begin > end or begin > total throws code 2.
  virtual void GetSyncLog(int logType, std::vector<ncSyncLogInfo>& out, uint32_t begin, uint32_t end,
                          uint32_t& total) = 0;
  virtual void ClearSyncLog(int logType) = 0;
  // Hidden entries are kept (and still count towards the cap) but no longer listed.
  virtual void HideAllSyncLog(int logType) = 0;
  virtual void HideSyncLog(const int64_t& id) = 0;
  // The visible entries newer than id, newest first; with id 0 the 200 newest.
  virtual void GetSyncLogById(int logType, std::vector<ncSyncLogInfo>& out, const int64_t& id,
                              uint32_t& total) = 0;

 protected:
  ~ncILogMgr() = default;
};
