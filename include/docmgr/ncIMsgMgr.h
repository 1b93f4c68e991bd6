// The messages the server sends to the user (sharing, permission and audit messages),
// kept in msg.db. The store keeps every code as it is given; its own meaning of state is
// 0 unread, 1 read.
//
// Ownership: owned by the document manager (one for the main root); the pointer from
// ncIDocMgr::GetMsgMgr carries a reference the caller releases.
// Thread safety: any thread; statements on msg.db run one at a time. A batch of messages is
// written message by message: a failure keeps the messages written before it.
#pragma once

#include <cstdint>
#include <vector>

#include "docmgr/String.h"
#include "docmgr/nsISupports.h"

// One message: a field for each column of tb_msg after its row id, in column order.
struct ncMsgInfo {
  base::String msgId;
  base::String relPath;
  base::String sender;
  base::String recipient;
  bool isDir = false;
  int32_t msgType = 0;
  int32_t accessorType = 0;
  int32_t csfLevel = 0;
  int32_t allowPermValue = 0;
  int32_t refusePermValue = 0;
  int64_t shareingTime = 0;
  int64_t deadlineTime = 0;
  int32_t state = 0;  // 0 unread, 1 read
  int32_t perm = 0;
  base::String auditorName;
  int32_t auditResult = 0;
  base::String auditMsg;
  base::String requester;
  base::String previousAuditor;
  base::String processName;
  int32_t docAuditType = 0;
  base::String nextAuditor;
  int32_t nextLevel = 0;
  int64_t stamp = 0;
  int32_t applyCsfLevel = 0;
  base::String creator;
  base::String modifier;
  base::String content;
  base::String virusadmin;
  int32_t operationType = 0;
  int64_t duedate = 0;
  base::String remindcontent;
  int32_t isInherit = 0;
};

class ncIMsgMgr : public nsISupports {
 public:
  NS_DECLARE_STATIC_IID_ACCESSOR({0x92FEC38D, 0xDEB8, 0x41AC, {0xA0, 0x91, 0xF0, 0x80, 0x4E, 0x86, 0xFD, 0x62}})

  // One insert per message; a failure stops the batch and keeps what was inserted.
  virtual void RecordMsg(const std::vector<ncMsgInfo>& msgs) = 0;
  // The num newest messages, newest first.
  virtual void GetMsg(int num, std::vector<ncMsgInfo>& out) = 0;
  // Keeps only the surplus newest messages.
  virtual void CleanupMsg(int surplus) = 0;
  // Marks the messages read; unknown ids change nothing.
  virtual void UpdateUnreadMsg(const std::vector<base::String>& msgIds) = 0;
  virtual int32_t GetUnreadMsgNum() = 0;
  // The largest stamp stored, 0 when there is none.
  virtual int64_t GetMaxStamp() = 0;
  // Known messages take the new stamp, state, due date and reminder text; the unknown
  // ones are appended to newMsgs in input order.
  virtual void UpdateAndFilterMsg(const std::vector<ncMsgInfo>& msgs, std::vector<ncMsgInfo>& newMsgs) = 0;

 protected:
  ~ncIMsgMgr() = default;
};
