// The path manager core: data directory, containment, and absolute <-> relative paths of a
// main root and of a local sync root.
#include <gtest/gtest.h>

#include "TestSupport.h"
#include "docmgr/ncDocMgrLibrary.h"
#include "docmgr/ncModuleAllocator.h"
#include "docmgr/ncPathMgr.h"
#include "xpcom/nsCOMPtr.h"

using base::String;

namespace {

nsCOMPtr<ncPathMgr> MakePathMgr(const String& root, bool isLocalSync) {
  nsCOMPtr<ncPathMgr> pathMgr(NC_NEW(ncPathMgr));
  pathMgr->Init(root, isLocalSync);
  return pathMgr;
}

TEST(PathMgrTest, MainRootPaths) {
  nsCOMPtr<ncPathMgr> pathMgr = MakePathMgr(u"/home/u/Sync", false);
  EXPECT_EQ(u"/home/u/Sync/.kestrove.cache", pathMgr->GetDBPath());
  EXPECT_EQ(u"/home/u/Sync/" + ncDocMgrLibrary::loadString(u"IDS_UNSYNC_DOC"), pathMgr->GetUnsyncDocPath());
  EXPECT_TRUE(pathMgr->IsInRootPath(u"/home/u/sync/a", false));
  EXPECT_FALSE(pathMgr->IsInRootPath(u"/home/u/Sync", false));
  EXPECT_TRUE(pathMgr->IsInDBPath(u"/home/u/Sync/.kestrove.cache/cache.db", false));
  EXPECT_TRUE(pathMgr->IsInUnsyncDoc(pathMgr->GetUnsyncDocPath(), true));

  EXPECT_EQ(u"", pathMgr->GetRelativePath(u"/home/u/Sync"));
  EXPECT_EQ(u"a", pathMgr->GetRelativePath(u"\\\\?\\/home/u/Sync/a"));
  EXPECT_EQ(u"项目\\Plan A.docx", pathMgr->GetRelativePath(u"/home/u/Sync/项目/Plan A.docx"));
  EXPECT_EQ(u"A\\b", pathMgr->GetRelativePath(u"/home/u/SYNC/A/b/"));  // the given case is kept
  EXPECT_EQ(u"/home/u/Sync/a/b", pathMgr->GetAbsolutePath(u"\\a\\b\\"));
}

TEST(PathMgrTest, LocalSyncRootPathsStartWithTheRootName) {
  nsCOMPtr<ncPathMgr> pathMgr = MakePathMgr(u"/work/Sync", true);
  EXPECT_FALSE(pathMgr->IsDriveRoot());
  EXPECT_EQ(u"Sync\\x", pathMgr->GetRelativePath(u"/work/Sync/x"));
  EXPECT_EQ(u"/work/Sync/x", pathMgr->GetAbsolutePath(u"Sync\\x"));
  nsCOMPtr<ncPathMgr> underRoot = MakePathMgr(u"/data", true);
  EXPECT_EQ(u"data\\x", underRoot->GetRelativePath(u"/data/x"));
  EXPECT_EQ(u"/data/x/y", underRoot->GetAbsolutePath(u"data\\x\\y"));
  EXPECT_TRUE(MakePathMgr(u"D:", true)->IsDriveRoot());
  EXPECT_FALSE(MakePathMgr(u"D:", false)->IsDriveRoot());
}

TEST(PathMgrTest, InvalidAndOutsidePathsThrowBeforeAnyCheck) {
  nsCOMPtr<ncPathMgr> pathMgr = MakePathMgr(u"/home/u/Sync", false);
  const String bad(u"/home/u/Sync/\0x", 15);
  EXPECT_THROW_CODE_MESSAGE(pathMgr->IsInRootPath(bad, true), 2, u"Path (" + bad + u") is INVALID.");
  EXPECT_THROW_CODE(pathMgr->IsInDBPath(u"", true), 2);
  EXPECT_THROW_CODE(pathMgr->IsInUnsyncDoc(u"", true), 2);
  EXPECT_THROW_CODE(pathMgr->GetAbsolutePath(u""), 2);
  EXPECT_THROW_CODE_MESSAGE(pathMgr->GetRelativePath(u"/home/u/Sync2/a"), 2,
                            base::Format(ncDocMgrLibrary::loadString(u"IDS_NOT_IN_ROOT_PATH"), u"/home/u/Sync2/a"));
  EXPECT_THROW_CODE(MakePathMgr(u"", false), 2);
}

}  // namespace
