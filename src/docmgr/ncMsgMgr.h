// The message store in msg.db: one row of tb_msg per message the server sent the user.
#pragma once

#include "docmgr/ncDBMgr.h"
#include "docmgr/ncDocMgrDefs.h"
#include "docmgr/ncIMsgMgr.h"
#include "docmgr/nsCOMPtr.h"

class ncMsgMgr : public ncIMsgMgr {
  NC_DECL_ISUPPORTS
 public:
  ncMsgMgr();

  void Init(const base::String& path);
  // The store's database connection.
  ncDBMgr* GetDBMgr() const { return dbMgr_.get(); }
  void Close();

  void RecordMsg(const std::vector<ncMsgInfo>& msgs) override;
  void GetMsg(int num, std::vector<ncMsgInfo>& out) override;
  void CleanupMsg(int surplus) override;
  void UpdateUnreadMsg(const std::vector<base::String>& msgIds) override;
  int32_t GetUnreadMsgNum() override;
  int64_t GetMaxStamp() override;
  void UpdateAndFilterMsg(const std::vector<ncMsgInfo>& msgs, std::vector<ncMsgInfo>& newMsgs) override;

 protected:
  virtual ~ncMsgMgr();

 private:
  // The tables, indexes and triggers of a new store; all that a protected connection may not do.
  void CreateSchema();
  nsCOMPtr<ncDBMgr> dbMgr_;
};
