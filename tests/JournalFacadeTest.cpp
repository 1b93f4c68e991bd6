// The document manager opens the journals under the second root and a relay store in
// every sync root, hands them out, and closes them.
#include <gtest/gtest.h>

#include "TestSupport.h"
#include "docmgr/public/ncIDocMgr.h"
#include "docmgr/public/ncILogMgr.h"
#include "docmgr/public/ncIMsgMgr.h"
#include "docmgr/public/ncIRelayMgr.h"
#include "xpcom/nsHostLoader.h"

extern "C" nsresult NSGetModule(nsIComponentManager*, nsIFile*, nsIModule**);

namespace {

using base::String;

template <typename Interface>
nsCOMPtr<Interface> Adopt(Interface* manager) {
  return nsCOMPtr<Interface>::adopt(manager);
}

class JournalFacadeTest : public ::testing::Test {
 protected:
  void SetUp() override {
    for (const char* folder : {"root", "logs", "local"}) test::MakeDir(dir.path() + "/" + folder);
    ASSERT_EQ(NS_OK, host.addModule(NSGetModule, "in-process"));
  }
  nsCOMPtr<ncIDocMgr> Open() {
    nsCOMPtr<ncIDocMgr> docMgr = host.create<ncIDocMgr>(NC_DOCMGR_CONTRACTID);
    docMgr->Init(root, logs, {}, false, u"tester");
    return docMgr;
  }

  test::TempDir dir;
  const String root = dir.child("root");
  const String logs = dir.child("logs");
  const String local = dir.child("local");
  nsHostLoader host;
};

TEST_F(JournalFacadeTest, StoresLiveInTheirDataDirectoriesAndPersist) {
  const String upload = root + u"/O'Brien 100% 报告.docx";
  {
    nsCOMPtr<ncIDocMgr> docMgr = Open();
    ncSyncLogInfo entry;
    entry.relPath = u"O'Brien 100% 报告.docx";
    Adopt(docMgr->GetLogMgr())->RecordSyncLog(1, entry);
    ncMsgInfo message;
    message.msgId = u"m1";
    Adopt(docMgr->GetMsgMgr())->RecordMsg({message});
    ncUploadNonius record;
    record.srcPath = upload;
    Adopt(docMgr->GetRelayMgr(u""))->UpdateUploadNonius(record);
    docMgr->Close();
  }
  EXPECT_TRUE(test::Exists(dir.path() + "/logs/.kestrove.cache/log.db"));
  EXPECT_TRUE(test::Exists(dir.path() + "/logs/.kestrove.cache/msg.db"));
  EXPECT_TRUE(test::Exists(dir.path() + "/root/.kestrove.cache/nonius.db"));
  EXPECT_FALSE(test::Exists(dir.path() + "/root/.kestrove.cache/log.db"));

  nsCOMPtr<ncIDocMgr> docMgr = Open();
  std::vector<ncSyncLogInfo> entries;
  uint32_t total = 0;
  Adopt(docMgr->GetLogMgr())->GetSyncLogById(1, entries, 0, total);
  ASSERT_EQ(1u, entries.size());
  EXPECT_EQ(u"O'Brien 100% 报告.docx", entries[0].relPath);
  EXPECT_EQ(1, Adopt(docMgr->GetMsgMgr())->GetUnreadMsgNum());
  EXPECT_TRUE(Adopt(docMgr->GetRelayMgr(u""))->HasUploadNoniusWithPath(upload));
  docMgr->Close();
}

TEST_F(JournalFacadeTest, EveryLocalSyncRootHasItsOwnRelayStore) {
  nsCOMPtr<ncIDocMgr> docMgr = Open();
  docMgr->AddLocalSync(local);
  nsCOMPtr<ncIRelayMgr> mainRelay = Adopt(docMgr->GetRelayMgr(u""));
  nsCOMPtr<ncIRelayMgr> localRelay = Adopt(docMgr->GetRelayMgr(local));
  ASSERT_TRUE(localRelay);
  EXPECT_NE(mainRelay.get(), localRelay.get());
  EXPECT_EQ(nullptr, docMgr->GetRelayMgr(dir.child("unregistered")));
  EXPECT_TRUE(test::Exists(dir.path() + "/local/.kestrove.cache/nonius.db"));

  ncDownloadNonius record;
  record.srcPath = local + u"/a.txt";
  localRelay->UpdateDownloadNonius(record);
  ncDownloadNonius found;
  EXPECT_FALSE(mainRelay->GetDownloadNoniusByPath(record.srcPath, found));
  EXPECT_TRUE(localRelay->GetDownloadNoniusByPath(record.srcPath, found));

  // Removing the root closes its store: the manager the caller still holds can no longer read.
  docMgr->RemoveLocalSync(local);
  EXPECT_EQ(nullptr, docMgr->GetRelayMgr(local));
  EXPECT_THROW_CODE(localRelay->GetDownloadNoniusByPath(record.srcPath, found), 1);
  docMgr->Close();
  EXPECT_THROW_CODE(mainRelay->HasUploadNoniusWithPath(u"/x"), 1);
}

}  // namespace
