// The message store in a real msg.db.
#include <gtest/gtest.h>

#include "TestSupport.h"
#include "docmgr/ncModuleAllocator.h"
#include "docmgr/ncMsgMgr.h"

using base::String;

namespace {

// The fields besides msgId, isDir, state and stamp, which the tests set on purpose.
String ncMsgInfo::* const kTexts[] = {
    &ncMsgInfo::relPath,   &ncMsgInfo::sender,      &ncMsgInfo::recipient,       &ncMsgInfo::auditorName,
    &ncMsgInfo::auditMsg,  &ncMsgInfo::requester,   &ncMsgInfo::previousAuditor, &ncMsgInfo::processName,
    &ncMsgInfo::nextAuditor, &ncMsgInfo::creator,   &ncMsgInfo::modifier,        &ncMsgInfo::content,
    &ncMsgInfo::virusadmin, &ncMsgInfo::remindcontent};
int32_t ncMsgInfo::* const kInts[] = {
    &ncMsgInfo::msgType,      &ncMsgInfo::accessorType, &ncMsgInfo::csfLevel,      &ncMsgInfo::allowPermValue,
    &ncMsgInfo::refusePermValue, &ncMsgInfo::perm,      &ncMsgInfo::auditResult,   &ncMsgInfo::docAuditType,
    &ncMsgInfo::nextLevel,    &ncMsgInfo::applyCsfLevel, &ncMsgInfo::operationType, &ncMsgInfo::isInherit};
int64_t ncMsgInfo::* const kLongs[] = {&ncMsgInfo::shareingTime, &ncMsgInfo::deadlineTime, &ncMsgInfo::duedate};

// Every field distinct, and every text with an apostrophe, a percent sign and Chinese.
ncMsgInfo Message(int n) {
  ncMsgInfo m;
  m.msgId = base::Format(u"msg-%d", n);
  m.isDir = n % 2 == 1;
  m.stamp = 100 + n;
  int k = 0;
  for (auto field : kTexts) m.*field = base::Format(u"%d.%d: it's 100%% %%s 消息", n, ++k);
  for (auto field : kInts) m.*field = ++k % 2 ? -(100 * n + k) : 100 * n + k;
  for (auto field : kLongs) m.*field = 1718000000000000LL + 100 * n + ++k;
  return m;
}

void ExpectSame(const ncMsgInfo& a, const ncMsgInfo& b) {
  EXPECT_EQ(a.msgId, b.msgId);
  EXPECT_EQ(a.isDir, b.isDir);
  EXPECT_EQ(a.state, b.state);
  EXPECT_EQ(a.stamp, b.stamp);
  for (auto field : kTexts) EXPECT_EQ(a.*field, b.*field);
  for (auto field : kInts) EXPECT_EQ(a.*field, b.*field) << a.*field;
  for (auto field : kLongs) EXPECT_EQ(a.*field, b.*field) << a.*field;
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

TEST_F(MsgMgrTest, EveryFieldRoundTripsNewestFirstCleanupKeepsTheNewestAndUnreadAreCounted) {
  EXPECT_EQ(0, msg->GetMaxStamp());
  msg->RecordMsg({Message(1), Message(2), Message(3)});
  const std::vector<ncMsgInfo> all = Newest(10);
  ASSERT_EQ(3u, all.size());
  for (int n = 0; n < 3; ++n) ExpectSame(Message(3 - n), all[n]);
  EXPECT_EQ(std::vector<String>{u"msg-3"}, Ids(Newest(1)));
  EXPECT_EQ(103, msg->GetMaxStamp());

  // Cleanup keeps the newest.
  msg->CleanupMsg(10);
  EXPECT_EQ(3u, Newest(10).size());
  msg->CleanupMsg(2);
  EXPECT_EQ((std::vector<String>{u"msg-3", u"msg-2"}), Ids(Newest(10)));
  msg->CleanupMsg(0);
  EXPECT_TRUE(Newest(10).empty());

  // Unread messages are counted and marked read.
  ncMsgInfo read = Message(3);
  read.state = 1;
  msg->RecordMsg({Message(1), Message(2), read});
  EXPECT_EQ(2, msg->GetUnreadMsgNum());
  msg->UpdateUnreadMsg({u"msg-1", u"unknown", u"it's unknown"});
  EXPECT_EQ(1, msg->GetUnreadMsgNum());
  EXPECT_EQ(1, Newest(10)[2].state);
}

TEST_F(MsgMgrTest, UpdateAndFilterRefreshesKnownAndReturnsNewAndABatchStopsAtARefusedMessage) {
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

  // A message id with an apostrophe is stored as it is, and found again by it.
  ncMsgInfo quoted = Message(4);
  quoted.msgId = u"it's";
  msg->RecordMsg({Message(3), quoted, Message(6)});
  EXPECT_EQ((std::vector<String>{u"msg-6", u"it's", u"msg-3", u"msg-2", u"msg-1"}), Ids(Newest(10)));
  msg->UpdateUnreadMsg({u"it's"});
  EXPECT_EQ(1, Newest(10)[1].state);
}

}  // namespace
