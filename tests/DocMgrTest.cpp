// The document manager facade: validation of both roots, the hidden data directories, the
// local sync roots and the managers it hands out.
#include <gtest/gtest.h>

#include "TestSupport.h"
#include "docmgr/ncConfigDBInfo.h"
#include "docmgr/ncDocMgr.h"
#include "docmgr/public/ncIPathMgr.h"
#include "platform/ncPlatform.h"

using base::String;

namespace {

class DocMgrTest : public ::testing::Test {
 protected:
  void SetUp() override { docMgr = nsCOMPtr<ncIDocMgr>(new ncDocMgr); }
  void TearDown() override { docMgr->Close(); }

  nsCOMPtr<ncIPathMgr> PathMgr(const String& root) { return nsCOMPtr<ncIPathMgr>::adopt(docMgr->GetPathMgr(root)); }

  test::TempDir dir;
  nsCOMPtr<ncIDocMgr> docMgr;
};

TEST_F(DocMgrTest, InitCreatesBothHiddenDataDirectories) {
  test::MakeDir(dir.path() + "/root");
  test::MakeDir(dir.path() + "/logs");
  docMgr->Init(dir.child("root"), dir.child("logs"), {}, true, u"alice");
  for (const char* data : {"/root/.kestrove.cache", "/logs/.kestrove.cache"}) {
    const String path = base::FromUtf8(dir.path() + data);
    EXPECT_TRUE(platform::GetFileAttributes(path) & platform::kAttrDirectory) << data;
    EXPECT_TRUE(platform::GetFileAttributes(path) & platform::kAttrHidden) << data;
  }
  EXPECT_TRUE(docMgr->IsNewView());
  EXPECT_EQ(dir.child("root"), PathMgr(u"")->GetRootPath());
}

TEST_F(DocMgrTest, InvalidRootsFailBeforeAnythingIsCreated) {
  EXPECT_THROW_CODE_MESSAGE(docMgr->Init(dir.child("root"), u"", {}, false, u"bob"), 2, u"Path () is INVALID.");
  EXPECT_FALSE(test::Exists(dir.path() + "/root/.kestrove.cache"));
  EXPECT_THROW_CODE_MESSAGE(docMgr->Init(u"", dir.wpath(), {}, false, u"bob"), 2, u"Path () is INVALID.");
  EXPECT_THROW_CODE(docMgr->AddLocalSync(u""), 2);
  EXPECT_THROW_CODE(docMgr->IniLocalSync(u""), 2);
  EXPECT_FALSE(test::Exists(dir.path() + "/.kestrove.cache"));
}

TEST_F(DocMgrTest, LocalSyncRootsAreKeptInKeyOrder) {
  docMgr->Init(dir.wpath(), dir.wpath(), {}, false, u"carol");
  const String outer = dir.child("b"), inner = dir.child("b/inner"), other = dir.child("a");
  for (const String& root : {outer, inner, other, outer}) docMgr->AddLocalSync(root);
  std::vector<String> roots;
  docMgr->GetLocalSyncs(roots);
  EXPECT_EQ((std::vector<String>{other, outer, inner}), roots);
  EXPECT_TRUE(test::Exists(dir.path() + "/b/inner/.kestrove.cache"));

  String root = u"unchanged";
  docMgr->CheckLocalSync(outer, root);
  EXPECT_EQ(outer, root);
  docMgr->CheckLocalSync(dir.child("b/inner/x.txt"), root);
  EXPECT_EQ(outer, root);  // nested roots: the one that sorts first
  docMgr->CheckLocalSync(dir.child("c/x.txt"), root);
  EXPECT_EQ(u"", root);

  nsCOMPtr<ncIPathMgr> local = PathMgr(inner);
  ASSERT_TRUE(local);
  EXPECT_EQ(u"inner\\x", local->GetRelativePath(dir.child("b/inner/x")));
  EXPECT_FALSE(PathMgr(dir.child("unknown")));
  docMgr->RemoveLocalSync(inner);
  docMgr->RemoveLocalSync(dir.child("never-added"));
  roots.clear();
  docMgr->GetLocalSyncs(roots);
  EXPECT_EQ(2u, roots.size());
  EXPECT_FALSE(PathMgr(inner));
  EXPECT_EQ(u"inner\\x", local->GetRelativePath(dir.child("b/inner/x")));  // the caller's reference still works
}

TEST_F(DocMgrTest, IniLocalSyncStampsTheCurrentVersion) {
  docMgr->IniLocalSync(dir.child("local"));
  ncConfigDBInfo config;
  EXPECT_TRUE(config.Init(dir.child("local"), true));
  EXPECT_EQ(24, config.GetVersionNum());
}

TEST_F(DocMgrTest, CloseBeforeInitAndCreateDBMgr) {
  docMgr->Close();
  ncIDBMgr* first = docMgr->CreateDBMgr();
  ASSERT_NE(nullptr, first);
  first->Open(dir.child("scratch.db"));
  first->ExecuteSql(u"create table t (x int)");
  EXPECT_TRUE(first->IsTableExists(u"t"));
  EXPECT_NE(nullptr, docMgr->CreateDBMgr());
}

}  // namespace
