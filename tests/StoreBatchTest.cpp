// The batch and bulk-writer interfaces of the cache and of the sync log on real files: a
// batch is one transaction, a failed batch (a refused statement or a refused commit) leaves
// nothing behind, other threads wait for it, and the bulk writers store exactly what the
// text statements store.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <thread>

#include "TestSupport.h"
#include "docmgr/ncCacheMgr.h"
#include "docmgr/ncDBMgr.h"
#include "docmgr/ncLogMgr.h"
#include "docmgr/ncModuleAllocator.h"
#include "docmgr/ncICacheMgr.h"
#include "docmgr/ncILogMgr.h"
#include "docmgr/ncICacheBulkWriter.h"
#include "docmgr/ncILogBulkWriter.h"
#include "docmgr/ncIStoreBatch.h"

namespace {

using base::String;

// What other connections see, and the way in for fixtures the stores would refuse.
nsCOMPtr<ncDBMgr> SecondConnection(const std::string& file) {
  nsCOMPtr<ncDBMgr> db(NC_NEW(ncDBMgr));
  db->Open(base::FromUtf8(file));
  return db;
}

int64_t Number(const std::string& file, const std::string& sql) {
  return std::stoll(test::Query(SecondConnection(file).get(), sql).at(0).at(0));
}

ncCacheInfo File(int n) {
  ncCacheInfo info;
  info.id = u"gns://BATCH/" + base::ToString(n);
  info.size = n;
  return info;
}

// Every column of the rows the query selects, with its storage class (quote() writes text
// in quotes, numbers bare, NULL as NULL).
test::Rows QuotedRows(ncDBMgr* db, const std::string& columns, const std::string& rest) {
  std::string select;
  for (size_t from = 0; from < columns.size();) {
    const size_t comma = std::min(columns.find(',', from), columns.size());
    select += (select.empty() ? "quote(" : ", quote(") + columns.substr(from, comma - from) + ")";
    from = comma + 1;
  }
  return test::Query(db, "select " + select + " " + rest);
}

String FilePath(int n) { return u"batch\\file " + base::ToString(n) + u".txt"; }

class CacheBatchTest : public ::testing::Test {
 protected:
  void SetUp() override { Open(); }
  void TearDown() override { cache_->Close(); }
  void Open() {
    cache_ = NC_NEW(ncCacheMgr);
    cache_->Init(base::FromUtf8(file_), false);
    batch_ = do_QueryInterface<ncIStoreBatch>(static_cast<ncICacheMgr*>(cache_.get()));
    bulk_ = do_QueryInterface<ncICacheBulkWriter>(static_cast<ncICacheMgr*>(cache_.get()));
    ASSERT_TRUE(batch_ && bulk_);
  }
  // Plants, behind the store, a trigger that refuses the name "poison" and one that leaves a
  // dangling reference for "orphan" names, checked only at commit (a deferred foreign key).
  void PlantFaults() {
    cache_->Close();
    nsCOMPtr<ncDBMgr> planter = SecondConnection(file_);
    planter->ExecuteSql(u"create table tb_owner (id text primary key)");
    planter->ExecuteSql(u"create table tb_claim (owner text references tb_owner(id) deferrable initially deferred)");
    planter->ExecuteSql(u"create trigger trg_poison before insert on tb_cacheInfo when new.name = 'poison' begin "
                        u"select raise(abort, 'refused'); end");
    planter->ExecuteSql(u"create trigger trg_orphan after insert on tb_cacheInfo when new.name like 'orphan%' begin "
                        u"insert into tb_claim values ('nobody'); end");
    planter->Close();
    Open();
    cache_->GetDBMgr()->ExecuteSql(u"PRAGMA foreign_keys=ON;");
  }
  int64_t CommittedRows() { return Number(file_, "select count(*) from tb_cacheInfo"); }

  test::TempDir dir_;
  std::string file_ = dir_.path() + "/cache.db";
  nsCOMPtr<ncCacheMgr> cache_;
  nsCOMPtr<ncIStoreBatch> batch_;
  nsCOMPtr<ncICacheBulkWriter> bulk_;
};

TEST_F(CacheBatchTest, ThousandsOfUpdatesBecomeVisibleTogetherAtCommitAndABatchDoesNotNest) {
  batch_->BeginBatch();
  for (int n = 0; n < 5000; ++n) cache_->Update(FilePath(n), File(n));
  EXPECT_THROW_CODE(batch_->BeginBatch(), 1);  // refused, and the outer batch goes on
  ncCacheInfo read;
  EXPECT_TRUE(cache_->GetInfoByPath(FilePath(4999), read));  // the batch reads its own writes
  EXPECT_EQ(0, CommittedRows());
  batch_->CommitBatch();
  EXPECT_EQ(5000, CommittedRows());
}

// A batch fails at a refused statement (and its caller rolls back) or at its commit (a
// deferred key): either way none of its writes stays, and the earlier row is as it was.
TEST_F(CacheBatchTest, AFailedBatchLeavesNothingAndReleasesTheConnection) {
  cache_->Update(u"kept.txt", File(-1));
  PlantFaults();
  for (bool atCommit : {false, true}) {
    SCOPED_TRACE(atCommit ? "refused commit" : "refused statement");
    batch_->BeginBatch();
    for (int n = 0; n < 1000; ++n) n % 2 ? cache_->Update(FilePath(n), File(n)) : bulk_->UpdateBulk(FilePath(n), File(n));
    cache_->UpdateState(u"kept.txt", 4);
    if (atCommit) {
      cache_->Update(u"orphan.txt", File(1000));
      EXPECT_THROW_CODE(batch_->CommitBatch(), 1);
    } else {
      EXPECT_THROW_CODE(cache_->Update(u"poison", File(1000)), 1);
      EXPECT_THROW_CODE(bulk_->UpdateBulk(u"poison", File(1000)), 1);
      EXPECT_THROW_CODE(cache_->Update(u"", File(1001)), 2);
      EXPECT_THROW_CODE(bulk_->UpdateBulk(u"", File(1001)), 2);
      batch_->RollbackBatch();
    }
    EXPECT_EQ(1, CommittedRows());
    ncCacheInfo read;
    ASSERT_TRUE(cache_->GetInfoByPath(u"kept.txt", read));
    EXPECT_EQ(0, read.state);
    EXPECT_FALSE(cache_->GetInfoByPath(FilePath(0), read));
  }

  // Neither a transaction nor the connection's lock is left behind: another thread's write
  // gets through and is durable at once.
  auto other = std::async(std::launch::async, [cache = cache_] { cache->Update(u"after.txt", File(2000)); });
  ASSERT_EQ(std::future_status::ready, other.wait_for(std::chrono::seconds(30)));
  other.get();
  EXPECT_EQ(2, CommittedRows());
}

// The kept statement with bound values stores, column by column and type by type, what
// Update's statement text stores: quotes, initials of names in Chinese, a name that is not
// valid UTF-16, ids whose parent is derived.
TEST_F(CacheBatchTest, BulkRowsAreUpdatesRows) {
  nsCOMPtr<ncCacheMgr> other(NC_NEW(ncCacheMgr));
  other->Init(base::FromUtf8(dir_.path() + "/bulk.db"), false);
  nsCOMPtr<ncICacheBulkWriter> bulk = do_QueryInterface<ncICacheBulkWriter>(static_cast<ncICacheMgr*>(other.get()));
  const String names[] = {u"plain.txt", u"it's here.doc", u"\u62a5\u544a's \u6587\u4ef6.txt", u"\u540d\u5b57",
                          String(u"half ") + char16_t(0xD800) + u".txt"};
  ncCacheInfo info;
  info.otag = u"o'tag";
  info.isDir = true;
  info.state = 3;
  info.serverMTime = 1700000000123456;
  info.clientMTime = -5;
  info.size = 1LL << 40;
  info.type = 2;
  info.typeName = u"type'name";
  info.viewType = 1;
  info.viewName = u"view";
  info.attr = 7;
  info.errcode = -2;
  info.execTask = 9;
  info.watermark = true;
  for (const String& name : names) {
    info.id = u"gns://PARENT'S/" + name;
    cache_->Update(u"folder\\" + name, info);
    bulk->UpdateBulk(u"folder\\" + name, info);
  }
  const std::string columns =
      "id,otag,isDir,state,serverMTime,clientMTime,size,name,parentPath,acronym,type,typeName,viewType,viewName,"
      "parentId,attr,errcode,execTask,watermark";
  const test::Rows written = QuotedRows(cache_->GetDBMgr(), columns, "from tb_cacheInfo order by name");
  EXPECT_EQ(5u, written.size());
  EXPECT_EQ(written, QuotedRows(other->GetDBMgr(), columns, "from tb_cacheInfo order by name"));
  other->Close();
}

// A plain statement of another thread must not slip into the open batch (where the batch's
// rollback would take it along): it waits until the batch ends, then commits on its own.
TEST_F(CacheBatchTest, AnotherThreadsStatementWaitsForTheBatchAndOutlivesItsRollback) {
  batch_->BeginBatch();
  cache_->Update(FilePath(1), File(1));
  std::atomic<bool> started{false}, finished{false};
  nsCOMPtr<ncCacheMgr> cache = cache_;
  std::thread other([&, cache] {
    started = true;
    cache->Update(u"other thread.txt", File(2));
    finished = true;
  });
  while (!started) std::this_thread::yield();
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  EXPECT_FALSE(finished) << "the other thread's write went through while the batch was open";
  batch_->RollbackBatch();
  other.join();

  ncCacheInfo read;
  EXPECT_FALSE(cache_->GetInfoByPath(FilePath(1), read));
  EXPECT_TRUE(cache_->GetInfoByPath(u"other thread.txt", read));
  EXPECT_EQ(1, CommittedRows());
}

TEST(LogBatchTest, EntriesAndTheirCounterCommitTogetherOrNotAtAll) {
  test::TempDir dir;
  const std::string file = dir.path() + "/log.db";
  nsCOMPtr<ncLogMgr> log(NC_NEW(ncLogMgr));
  log->Init(base::FromUtf8(file));
  nsCOMPtr<ncIStoreBatch> batch = do_QueryInterface<ncIStoreBatch>(static_cast<ncILogMgr*>(log.get()));
  nsCOMPtr<ncILogBulkWriter> bulk = do_QueryInterface<ncILogBulkWriter>(static_cast<ncILogMgr*>(log.get()));
  ASSERT_TRUE(batch && bulk);
  ncSyncLogInfo entry;
  entry.taskType = 4;
  entry.relPath = u"O'Brien\\report.docx";
  entry.newName = u"new'name";
  entry.size = -1;
  entry.time = 1700000000;
  entry.remark = u"\u5907\u6ce8";

  for (int expected : {0, 3000}) {
    batch->BeginBatch();
    for (int n = 0; n < 3000; ++n) log->RecordSyncLog(1, entry);
    for (int n = 0; n < 3000; ++n) bulk->RecordSyncLogBulk(2, entry);
    EXPECT_EQ(0, Number(file, "select count(*) from tb_synclog"));
    expected ? batch->CommitBatch() : batch->RollbackBatch();
    EXPECT_EQ(2 * expected, Number(file, "select count(*) from tb_synclog"));
    EXPECT_EQ(expected, Number(file, "select logCount from tb_logstat where logType = 1"));
    EXPECT_EQ(expected, Number(file, "select logCount from tb_logstat where logType = 2"));
  }
  // The bound entries are the recorded ones, column by column.
  const std::string columns = "taskType,relPath,newName,size,time,remark,visible";
  EXPECT_EQ(QuotedRows(log->GetDBMgr(), columns, "from tb_synclog where logType = 1 limit 1"),
            QuotedRows(log->GetDBMgr(), columns, "from tb_synclog where logType = 2 limit 1"));
  log->Close();
}

}  // namespace
