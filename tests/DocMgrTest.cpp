// The document manager facade: validation of both roots, the hidden data directories, the
// top folders, the local sync roots, the managers it hands out per root and the journals.
#include <gtest/gtest.h>

#include "TestSupport.h"
#include "UpgradeTestSupport.h"
#include "base/ncModulePool.h"
#include "docmgr/ncDocMgr.h"
#include "platform/ncPlatform.h"
#include "docmgr/nsHostLoader.h"

extern "C" nsresult NSGetModule(nsIComponentManager*, nsIFile*, nsIModule**);

using base::String;

namespace {

template <typename Interface>
nsCOMPtr<Interface> Adopt(Interface* manager) {
  return nsCOMPtr<Interface>::adopt(manager);
}

// One report item as text, so that a row compares in one assertion.
std::string Row(const ncUnsyncDocInfo& doc) {
  return base::ToUtf8(doc.root + u"|" + doc.relPath) + "|" + std::to_string(doc.kind) + "|" + std::to_string(doc.isDir) +
         "|" + std::to_string(doc.size) + "|" + std::to_string(doc.errcode);
}

class DocMgrTest : public ::testing::Test {
 protected:
  void SetUp() override { docMgr = nsCOMPtr<ncIDocMgr>(new ncDocMgr); }
  void TearDown() override { docMgr->Close(); }

  test::TempDir dir;
  nsCOMPtr<ncIDocMgr> docMgr;
};

TEST_F(DocMgrTest, InitCreatesBothDataDirectoriesCustomisesTopFoldersAndKeepsTheJournalsUnderTheSecondRoot) {
  for (const char* folder : {"/root", "/logs", "/root/Org"}) test::MakeDir(dir.path() + folder);
  // name, typeName, docId, docType, viewType; the texts of every type are the file manager's test
  const std::vector<ncTopFolderInfo> folders = {{u"Org", u"Sales", u"", 4, 0}, {u"Absent", u"", u"", 2, 0}};
  docMgr->Init(dir.child("root"), dir.child("logs"), folders, true, u"alice");
  for (const char* data : {"/root/.kestrove.cache", "/logs/.kestrove.cache"}) {
    const uint32_t wanted = platform::kAttrDirectory | platform::kAttrHidden;
    EXPECT_EQ(wanted, platform::GetFileAttributes(base::FromUtf8(dir.path() + data)) & wanted) << data;
  }
  EXPECT_EQ("5-Organization Documents-Sales", test::FolderDisplayText(dir.path() + "/root/Org"));
  EXPECT_FALSE(test::Exists(dir.path() + "/root/Absent"));

  // The journals live under the second root, the transfer records under the first.
  docMgr->Close();
  for (const char* file :
       {"/logs/.kestrove.cache/log.db", "/logs/.kestrove.cache/msg.db", "/root/.kestrove.cache/nonius.db"})
    EXPECT_TRUE(test::Exists(dir.path() + file)) << file;
  EXPECT_FALSE(test::Exists(dir.path() + "/root/.kestrove.cache/log.db"));
}

TEST_F(DocMgrTest, CloseBeforeInitAndInvalidRootsFailBeforeAnythingIsCreated) {
  docMgr->Close();
  EXPECT_THROW_CODE_MESSAGE(docMgr->Init(dir.child("root"), u"", {}, false, u"bob"), 2, u"Path () is INVALID.");
  EXPECT_FALSE(test::Exists(dir.path() + "/root/.kestrove.cache"));
  EXPECT_THROW_CODE_MESSAGE(docMgr->Init(u"", dir.wpath(), {}, false, u"bob"), 2, u"Path () is INVALID.");
  EXPECT_THROW_CODE(docMgr->AddLocalSync(u""), 2);
  EXPECT_FALSE(test::Exists(dir.path() + "/.kestrove.cache"));
}

TEST_F(DocMgrTest, LocalSyncRootsAreKeptInKeyOrderAndStampedWithTheVersion) {
  docMgr->Init(dir.wpath(), dir.wpath(), {}, false, u"carol");
  const String outer = dir.child("b"), inner = dir.child("b/inner"), other = dir.child("a");
  for (const String& root : {outer, inner, other, outer}) docMgr->AddLocalSync(root);
  std::vector<String> roots;
  docMgr->GetLocalSyncs(roots);
  EXPECT_EQ((std::vector<String>{other, outer, inner}), roots);
  EXPECT_TRUE(test::Exists(dir.path() + "/b/inner/.kestrove.cache"));

  // Nested roots: the one that sorts first holds the path.
  const std::pair<String, String> probes[] = {{outer, outer}, {dir.child("b/inner/x.txt"), outer}, {dir.child("c/x"), u""}};
  for (const auto& probe : probes) {
    String root = u"unchanged";
    docMgr->CheckLocalSync(probe.first, root);
    EXPECT_EQ(probe.second, root) << base::ToUtf8(probe.first);
  }

  docMgr->RemoveLocalSync(inner);
  roots.clear();
  docMgr->GetLocalSyncs(roots);
  EXPECT_EQ((std::vector<String>{other, outer}), roots);

  docMgr->IniLocalSync(dir.child("local"));
  EXPECT_EQ(24, test::StoredVersion(dir.child("local"), true));  // the current version
}

// Every sync root has its own cache, file, relay and path managers over its own stores; the
// tag manager is shared and an unknown root gets none. Removing a root closes its stores while
// a path manager the caller holds still works; closing and releasing everything, a database
// wrapper made for the caller included, leaves no object of the module alive.
TEST(DocMgrRootsTest, EachRootHasItsOwnManagersAndClosingReleasesEverythingTheCallerDoesNotHold) {
  base::ncModulePool* pool = base::ncModulePool::getInstance();
  const size_t before = pool->liveObjects();
  {
    // Through the module, as a host holds it: a main root in view mode and one local sync root.
    test::TempDir dir;
    const String main = dir.child("main"), local = dir.child("local"), elsewhere = dir.child("elsewhere");
    test::MakeDir(dir.path() + "/main");
    nsHostLoader host;
    ASSERT_EQ(NS_OK, host.addModule(NSGetModule, "in-process"));
    nsCOMPtr<ncIDocMgr> docMgr = host.create<ncIDocMgr>(NC_DOCMGR_CONTRACTID);
    ASSERT_TRUE(docMgr);
    docMgr->Init(main, main, {}, true, u"tester");
    docMgr->AddLocalSync(local);
    nsCOMPtr<ncICacheMgr> mainCache = Adopt(docMgr->GetCacheMgr(u"")), localCache = Adopt(docMgr->GetCacheMgr(local));
    nsCOMPtr<ncIRelayMgr> mainRelay = Adopt(docMgr->GetRelayMgr(u"")), localRelay = Adopt(docMgr->GetRelayMgr(local));
    nsCOMPtr<ncIPathMgr> localPaths = Adopt(docMgr->GetPathMgr(local));
    ASSERT_TRUE(mainCache && localCache && mainRelay && localRelay && localPaths);
    EXPECT_FALSE(docMgr->GetCacheMgr(elsewhere) || docMgr->GetFileMgr(elsewhere) || docMgr->GetRelayMgr(elsewhere) ||
                 docMgr->GetPathMgr(elsewhere));
    nsCOMPtr<ncIADSMgr> tags = Adopt(docMgr->GetADSMgr()), again = Adopt(docMgr->GetADSMgr());
    EXPECT_TRUE(tags && tags.get() == again.get());

    ncCacheInfo info;
    info.id = u"gns://A";
    mainCache->Update(u"View\\doc", info);   // the main root is in view mode
    localCache->Update(u"View\\doc", info);  // a local sync root never is
    EXPECT_TRUE(mainCache->GetInfoByPath(u"Other\\doc", info));
    EXPECT_FALSE(localCache->GetInfoByPath(u"Other\\doc", info));
    ncDownloadNonius record, found;
    record.srcPath = local + u"/a.txt";
    localRelay->UpdateDownloadNonius(record);
    EXPECT_FALSE(mainRelay->GetDownloadNoniusByPath(record.srcPath, found));
    EXPECT_TRUE(localRelay->GetDownloadNoniusByPath(record.srcPath, found));

    ncIDBMgr* scratch = docMgr->CreateDBMgr();
    scratch->Open(dir.child("scratch.db"));
    scratch->ExecuteSql(u"create table t (x int)");

    docMgr->RemoveLocalSync(local);
    EXPECT_FALSE(docMgr->GetCacheMgr(local) || docMgr->GetFileMgr(local) || docMgr->GetRelayMgr(local) ||
                 docMgr->GetPathMgr(local));
    EXPECT_THROW_CODE(localRelay->GetDownloadNoniusByPath(record.srcPath, found), 1);
    EXPECT_EQ(u"local\\x", localPaths->GetRelativePath(dir.child("local/x")));
    docMgr->Close();
    EXPECT_THROW_CODE(mainRelay->HasUploadNoniusWithPath(u"/x"), 1);
  }
  EXPECT_EQ(before, pool->liveObjects()) << "live: " << pool->liveObjects();
}

// What waits in each root's cache, main root first (the CLI's unsync report covers the
// documents set aside and the pages of the log).
TEST_F(DocMgrTest, UnsyncReportGoesRootByRootAndCountsOnlyItsOwnLogType) {
  std::vector<ncUnsyncDocInfo> docs;
  docMgr->GetUnsyncDoc(docs);  // nothing open yet
  EXPECT_TRUE(docs.empty());
  EXPECT_EQ(0u, docMgr->GetUnsyncLogNum());

  docMgr->Init(dir.wpath(), dir.wpath(), {}, false, u"alice");
  const String local = dir.child("local");
  docMgr->AddLocalSync(local);
  ncCacheInfo waiting;
  waiting.state = NC_CACHE_STATE_UNSYNC;
  waiting.size = 12;
  waiting.errcode = 7;
  waiting.id = u"local-1";
  Adopt(docMgr->GetCacheMgr(local))->Update(u"local\\folder", waiting);  // written first, listed last
  waiting.id = u"local-2";
  Adopt(docMgr->GetCacheMgr(u""))->Update(u"a\\new.txt", waiting);
  docMgr->GetUnsyncDoc(docs);
  ASSERT_EQ(2u, docs.size());
  EXPECT_EQ(Row({dir.wpath(), u"a\\new.txt", NC_UNSYNC_DOC_WAITING, false, 12, 7}), Row(docs[0]));
  EXPECT_EQ(Row({local, u"local\\folder", NC_UNSYNC_DOC_WAITING, false, 12, 7}), Row(docs[1]));

  nsCOMPtr<ncILogMgr> log = Adopt(docMgr->GetLogMgr());
  for (int type : {NC_SYNCLOG_TYPE_UNSYNC, 0, 0}) log->RecordSyncLog(type, ncSyncLogInfo());
  EXPECT_EQ(1u, docMgr->GetUnsyncLogNum());
  std::vector<ncSyncLogInfo> page;
  uint32_t total = 0;
  EXPECT_THROW_CODE(docMgr->GetUnsyncLog(page, 2, 3, total), 2);
}

}  // namespace
