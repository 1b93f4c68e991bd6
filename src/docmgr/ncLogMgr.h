// The sync log in log.db: tb_synclog holds the entries, tb_logstat one counter per log type
// (0 to 3), and three triggers keep the counters and the cap of each type inside the
// database, so that writers never trim.
#pragma once

#include "docmgr/ncDBMgr.h"
#include "docmgr/ncDocMgrDefs.h"
#include "docmgr/ncILogBulkWriter.h"
#include "docmgr/ncILogMgr.h"
#include "docmgr/ncIStoreBatch.h"
#include "docmgr/nsCOMPtr.h"

class ncLogMgr : public ncILogMgr, public ncIStoreBatch, public ncILogBulkWriter {
  NC_DECL_ISUPPORTS
 public:
  ncLogMgr();

  // Opens log.db at path and creates what is missing. A log.db whose delete trigger is the
  // old one that refers to new.logType (which current SQLite refuses, blocking every insert
  // and delete) gets the trigger replaced and its counters recounted.
  void Init(const base::String& path);
  // The store's database connection.
  ncDBMgr* GetDBMgr() const { return dbMgr_.get(); }
  void Close();
  void CreateStatTable();
  void CreateTrigger();

  void RecordSyncLog(int logType, const ncSyncLogInfo& info) override;
  void GetSyncLog(int logType, std::vector<ncSyncLogInfo>& out, uint32_t begin, uint32_t end,
                  uint32_t& total) override;
  void ClearSyncLog(int logType) override;
  void HideAllSyncLog(int logType) override;
  void HideSyncLog(const int64_t& id) override;
  void GetSyncLogById(int logType, std::vector<ncSyncLogInfo>& out, const int64_t& id, uint32_t& total) override;

  // ncIStoreBatch: one transaction on this store's connection.
  void BeginBatch() override;
  void CommitBatch() override;
  void RollbackBatch() override;

  // ncILogBulkWriter: RecordSyncLog's entry through a kept statement with bound values.
  void RecordSyncLogBulk(int logType, const ncSyncLogInfo& info) override;

 protected:
  virtual ~ncLogMgr();

 private:
  // The tables, indexes and triggers of a new store; all that a protected connection may not do.
  void CreateSchema();
  void RepairDeleteTrigger();
  // Visible entries of the type; a missing row throws code 1 naming tableInMessage.
  uint32_t CountVisible(int logType, const char16_t* tableInMessage);
  void ReadEntries(const base::String& sql, std::vector<ncSyncLogInfo>& out);

  nsCOMPtr<ncDBMgr> dbMgr_;
};
