// The stores that keep journals (transfer resume records, sync log, messages) refuse an
// invalid database path before they open anything.
#include <gtest/gtest.h>

#include "TestSupport.h"
#include "docmgr/ncLogMgr.h"
#include "docmgr/ncModuleAllocator.h"
#include "docmgr/ncMsgMgr.h"
#include "docmgr/ncRelayMgr.h"

namespace {

TEST(JournalInitTest, EveryStoreRefusesAnInvalidPath) {
  nsCOMPtr<ncRelayMgr> relay(NC_NEW(ncRelayMgr));
  nsCOMPtr<ncLogMgr> log(NC_NEW(ncLogMgr));
  nsCOMPtr<ncMsgMgr> msg(NC_NEW(ncMsgMgr));
  EXPECT_THROW_CODE_MESSAGE(relay->Init(u""), 2, u"Path () is INVALID.");
  EXPECT_THROW_CODE_MESSAGE(log->Init(u""), 2, u"Path () is INVALID.");
  EXPECT_THROW_CODE_MESSAGE(msg->Init(u""), 2, u"Path () is INVALID.");
  relay->Close();  // nothing was opened
  log->Close();
  msg->Close();
}

}  // namespace
