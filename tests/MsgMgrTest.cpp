// The message store in a real msg.db.
#include <gtest/gtest.h>

#include "TestSupport.h"
#include "docmgr/ncModuleAllocator.h"
#include "docmgr/ncMsgMgr.h"

using base::String;

namespace {

// The fields besides msgId, isDir, state and stamp, which the tests set on purpose.
String ncMsgInfo::* const kTexts[] = {&ncMsgInfo::relPath, &ncMsgInfo::sender, &ncMsgInfo::recipient,
    &ncMsgInfo::auditorName, &ncMsgInfo::auditMsg, &ncMsgInfo::requester, &ncMsgInfo::previousAuditor, &ncMsgInfo::processName,
    &ncMsgInfo::nextAuditor, &ncMsgInfo::creator, &ncMsgInfo::modifier, &ncMsgInfo::content, &ncMsgInfo::virusadmin,
    &ncMsgInfo::remindcontent};
int32_t ncMsgInfo::* const kInts[] = {&ncMsgInfo::msgType, &ncMsgInfo::accessorType, &ncMsgInfo::csfLevel,
    &ncMsgInfo::allowPermValue, &ncMsgInfo::refusePermValue, &ncMsgInfo::perm, &ncMsgInfo::auditResult, &ncMsgInfo::docAuditType,
    &ncMsgInfo::nextLevel, &ncMsgInfo::applyCsfLevel, &ncMsgInfo::operationType, &ncMsgInfo::isInherit};
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

// Every field in one text, so a comparison names the field that differs.
std::string Dump(const ncMsgInfo& m) {
  std::string out = base::ToUtf8(m.msgId) + " " + std::to_string(m.isDir) + " " + std::to_string(m.state) + " " +
                    std::to_string(m.stamp);
  for (auto field : kTexts) out += "|" + base::ToUtf8(m.*field);
  for (auto field : kInts) out += "|" + std::to_string(m.*field);
  for (auto field : kLongs) out += "|" + std::to_string(m.*field);
  return out;
}

std::vector<String> Ids(const std::vector<ncMsgInfo>& msgs) {
  std::vector<String> ids;
  for (const ncMsgInfo& m : msgs) ids.push_back(m.msgId);
  return ids;
}

TEST(MsgMgrTest, FieldsRoundTripNewestFirstAndKnownMessagesAreRefreshedNotAdded) {
  test::TempDir dir;
  nsCOMPtr<ncMsgMgr> msg(NC_NEW(ncMsgMgr));
  msg->Init(dir.child("msg.db"));
  auto newest = [&](int num) {
    std::vector<ncMsgInfo> out;
    msg->GetMsg(num, out);
    return out;
  };
  msg->RecordMsg({Message(1), Message(2), Message(3)});
  const std::vector<ncMsgInfo> all = newest(10);
  ASSERT_EQ(3u, all.size());
  for (int n = 0; n < 3; ++n) EXPECT_EQ(Dump(Message(3 - n)), Dump(all[n]));
  EXPECT_EQ(std::vector<String>{u"msg-3"}, Ids(newest(1)));
  EXPECT_EQ(103, msg->GetMaxStamp());
  msg->CleanupMsg(2);  // keeps the newest
  EXPECT_EQ((std::vector<String>{u"msg-3", u"msg-2"}), Ids(newest(10)));
  msg->UpdateUnreadMsg({u"msg-2", u"unknown", u"it's unknown"});
  EXPECT_EQ(1, msg->GetUnreadMsgNum());
  EXPECT_EQ(1, newest(10)[1].state);

  // A known message takes the new stamp, state, due date and reminder, and nothing else.
  ncMsgInfo expected = Message(2);
  expected.stamp = 900;
  expected.state = 1;
  expected.duedate = 5;
  expected.remindcontent = u"remind: O'Brien 100% 提醒";
  ncMsgInfo known = expected;
  known.content = known.sender = u"not taken";
  std::vector<ncMsgInfo> fresh;
  msg->UpdateAndFilterMsg({Message(7), known, Message(5)}, fresh);
  EXPECT_EQ((std::vector<String>{u"msg-7", u"msg-5"}), Ids(fresh));
  const std::vector<ncMsgInfo> stored = newest(10);
  EXPECT_EQ((std::vector<String>{u"msg-3", u"msg-2"}), Ids(stored));
  EXPECT_EQ(Dump(expected), Dump(stored[1]));
  EXPECT_EQ(900, msg->GetMaxStamp());
  msg->Close();
}

}  // namespace
