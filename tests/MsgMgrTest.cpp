// The message store in a real msg.db.
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

// Every field of each message in one text, so a comparison names the field that differs.
std::vector<std::string> Dump(const std::vector<ncMsgInfo>& msgs) {
  std::vector<std::string> dump;
  for (const ncMsgInfo& m : msgs) {
    std::string out = base::ToUtf8(m.msgId) + " " + std::to_string(m.isDir) + " " + std::to_string(m.state) + " " +
                      std::to_string(m.stamp);
    for (auto field : kTexts) out += "|" + base::ToUtf8(m.*field);
    for (auto field : kInts) out += "|" + std::to_string(m.*field);
    for (auto field : kLongs) out += "|" + std::to_string(m.*field);
    dump.push_back(out);
  }
  return dump;
}

TEST(MsgMgrTest, FieldsRoundTripNewestFirstAndKnownMessagesAreRefreshedNotAdded) {
  test::TempDir dir;
  nsCOMPtr<ncMsgMgr> msg(NC_NEW(ncMsgMgr));
  msg->Init(dir.child("msg.db"));
  auto newest = [&](int num) {
    std::vector<ncMsgInfo> out;
    msg->GetMsg(num, out);
    return Dump(out);
  };
  msg->RecordMsg({Message(1), Message(2), Message(3)});
  EXPECT_EQ(Dump({Message(3), Message(2), Message(1)}), newest(10));
  EXPECT_EQ(Dump({Message(3)}), newest(1));
  EXPECT_EQ(103, msg->GetMaxStamp());
  msg->CleanupMsg(2);  // keeps the newest
  msg->UpdateUnreadMsg({u"msg-2", u"unknown", u"it's unknown"});
  ncMsgInfo read = Message(2);
  read.state = 1;
  EXPECT_EQ(Dump({Message(3), read}), newest(10));
  EXPECT_EQ(1, msg->GetUnreadMsgNum());

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
  EXPECT_EQ(Dump({Message(7), Message(5)}), Dump(fresh));
  EXPECT_EQ(Dump({Message(3), expected}), newest(10));
  EXPECT_EQ(900, msg->GetMaxStamp());
  msg->Close();
}

}  // namespace
