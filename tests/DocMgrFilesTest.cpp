// The document manager hands out the file and tag managers and customises the top folders.
#include <gtest/gtest.h>

#include "TestSupport.h"
#include "base/ncModulePool.h"
#include "docmgr/public/ncIADSMgr.h"
#include "docmgr/public/ncIDocMgr.h"
#include "docmgr/public/ncIFileMgr.h"
#include "xpcom/nsHostLoader.h"

extern "C" nsresult NSGetModule(nsIComponentManager*, nsIFile*, nsIModule**);

namespace {

using base::String;

TEST(DocMgrFilesTest, TopFoldersThatExistAreCustomisedAtInit) {
  test::TempDir dir;
  test::MakeDir(dir.path() + "/Mine");
  test::MakeDir(dir.path() + "/Org");
  nsHostLoader host;
  ASSERT_EQ(NS_OK, host.addModule(NSGetModule, "in-process"));
  nsCOMPtr<ncIDocMgr> docMgr = host.create<ncIDocMgr>(NC_DOCMGR_CONTRACTID);
  std::vector<ncTopFolderInfo> folders(3);
  folders[0].name = u"Mine";
  folders[0].docType = 1;
  folders[1].name = u"Org";
  folders[1].docType = 4;
  folders[1].typeName = u"Sales";
  folders[2].name = u"Absent";
  folders[2].docType = 2;
  docMgr->Init(dir.wpath(), dir.wpath(), folders, false, u"tester");
  EXPECT_NE(std::string::npos, test::ReadFile(dir.path() + "/Mine/.directory").find("Comment=1-My Documents\n"));
  EXPECT_NE(std::string::npos,
            test::ReadFile(dir.path() + "/Org/.directory").find("Comment=5-Organization Documents-Sales\n"));
  EXPECT_FALSE(test::Exists(dir.path() + "/Absent"));
  docMgr->Close();
}

TEST(DocMgrFilesTest, EachRootHasItsOwnFileManagerAndTheTagManagerIsShared) {
  test::TempDir dir;
  test::MakeDir(dir.path() + "/main");
  test::MakeDir(dir.path() + "/local");
  base::ncModulePool* pool = base::ncModulePool::getInstance();
  const size_t before = pool->liveObjects();
  {
    nsHostLoader host;
    ASSERT_EQ(NS_OK, host.addModule(NSGetModule, "in-process"));
    nsCOMPtr<ncIDocMgr> docMgr = host.create<ncIDocMgr>(NC_DOCMGR_CONTRACTID);
    docMgr->Init(dir.child("main"), dir.child("main"), {}, false, u"tester");
    docMgr->AddLocalSync(dir.child("local"));

    nsCOMPtr<ncIFileMgr> mainFiles = nsCOMPtr<ncIFileMgr>::adopt(docMgr->GetFileMgr(u""));
    nsCOMPtr<ncIFileMgr> localFiles = nsCOMPtr<ncIFileMgr>::adopt(docMgr->GetFileMgr(dir.child("local")));
    ASSERT_TRUE(mainFiles && localFiles);
    EXPECT_EQ(nullptr, docMgr->GetFileMgr(dir.child("elsewhere")));
    test::WriteFile(dir.path() + "/main/a.txt", "a");
    test::WriteFile(dir.path() + "/local/b.txt", "b");
    const String a = mainFiles->CreateDupDoc(dir.child("main/a.txt"), u"gns://A");
    const String b = localFiles->CreateDupDoc(dir.child("local/b.txt"), u"gns://B");
    EXPECT_EQ(dir.child("main/Unsynchronized Documents/a.txt"), a);
    EXPECT_EQ(dir.child("local/Unsynchronized Documents/b.txt"), b);

    nsCOMPtr<ncIADSMgr> tags = nsCOMPtr<ncIADSMgr>::adopt(docMgr->GetADSMgr());
    nsCOMPtr<ncIADSMgr> again = nsCOMPtr<ncIADSMgr>::adopt(docMgr->GetADSMgr());
    ASSERT_TRUE(tags);
    EXPECT_EQ(tags.get(), again.get());
    docMgr->Close();
  }
  EXPECT_EQ(before, pool->liveObjects()) << "live: " << pool->liveObjects();
}

}  // namespace
