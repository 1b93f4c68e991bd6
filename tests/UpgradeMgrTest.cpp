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

// The journals of a root at version 6 move whole to the second root: log.db with the rows
// still in its write-ahead log (its client stopped without closing it), msg.db as it is. That
// msg.db is no database, so the first step of the second root fails and records no version.
TEST(UpgradeMgrTest, OlderRootsAreCountedAndTheirJournalsMoveWholeToTheSecondRoot) {
  test::TempDir dir;
  StampVersion(dir.child("main"), 6, 1);
  const std::string data = dir.path() + "/main/.kestrove.cache/";
  nsCOMPtr<ncDBMgr> live(NC_NEW(ncDBMgr));
  live->Open(dir.child("live.db"));
  for (const char16_t* sql : {u"create table t (x int)", u"insert into t values (1), (2), (3)"}) live->ExecuteSql(sql);
  for (const std::string wal : {"", "-wal"})
    test::WriteFile(data + "log.db" + wal, test::ReadFile(dir.path() + "/live.db" + wal));
  live->Close();
  test::WriteFile(data + "msg.db", "msg");

  nsCOMPtr<ncIUpgradeMgr> upgrade(new ncUpgradeMgr);
  upgrade->Init(dir.child("main"), dir.child("logs"), {}, 2);
  ncUpgradeSummary summary;
  upgrade->GetSummary(summary);
  EXPECT_EQ((24 - 6) * 2 + 1, summary.total);  // both roots at 6, plus the view layout
  for (const char* file : {"log.db", "log.db-wal", "msg.db"}) EXPECT_FALSE(test::Exists(data + file)) << file;
  EXPECT_EQ("msg", test::ReadFile(dir.path() + "/logs/.kestrove.cache/msg.db"));
  nsCOMPtr<ncDBMgr> moved(NC_NEW(ncDBMgr));
  moved->Open(dir.child("logs/.kestrove.cache/log.db"));
  EXPECT_EQ((test::Rows{{"3"}}), test::Query(moved.get(), "select count(*) from t"));
  moved->Close();

  summary = test::RunUpgradeToEnd(upgrade.get());
  EXPECT_EQ(3, summary.state);
  EXPECT_FALSE(summary.message.empty());
  EXPECT_EQ(0.0, summary.done);
  upgrade->Close();
  EXPECT_EQ(6, test::StoredVersion(dir.child("logs")));
}

}  // namespace
