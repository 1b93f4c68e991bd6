// The upgrade manager's decisions: what a fresh installation records, the range check, the
// move of the journals to the second root, and the outcome of a run.
#include "TestSupport.h"
#include "UpgradeTestSupport.h"
#include "docmgr/ncConfigDBInfo.h"
#include "docmgr/ncDBMgr.h"
#include "docmgr/ncDocMgrLibrary.h"
#include "docmgr/ncModuleAllocator.h"
#include "docmgr/ncUpgradeMgr.h"

using base::String;

namespace {

using test::StampVersion;

// A fresh installation records the current versions and the requested layout; an existing
// root converts only from layout 1 or 2, and only a conversion is recorded.
TEST(UpgradeMgrTest, FreshRootsAndConversionsRecordTheLayout) {
  const struct { int stored, requested, recorded; } cases[] = {{0, 2, 2}, {1, 2, 2}, {3, 1, 3}};
  for (const auto& layout : cases) {
    SCOPED_TRACE(layout.stored);
    test::TempDir dir;
    if (layout.stored) {
      StampVersion(dir.child("main"), 24, layout.stored);
      StampVersion(dir.child("logs"), 24, 0);
    }
    nsCOMPtr<ncIUpgradeMgr> upgrade(new ncUpgradeMgr);
    upgrade->Init(dir.child("main"), dir.child("logs"), {dir.child("local")}, layout.requested);
    EXPECT_EQ(layout.stored != 0, upgrade->NeedUpgrade());
    EXPECT_EQ(2, test::RunUpgradeToEnd(upgrade.get()).state);
    upgrade->Close();
    ncConfigDBInfo primary;
    primary.Init(dir.child("main"), false);
    EXPECT_EQ(layout.recorded, primary.GetViewVer());
    EXPECT_EQ(24, primary.GetVersionNum());
    EXPECT_EQ(24, test::StoredVersion(dir.child("local"), true));
  }
}

TEST(UpgradeMgrTest, VersionsOutOfRangeAreIncompatible) {
  for (int version : {3, 25}) {
    test::TempDir dir;
    StampVersion(dir.child("main"), version, 1);
    nsCOMPtr<ncIUpgradeMgr> upgrade(new ncUpgradeMgr);
    EXPECT_THROW_CODE_MESSAGE(upgrade->Init(dir.child("main"), dir.child("logs"), {}, 1), 1,
                              ncDocMgrLibrary::loadString(u"IDS_VERSION_INCOMPATIBLE"));
  }
}

TEST(UpgradeMgrTest, OlderRootsAreCountedAndJournalsMoveToTheSecondRoot) {
  test::TempDir dir;
  StampVersion(dir.child("main"), 6, 1);
  test::WriteFile(dir.path() + "/main/.kestrove.cache/log.db", "log");
  test::WriteFile(dir.path() + "/main/.kestrove.cache/msg.db", "msg");
  nsCOMPtr<ncIUpgradeMgr> upgrade(new ncUpgradeMgr);
  upgrade->Init(dir.child("main"), dir.child("logs"), {}, 2);
  ncUpgradeSummary summary;
  upgrade->GetSummary(summary);
  EXPECT_EQ((24 - 6) * 2 + 1, summary.total);  // both roots at 6, plus the view layout
  for (const std::string journal : {"log", "msg"}) {
    EXPECT_EQ(journal, test::ReadFile(dir.path() + "/logs/.kestrove.cache/" + journal + ".db"));
    EXPECT_FALSE(test::Exists(dir.path() + "/main/.kestrove.cache/" + journal + ".db"));
  }

  // The moved journals are no databases: the first step of the second root fails on
  // them, and no version is recorded past it.
  summary = test::RunUpgradeToEnd(upgrade.get());
  EXPECT_EQ(3, summary.state);
  EXPECT_FALSE(summary.message.empty());
  EXPECT_EQ(0.0, summary.done);
  upgrade->Close();
  EXPECT_EQ(6, test::StoredVersion(dir.child("logs")));
}

TEST(UpgradeMgrTest, MovedJournalKeepsWhatWasStillInItsWriteAheadLog) {
  test::TempDir dir;
  StampVersion(dir.child("main"), 24, 1);
  // A log.db left by a client that stopped without closing it: its rows are in log.db-wal.
  nsCOMPtr<ncDBMgr> live(NC_NEW(ncDBMgr));
  live->Open(dir.child("live.db"));
  for (const char16_t* sql : {u"create table t (x int)", u"insert into t values (1), (2), (3)"}) live->ExecuteSql(sql);
  const std::string data = dir.path() + "/main/.kestrove.cache/";
  for (const std::string wal : {"", "-wal"})
    test::WriteFile(data + "log.db" + wal, test::ReadFile(dir.path() + "/live.db" + wal));
  live->Close();

  nsCOMPtr<ncIUpgradeMgr> upgrade(new ncUpgradeMgr);
  upgrade->Init(dir.child("main"), dir.child("logs"), {}, 1);
  upgrade->Close();
  EXPECT_FALSE(test::Exists(data + "log.db-wal"));
  nsCOMPtr<ncDBMgr> moved(NC_NEW(ncDBMgr));
  moved->Open(dir.child("logs/.kestrove.cache/log.db"));
  EXPECT_EQ((test::Rows{{"3"}}), test::Query(moved.get(), "select count(*) from t"));
}

}  // namespace
