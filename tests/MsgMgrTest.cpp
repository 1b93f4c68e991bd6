// The message store in a real msg.db.
#include <gtest/gtest.h>

#include "TestSupport.h"
#include "docmgr/ncModuleAllocator.h"
#include "docmgr/ncMsgMgr.h"

namespace {

// Every field distinct, and every text with an apostrophe, a percent sign and Chinese.
ncMsgInfo Message(int n) {
  const String t = base::Format(u" %d: it's 100%% %%s 消息", n);
  ncMsgInfo m;
  m.msgId = base::Format(u"msg-%d", n);
  m.relPath = u"relPath" + t;
  m.sender = u"sender" + t;
  m.recipient = u"recipient" + t;
  m.isDir = n % 2 == 1;
  m.msgType = n + 1;
  m.accessorType = n + 2;
  m.csfLevel = n + 3;
  m.allowPermValue = n + 4;
  m.refusePermValue = -(n + 5);
  m.shareingTime = 1718000000000000LL + n;
  m.deadlineTime = 1719000000000000LL + n;
  m.state = 0;
  m.perm = n + 6;
  m.auditorName = u"auditorName" + t;
  m.auditResult = n + 7;
  m.auditMsg = u"auditMsg" + t;
  m.requester = u"requester" + t;
  m.previousAuditor = u"previousAuditor" + t;
  m.processName = u"processName" + t;
  m.docAuditType = n + 8;
  m.nextAuditor = u"nextAuditor" + t;
  m.nextLevel = n + 9;
  m.stamp = 100 + n;
  m.applyCsfLevel = n + 10;
  m.creator = u"creator" + t;
  m.modifier = u"modifier" + t;
  m.content = u"content" + t;
  m.virusadmin = u"virusadmin" + t;
  m.operationType = n + 11;
  m.duedate = 1720000000000000LL + n;
  m.remindcontent = u"remindcontent" + t;
  m.isInherit = n + 12;
  return m;
}

void ExpectSame(const ncMsgInfo& a, const ncMsgInfo& b) {
#define SAME(field) EXPECT_EQ(a.field, b.field) << #field
  SAME(msgId); SAME(relPath); SAME(sender); SAME(recipient); SAME(isDir); SAME(msgType); SAME(accessorType);
  SAME(csfLevel); SAME(allowPermValue); SAME(refusePermValue); SAME(shareingTime); SAME(deadlineTime); SAME(state);
  SAME(perm); SAME(auditorName); SAME(auditResult); SAME(auditMsg); SAME(requester); SAME(previousAuditor);
  SAME(processName); SAME(docAuditType); SAME(nextAuditor); SAME(nextLevel); SAME(stamp); SAME(applyCsfLevel);
  SAME(creator); SAME(modifier); SAME(content); SAME(virusadmin); SAME(operationType); SAME(duedate);
  SAME(remindcontent); SAME(isInherit);
#undef SAME
}

std::vector<String> Ids(const std::vector<ncMsgInfo>& msgs) {
  std::vector<String> ids;
  for (const ncMsgInfo& m : msgs) ids.push_back(m.msgId);
  return ids;
}

class MsgMgrTest : public ::testing::Test {
 protected:
  void SetUp() override { msg->Init(dir.child("msg.db")); }
  void TearDown() override { msg->Close(); }
  std::vector<ncMsgInfo> Newest(int num) {
    std::vector<ncMsgInfo> out;
    msg->GetMsg(num, out);
    return out;
  }

  test::TempDir dir;
  nsCOMPtr<ncMsgMgr> msg{NC_NEW(ncMsgMgr)};
};

TEST_F(MsgMgrTest, EveryFieldRoundTripsNewestFirst) {
  EXPECT_EQ(0, msg->GetMaxStamp());
  msg->RecordMsg({Message(1), Message(2), Message(3)});
  const std::vector<ncMsgInfo> all = Newest(10);
  ASSERT_EQ(3u, all.size());
  ExpectSame(Message(3), all[0]);
  ExpectSame(Message(2), all[1]);
  ExpectSame(Message(1), all[2]);
  EXPECT_EQ(std::vector<String>{u"msg-3"}, Ids(Newest(1)));
  EXPECT_EQ(103, msg->GetMaxStamp());
}

TEST_F(MsgMgrTest, CleanupKeepsTheNewest) {
  msg->RecordMsg({Message(1), Message(2), Message(3), Message(4)});
  msg->CleanupMsg(10);
  EXPECT_EQ(4u, Newest(10).size());
  msg->CleanupMsg(2);
  EXPECT_EQ((std::vector<String>{u"msg-4", u"msg-3"}), Ids(Newest(10)));
  msg->CleanupMsg(0);
  EXPECT_TRUE(Newest(10).empty());
}

TEST_F(MsgMgrTest, UnreadMessagesAreCountedAndMarkedRead) {
  ncMsgInfo read = Message(3);
  read.state = 1;
  msg->RecordMsg({Message(1), Message(2), read});
  EXPECT_EQ(2, msg->GetUnreadMsgNum());
  msg->UpdateUnreadMsg({u"msg-1", u"unknown", u"it's unknown"});
  EXPECT_EQ(1, msg->GetUnreadMsgNum());
  EXPECT_EQ(1, Newest(10)[2].state);
}

TEST_F(MsgMgrTest, UpdateAndFilterRefreshesKnownAndReturnsNew) {
  msg->RecordMsg({Message(1), Message(2)});
  ncMsgInfo known = Message(1);
  known.stamp = 900;
  known.state = 1;
  known.duedate = 5;
  known.remindcontent = u"remind: O'Brien 100% 提醒";
  known.content = u"not taken";
  known.sender = u"not taken";
  std::vector<ncMsgInfo> fresh;
  msg->UpdateAndFilterMsg({Message(7), known, Message(5)}, fresh);
  EXPECT_EQ((std::vector<String>{u"msg-7", u"msg-5"}), Ids(fresh));

  const std::vector<ncMsgInfo> stored = Newest(10);
  EXPECT_EQ((std::vector<String>{u"msg-2", u"msg-1"}), Ids(stored));  // same rows, same order
  ncMsgInfo expected = Message(1);
  expected.stamp = 900;
  expected.state = 1;
  expected.duedate = 5;
  expected.remindcontent = known.remindcontent;
  ExpectSame(expected, stored[1]);
  EXPECT_EQ(900, msg->GetMaxStamp());
}

// Message ids are the server's and go into the statement as they are, so one with an
// apostrophe is refused; the batch stops there and keeps what was already inserted.
TEST_F(MsgMgrTest, ABatchStopsAtTheFirstRefusedMessage) {
  ncMsgInfo bad = Message(2);
  bad.msgId = u"it's";
  EXPECT_THROW_CODE(msg->RecordMsg({Message(1), bad, Message(3)}), 1);
  EXPECT_EQ(std::vector<String>{u"msg-1"}, Ids(Newest(10)));
}

TEST(MsgMgrInitTest, RefusesAnInvalidPath) {
  nsCOMPtr<ncMsgMgr> msg(NC_NEW(ncMsgMgr));
  EXPECT_THROW_CODE_MESSAGE(msg->Init(u""), 2, u"Path () is INVALID.");
  msg->Close();
}

}  // namespace
