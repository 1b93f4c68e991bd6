// The document cache on real cache.db files: the write path, subtree rename and delete,
// view mode, the lookups and listings, the unsynchronised queries and the name search.
#include <sqlite3.h>

#include <chrono>
#include <climits>
#include <future>

#include "TestSupport.h"
#include "docmgr/ncCacheMgr.h"
#include "docmgr/ncModuleAllocator.h"

namespace {

using base::String;
using test::Rows;

ncCacheInfo Record(const String& id, int isDir = 0, int state = 0, const String& view = String(), int viewType = 0) {
  ncCacheInfo info;
  info.id = id;
  info.isDir = isDir;
  info.state = state;
  info.viewName = view;
  info.viewType = viewType;
  return info;
}

std::vector<String> Names(const std::vector<ncCacheSearchInfo>& hits, String ncCacheSearchInfo::*field) {
  std::vector<String> names;
  for (const auto& hit : hits) names.push_back(hit.*field);
  return names;
}

class CacheMgrTest : public ::testing::Test {
 protected:
  void Open(bool viewMode) {  // releases, and so closes, the store open before
    cache_ = NC_NEW(ncCacheMgr);
    cache_->Init(dir_.child("cache.db"), viewMode);
  }
  void SetUp() override { Open(false); }

  Rows Query(const std::string& sql) { return test::Query(cache_->GetDBMgr(), sql); }
  // Every row as "parentPath|name", in path order.
  Rows Paths() { return Query("select parentPath || '|' || name from tb_cacheInfo order by 1"); }
  void Add(const String& relPath, int isDir = 0, int state = 0, const String& id = String()) {
    cache_->Update(relPath, Record(id.empty() ? u"gns://R/" + base::ToString(++added_) : id, isDir, state));
  }

  test::TempDir dir_;
  nsCOMPtr<ncCacheMgr> cache_;
  int added_ = 0;
};

TEST_F(CacheMgrTest, UpdateSplitsThePathDerivesTheParentIdAndStoresEveryColumn) {
  ncCacheInfo info = Record(u"gns://A/B/C", 1, -4);
  info.otag = u"%d%s";  // directives inside values stay as they are
  info.serverMTime = INT64_MIN;
  info.clientMTime = INT64_MAX;
  info.size = 5000000000;
  info.type = INT32_MIN;
  info.typeName = u"it's";
  info.viewType = 7;
  info.viewName = u"V";
  info.attr = 2;
  info.errcode = -22;
  info.execTask = 1;
  info.watermark = 5;
  cache_->Update(u"a\\b\\c.txt", info);
  cache_->Update(u"\\x\\", Record(u"gns://A"));
  cache_->Update(u"it's 文档", Record(u"gns://A/Q"));
  ncCacheInfo special = Record(u"gns://A/B/D");
  special.type = NC_CACHE_SPECIAL_TYPE;
  cache_->Update(u"special", special);

  EXPECT_EQ((Rows{{"a\\b", "c.txt", "B"}, {"", "it's 文档", "A"}, {"", "special", ""}, {"", "x", ""}}),
            Query("select parentPath, name, parentId from tb_cacheInfo order by name"));
  EXPECT_EQ("it's WD", Query("select acronym from tb_cacheInfo where id='gns://A/Q'")[0][0]);
  EXPECT_EQ((Rows{{"%d%s", "1", "-4", "-9223372036854775808", "9223372036854775807", "5000000000", "-2147483648",
                   "it's", "7", "V", "2", "-22", "1", "5"}}),
            Query("select otag, isDir, state, serverMTime, clientMTime, size, type, typeName, viewType, viewName, attr, "
                  "errcode, execTask, watermark from tb_cacheInfo where id='gns://A/B/C'"));

  // A new id at the same place, and the same id at a new place, each leave one row.
  cache_->Update(u"a\\b\\c.txt", Record(u"gns://A/B/E"));
  cache_->Update(u"moved.txt", Record(u"gns://A/B/E"));
  EXPECT_EQ((Rows{{"gns://A/B/E", "moved.txt"}}), Query("select id, name from tb_cacheInfo where id in ('gns://A/B/C', 'gns://A/B/E')"));

  ncCacheDocInfo byId;
  EXPECT_THROW_CODE_MESSAGE(cache_->GetInfoByDocId(u"local-1", byId), 2, u"Gns (local-1) is INVALID.");
}

TEST_F(CacheMgrTest, RenameAndDeleteReachTheSubtreeWhateverQuotesOrWildcardsTheNamesHold) {
  for (const char16_t* folder : {u"a", u"a\\b", u"a\\b\\x", u"a\\bc", u"it's 50%_x", u"a_b"}) Add(folder, 1);
  for (const char16_t* file : {u"a\\b\\f1", u"a\\b\\x\\f2", u"a\\bc\\g", u"it's 50%_x\\sub\\o'k", u"a_b\\in",
                               u"a_b\\sub\\in", u"axb\\in", u"axb\\sub\\in", u"a_bc\\in"})
    Add(file);
  cache_->Rename(u"a\\b", u"a\\项目");
  cache_->Rename(u"it's 50%_x", u"new 'one'");
  EXPECT_EQ((Rows{{"a\\bc|g"}, {"a\\项目\\x|f2"}, {"a\\项目|f1"}, {"a\\项目|x"}, {"a|bc"}, {"a|项目"}}),
            Query("select parentPath || '|' || name from tb_cacheInfo where parentPath like 'a\\%' or parentPath = 'a' "
                  "order by 1"));
  EXPECT_EQ("XM", Query("select acronym from tb_cacheInfo where name='项目'")[0][0]);
  EXPECT_EQ("new 'one'\\sub", Query("select parentPath from tb_cacheInfo where name='o''k'")[0][0]);
  const Rows before = Paths();
  EXPECT_THROW_CODE_MESSAGE(cache_->Rename(u"a\\项目", u"x\\BC"), 2,
                            u"Cannot rename a\\项目 to x\\BC: a rename must stay in the same folder.");
  EXPECT_EQ(before, Paths());

  // "_" in a folder name is a LIKE wildcard: the subtree delete of a_b also reaches the
  // deeper rows of axb (its direct children are compared exactly and stay).
  cache_->Delete(u"a_b", true);
  EXPECT_EQ(1u, Query("select * from tb_cacheInfo where name='a_b'").size());  // onlyChild keeps the folder
  EXPECT_EQ((Rows{{"a_bc"}, {"axb"}}), Query("select parentPath from tb_cacheInfo where name='in' order by 1"));
  cache_->Delete(u"new 'one'", false);
  EXPECT_EQ(0u, Query("select * from tb_cacheInfo where parentPath like 'new%' or name like 'new%'").size());
}

// Statements run on a second connection, to plant what the store itself would never write.
void InjectFailure(const String& path, std::initializer_list<const char16_t*> statements) {
  nsCOMPtr<ncDBMgr> client(NC_NEW(ncDBMgr));
  client->Open(path);
  for (const char16_t* sql : statements) client->ExecuteSql(sql);
}

// A rename that fails, at a child colliding with a stale row or at its commit, changes
// nothing and leaves neither a transaction nor the lock behind.
TEST_F(CacheMgrTest, FailedRenameLeavesNothingNoTransactionAndNoLock) {
  for (const char16_t* folder : {u"a", u"a\\b"}) Add(folder, 1);
  Add(u"a\\b\\f.txt");
  Add(u"a\\c\\f.txt");  // a stale row where the renamed folder's child will want to go
  for (bool atCommit : {false, true}) {
    SCOPED_TRACE(atCommit ? "at the commit" : "at a child");
    if (atCommit) {  // a deferred foreign key that only the commit checks
      cache_->Delete(u"a\\c", false);
      InjectFailure(dir_.child("cache.db"),
                    {u"create table owners (k text primary key)",
                     u"create table claims (k text references owners(k) deferrable initially deferred)",
                     u"create trigger claim after update of name on tb_cacheInfo begin "
                     u"insert into claims values('none'); end"});
      cache_->GetDBMgr()->ExecuteSql(u"PRAGMA foreign_keys=ON");
    }
    const Rows before = Paths();
    EXPECT_THROW_CODE(cache_->Rename(u"a\\b", u"a\\c"), 1);
    EXPECT_NE(0, sqlite3_get_autocommit(cache_->GetDBMgr()->GetHandle())) << "a transaction stays open";
    EXPECT_EQ(before, Paths());
    std::future<void> other = std::async(std::launch::async, [this, atCommit] {
      Add(atCommit ? u"a\\second thread" : u"a\\first thread");
    });
    ASSERT_EQ(std::future_status::ready, other.wait_for(std::chrono::seconds(30))) << "the lock is still held";
    EXPECT_EQ(before.size() + 1, Paths().size());
  }
}

// Past SQLite's 50,000-byte cap on LIKE patterns (18,000 Chinese units are 54,000 bytes).
TEST_F(CacheMgrTest, LongPathSubtreesAndMultiStatementWritesAllOrNothing) {
  const String longName(18000, u'\u6587');
  for (const String& folder : {longName, longName + u"\\child"}) Add(folder, 1);
  Add(longName + u"\\child\\f.txt");
  Add(u"other");
  cache_->UpdateOtag(longName + u"\\child\\f.txt", u"");
  EXPECT_EQ((Rows{{"", "1"}, {"", "1"}, {"", "0"}}),
            Query("select otag, isDir from tb_cacheInfo where name <> 'other' order by length(parentPath)"));
  cache_->Delete(longName, false);
  EXPECT_EQ((Rows{{"|other"}}), Paths());

  for (const char16_t* folder : {u"a", u"a\\b"}) Add(folder, 1);
  Add(u"a\\b\\f.txt");
  cache_->UpdateOtag(u"a\\b\\f.txt", u"t1");
  cache_->UpdateOtag(u"a", u"t0");
  InjectFailure(dir_.child("cache.db"),
                {u"create trigger stop before delete on tb_cacheInfo when old.parentPath <> '' "
                 u"begin select raise(abort, 'injected'); end",
                 u"create trigger stay before update of otag on tb_cacheInfo when old.name = 'a' "
                 u"begin select raise(abort, 'injected'); end"});
  const Rows before = Query("select * from tb_cacheInfo order by rowid");
  EXPECT_THROW_CODE(cache_->Delete(u"a", false), 1);       // the folder's row went first
  EXPECT_THROW_CODE(cache_->UpdateOtag(u"a\\b\\f.txt", u""), 1);  // the item was cleared first
  EXPECT_EQ(before, Query("select * from tb_cacheInfo order by rowid"));

  // Inside a batch the failed delete is undone alone; the batch's other writes stay.
  ncIStoreBatch* batch = cache_.get();
  batch->BeginBatch();
  Add(u"in batch");
  EXPECT_THROW_CODE(cache_->Delete(u"a", false), 1);
  batch->CommitBatch();
  EXPECT_EQ(before.size() + 1, Query("select * from tb_cacheInfo").size());
}

TEST_F(CacheMgrTest, ClearingATagReachesTheSubtreeAndInvalidArgumentsAreRefused) {
  for (const char16_t* folder : {u"a", u"a\\b", u"a\\b\\c", u"a\\b\\c\\d", u"a\\z"}) Add(folder, 1);
  for (const char16_t* file : {u"a\\b\\c\\file", u"a\\b\\c\\d\\deep"}) Add(file);
  Add(u"a\\b\\c\\delayed", 0, NC_CACHE_STATE_DELAY);
  cache_->GetDBMgr()->ExecuteSql(u"update tb_cacheInfo set otag='t'");
  cache_->UpdateOtag(u"a\\b\\c", u"");
  EXPECT_EQ((Rows{{"a\\b\\c\\d", "deep"}, {"a\\b\\c", "file"}, {"a", "z"}}),
            Query("select parentPath, name from tb_cacheInfo where otag='t' order by name"));

  cache_->UpdateAttr(u"a\\z", 7);
  cache_->Unlock(u"a\\z");  // clears the lock bit only
  cache_->UpdateState(u"a\\z", NC_CACHE_STATE_UNSYNC);
  cache_->Unsync_UpdateAllExecTask(8);  // reaches the unsynchronised rows only
  cache_->Unsync_UpdateAllState(6);
  EXPECT_EQ((Rows{{"z", "5", "6", "8"}}), Query("select name, attr, state, execTask from tb_cacheInfo where state=6 or execTask=8"));

  EXPECT_THROW_CODE_MESSAGE(cache_->Update(u"", Record(u"gns://A")), 2, u"Path () is INVALID.");
  EXPECT_THROW_CODE_MESSAGE(cache_->UpdateTypeName(u"a\\z", u""), 2, u"Argument (typeName) is EMPTY.");
  ncCacheInfo info;
  EXPECT_FALSE(cache_->GetInfoByPath(u"", info));
}

TEST_F(CacheMgrTest, ViewModeDropsTheViewFolderAndKeepsTheViewInItsColumn) {
  Open(true);
  cache_->Update(u"Mine\\a", Record(u"gns://M/a", 1, 0, u"Mine", 1));
  cache_->Update(u"Mine\\a\\b.txt", Record(u"gns://M/a/b", 1, 0, u"Mine", 1));
  cache_->Update(u"Shared\\s", Record(u"gns://S", 1, 0, u"Shared", 2));
  cache_->Update(u"Shared\\Ann\\doc", Record(u"gns://D", 1, 0, u"Shared", 2));  // a top-level object deeper down
  EXPECT_EQ((Rows{{"a", "b.txt", "Mine"}}), Query("select parentPath, name, viewName from tb_cacheInfo where id='gns://M/a/b'"));
  ncCacheInfo view;
  ASSERT_TRUE(cache_->GetInfoByPath(u"Shared", view));
  EXPECT_EQ(2, view.viewType);

  String viewName, viewRelPath;
  ASSERT_TRUE(cache_->GetViewRelPathByRelPath(u"a\\b.txt", viewName, viewRelPath));
  EXPECT_EQ(u"Mine\\a\\b.txt", viewRelPath);
  ASSERT_TRUE(cache_->GetViewRelPathByRelPath(u"Ann\\doc", viewName, viewRelPath));
  EXPECT_EQ(u"Shared", viewName);
  std::vector<ncCacheSearchInfo> hits;
  cache_->Search(u"b.t", u"[", u"]", hits, 10);
  EXPECT_EQ(std::vector<String>{u"Mine\\a"}, Names(hits, &ncCacheSearchInfo::parentPath));

  cache_->UpdateOtag(u"Mine", u"");  // a bare view folder has no tag to clear
  cache_->Delete(u"Mine", false);    // a bare view folder takes its whole view with it
  EXPECT_EQ((Rows{{"Shared"}}), Query("select distinct viewName from tb_cacheInfo"));
  EXPECT_THROW_CODE(cache_->UpdateState(u"Shared", 1), 2);
}

TEST_F(CacheMgrTest, LookupsListingsAndUnsynchronisedQueries) {
  Add(u"Docs", 1, 0, u"gns://T");
  Add(u"Docs\\Plan.txt", 0, 0, u"gns://T/P");
  Add(u"Docs\\sub", 1, 0, u"gns://T/S");
  Add(u"Docs\\sub\\x.bin", 0, NC_CACHE_STATE_DELAY, u"gns://T/S/X");
  Add(u"Groups\\Team", 1, 0, u"gns://G");  // a top-level object below a plain local folder
  Add(u"Docs\\local", 1, NC_CACHE_STATE_UNSYNC, u"local-1");
  for (const char16_t* file :
       {u"Docs\\local\\new.txt", u"Docs\\local\\busy.txt", u"Docs\\localx\\sibling.txt", u"Docs\\local\\d\\deep.txt"})
    Add(file, 0, NC_CACHE_STATE_UNSYNC);
  cache_->UpdateExectask(u"Docs\\local\\busy.txt", 1);

  ncCacheInfo info;
  EXPECT_TRUE(cache_->GetLegalInfoByPath(u"Docs\\PLAN.TXT", info));
  EXPECT_EQ(u"gns://T/P", info.id);
  info.otag = u"untouched";
  EXPECT_FALSE(cache_->GetLegalInfoByPath(u"Docs\\LOCAL", info));  // found, but not on the server yet
  EXPECT_EQ(u"untouched", info.otag);
  EXPECT_EQ(5 + 4 + 4, cache_->GetCountByStates({NC_CACHE_STATE_UNSYNC, 0, 0}));  // a state listed twice counts twice

  std::map<String, ncCacheScanInfo> children;
  cache_->GetScanSubInfos(u"\\Docs\\", children);
  EXPECT_EQ(3u, children.size());
  EXPECT_TRUE(children.at(u"sub").isDir);
  std::map<String, ncCacheDocInfo> detected;
  std::map<String, String> topPaths;
  cache_->GetDetectSubInfos(u"", u"", detected, topPaths);
  // Rows without a server parent: a top-level object, and a local item not yet uploaded.
  EXPECT_EQ((std::map<String, String>{{u"Docs", u"local-1"}, {u"Groups", u"gns://G"}}), topPaths);
  std::vector<ncCacheFileInfo> files;
  cache_->GetNoDelayFileInfos(files);
  EXPECT_EQ(5u, files.size());  // all but the delayed file, which has no content

  EXPECT_TRUE(cache_->Unsync_IsPathUnsync(u"Docs\\local\\new.txt", false));
  EXPECT_FALSE(cache_->Unsync_IsPathUnsync(u"Docs\\local\\busy.txt", false));
  EXPECT_FALSE(cache_->Unsync_IsPathUnsync(u"Docs\\sub", false));
  EXPECT_TRUE(cache_->Unsync_IsPathUnsync(u"Docs\\local\\sub", true));  // its folder is not on the server
  EXPECT_EQ(4, cache_->Unsync_CountUnexec(u""));
  EXPECT_EQ(2, cache_->Unsync_CountUnexec(u"Docs\\local"));
  std::vector<ncCacheUnexecInfo> items;
  cache_->Unsync_GetUnexecInfoVec(u"Docs\\local", items, 0);
  ASSERT_EQ(2u, items.size());
  cache_->Unsync_GetUnexecInfoVec(u"Docs\\local", items, 10);  // appends; the prefix also reaches Docs\localx
  ASSERT_EQ(5u, items.size());
  EXPECT_EQ(u"Docs\\localx\\sibling.txt", items[3].relPath);  // reverse order of the rows
}

// Four strategies in order: initials, initials without digits, the key's letters scattered
// in the name, the key in the name. Which hits a user sees depends on the order in which a
// statement meets the rows (each stops at its first row already shown): row order, also in
// a cache file that an earlier build gave an index over the searched columns.
TEST_F(CacheMgrTest, SearchRunsFourStrategiesInRowOrderAndStopsAtADuplicate) {
  {
    ncDBMgr::SchemaChange earlierBuild(*cache_->GetDBMgr());
    cache_->GetDBMgr()->ExecuteSql(u"create index tb_cacheInfo_search_idx on tb_cacheInfo(acronym, name)");
  }
  Open(false);
  EXPECT_TRUE(Query("select name from sqlite_master where name = 'tb_cacheInfo_search_idx'").empty());
  // 文件档案 (WJDA) and abz-c match only scattered, each after a duplicate, so never shown.
  for (const char16_t* name : {u"啊1不从", u"啊不从", u"a1b1c1", u"dir\\xxabc", u"在文档", u"文件档案", u"新文档", u"abz-c"})
    Add(name);
  std::vector<ncCacheSearchInfo> hits;
  cache_->Search(u"abc", u"[", u"]", hits, 10);
  EXPECT_EQ((std::vector<String>{u"[啊不从]", u"xx[abc]", u"[啊]1[不从]", u"[a]1[b]1[c]1"}),
            Names(hits, &ncCacheSearchInfo::displayName));
  EXPECT_EQ(u"dir", hits[1].parentPath);
  cache_->Search(u"abc", u"[", u"]", hits, 3);
  EXPECT_EQ(3u, hits.size());
  cache_->Search(u"wd", u"[", u"]", hits, 10);
  EXPECT_EQ((std::vector<String>{u"在文档", u"新文档"}), Names(hits, &ncCacheSearchInfo::name));
  cache_->Search(u"1不", u"<", u">", hits, 10);  // not initials: names only
  EXPECT_EQ(std::vector<String>{u"啊<1不>从"}, Names(hits, &ncCacheSearchInfo::displayName));
}

}  // namespace
