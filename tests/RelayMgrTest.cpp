// Resume records of uploads and downloads in a real nonius.db, and the journal stores'
// refusal of an invalid path.
#include <gtest/gtest.h>

#include <cmath>

#include "TestSupport.h"
#include "docmgr/ncLogMgr.h"
#include "docmgr/ncModuleAllocator.h"
#include "docmgr/ncMsgMgr.h"
#include "docmgr/ncRelayMgr.h"

namespace {

// A path with an apostrophe, a percent sign, a format directive and Chinese text.
const String kTrickyPath = u"/data/O'Brien's 100% %s 报告/设计'文档.docx";

ncUploadNonius MakeUpload(const String& srcPath, int status) {
  ncUploadNonius r;
  r.srcPath = srcPath;
  r.destPath = u"gns://A1/B'2/目标 100%";
  r.docId = u"gns://A1/B2/C3";
  r.md5 = u"d41d8cd98f00b204e9800998ecf8427e";
  r.crc32 = u"1a2b3c4d";
  r.sliceMd5 = u"0cc175b9c0f1b6a831c399e269772661";
  r.uploadId = u"upload-7";
  r.lastModified = 1718000000123456789LL;
  r.otag = u"otag-1";
  r.partSize = 4LL << 20;
  r.size = 5000000000LL;
  r.unUploadBlocks = u"[\"3-1193\"]";
  r.direcMode = true;
  r.status = status;
  r.taskSrc = 3;
  r.onDup = 2;
  r.delSrc = true;
  r.ratios = 0.5;
  r.duration = -17;
  r.csf = u"secret";
  return r;
}

ncDownloadNonius MakeDownload(const String& srcPath, int status) {
  ncDownloadNonius r;
  r.srcPath = srcPath;
  r.destPath = u"gns://X/Y'Z";
  r.docId = u"gns://X/Y";
  r.lastModified = 42;
  r.otag = u"o-9";
  r.docType = 4;
  r.typeName = u"Department's 文档库";
  r.viewType = 2;
  r.viewName = u"100% 共享";
  r.mtime = 1718000000000000LL;
  r.size = 1LL << 40;
  r.attr = 0x21;
  r.range = 123456789012LL;
  r.direcMode = false;
  r.status = status;
  r.taskSrc = 1;
  r.delSrc = false;
  r.ratios = 0.25;
  return r;
}

#define SAME(field) EXPECT_EQ(a.field, b.field) << #field
void ExpectSame(const ncUploadNonius& a, const ncUploadNonius& b) {
  SAME(srcPath); SAME(destPath); SAME(docId); SAME(md5); SAME(crc32); SAME(sliceMd5); SAME(uploadId);
  SAME(lastModified); SAME(otag); SAME(partSize); SAME(size); SAME(unUploadBlocks); SAME(direcMode); SAME(status);
  SAME(taskSrc); SAME(onDup); SAME(delSrc); SAME(duration); SAME(csf);
  EXPECT_DOUBLE_EQ(a.ratios, b.ratios);
}

void ExpectSame(const ncDownloadNonius& a, const ncDownloadNonius& b) {
  SAME(srcPath); SAME(destPath); SAME(docId); SAME(lastModified); SAME(otag); SAME(docType); SAME(typeName);
  SAME(viewType); SAME(viewName); SAME(mtime); SAME(size); SAME(attr); SAME(range); SAME(direcMode); SAME(status);
  SAME(taskSrc); SAME(delSrc);
  EXPECT_DOUBLE_EQ(a.ratios, b.ratios);
}
#undef SAME

template <typename Record>
std::vector<String> Paths(const std::vector<Record>& list) {
  std::vector<String> paths;
  for (const Record& r : list) paths.push_back(r.srcPath);
  return paths;
}

class RelayMgrTest : public ::testing::Test {
 protected:
  void SetUp() override { relay->Init(dir.child("nonius.db")); }
  void TearDown() override { relay->Close(); }

  test::TempDir dir;
  nsCOMPtr<ncRelayMgr> relay{NC_NEW(ncRelayMgr)};
};

TEST_F(RelayMgrTest, RecordsRoundTripAndAreReplacedWhole) {
  const ncUploadNonius upload = MakeUpload(kTrickyPath, 1);
  relay->UpdateUploadNonius(upload);
  ncUploadNonius read;
  ASSERT_TRUE(relay->GetUploadNoniusByPath(kTrickyPath, read));
  ExpectSame(upload, read);
  EXPECT_TRUE(relay->HasUploadNoniusWithPath(kTrickyPath));

  // The second write of the same source path replaces every field.
  ncUploadNonius second;
  second.srcPath = kTrickyPath;
  second.status = 2;
  relay->UpdateUploadNonius(second);
  ASSERT_TRUE(relay->GetUploadNoniusByPath(kTrickyPath, read));
  ExpectSame(second, read);
  EXPECT_TRUE(relay->HasUploadNoniusWithPath(kTrickyPath));  // an empty uploadId still counts

  const ncDownloadNonius download = MakeDownload(kTrickyPath, 3);
  relay->UpdateDownloadNonius(download);
  ncDownloadNonius readDownload;
  ASSERT_TRUE(relay->GetDownloadNoniusByPath(kTrickyPath, readDownload));
  ExpectSame(download, readDownload);

  // Nothing found: false, and the caller's record is left as it was.
  ncUploadNonius untouched = MakeUpload(u"/keep", 9);
  EXPECT_FALSE(relay->GetUploadNoniusByPath(u"/data/missing", untouched));
  EXPECT_FALSE(relay->HasUploadNoniusWithPath(u"/data/O'Brien"));
  ExpectSame(MakeUpload(u"/keep", 9), untouched);
  ncDownloadNonius untouchedDownload = MakeDownload(u"/keep", 9);
  EXPECT_FALSE(relay->GetDownloadNoniusByPath(u"/data/missing", untouchedDownload));
  ExpectSame(MakeDownload(u"/keep", 9), untouchedDownload);
}

TEST_F(RelayMgrTest, RatiosKeepFourDecimalsTruncatedTowardZero) {
  EXPECT_EQ(1234, ncRelayMgr::EncodeRatio(0.12345));
  EXPECT_EQ(-1234, ncRelayMgr::EncodeRatio(-0.12345));
  EXPECT_EQ(10000, ncRelayMgr::EncodeRatio(1.0));
  EXPECT_EQ(0, ncRelayMgr::EncodeRatio(std::nan("")));
  EXPECT_EQ(INT32_MAX, ncRelayMgr::EncodeRatio(1e300));

  relay->UpdateUploadNonius(MakeUpload(kTrickyPath, 1));
  relay->UpdateUploadNonius_Pause(kTrickyPath, -0.12345, 4);
  ncUploadNonius upload;
  ASSERT_TRUE(relay->GetUploadNoniusByPath(kTrickyPath, upload));
  EXPECT_DOUBLE_EQ(-0.1234, upload.ratios);
  EXPECT_EQ(4, upload.status);

  relay->UpdateDownloadNonius(MakeDownload(kTrickyPath, 1));
  relay->UpdateDownloadNonius_Pause(kTrickyPath, 0.12345, 5);
  ncDownloadNonius download;
  ASSERT_TRUE(relay->GetDownloadNoniusByPath(kTrickyPath, download));
  EXPECT_DOUBLE_EQ(0.1234, download.ratios);
  EXPECT_EQ(5, download.status);
}

// Listings append to what the caller has: all records highest status first, or those whose
// status is not 2, or only those whose status is 2.
template <typename Record>
void ExpectListings(ncRelayMgr* relay, void (ncRelayMgr::*update)(const Record&),
                    bool (ncRelayMgr::*list)(std::vector<Record>&, bool),
                    bool (ncRelayMgr::*listStatus2)(std::vector<Record>&), Record (*make)(const String&, int)) {
  std::vector<Record> records(1);
  EXPECT_FALSE((relay->*list)(records, true));
  EXPECT_FALSE((relay->*listStatus2)(records));
  EXPECT_EQ(1u, records.size());
  for (int status : {1, 3, 2, 0}) (relay->*update)(make(base::Format(u"/data/%d'", status), status));
  records.clear();
  ASSERT_TRUE((relay->*list)(records, true));
  EXPECT_EQ((std::vector<String>{u"/data/3'", u"/data/2'", u"/data/1'", u"/data/0'"}), Paths(records));
  ExpectSame(make(u"/data/3'", 3), records.front());
  records.clear();
  ASSERT_TRUE((relay->*list)(records, false));
  EXPECT_EQ(3u, records.size());
  for (const Record& r : records) EXPECT_NE(2, r.status);
  records.clear();
  ASSERT_TRUE((relay->*listStatus2)(records));
  EXPECT_EQ(std::vector<String>{u"/data/2'"}, Paths(records));
}

TEST_F(RelayMgrTest, ListingsSelectByStatus) {
  ExpectListings<ncUploadNonius>(relay.get(), &ncRelayMgr::UpdateUploadNonius, &ncRelayMgr::ListUploadNonius,
                                 &ncRelayMgr::ListUploadNoniusWithStatus2, MakeUpload);
  ExpectListings<ncDownloadNonius>(relay.get(), &ncRelayMgr::UpdateDownloadNonius, &ncRelayMgr::ListDownloadNonius,
                                   &ncRelayMgr::ListDownloadNoniusWithStatus2, MakeDownload);
}

TEST_F(RelayMgrTest, FieldUpdatesAndDeletesTouchOnlyTheirRow) {
  const String other = u"/data/other";
  relay->UpdateUploadNonius(MakeUpload(kTrickyPath, 1));
  relay->UpdateUploadNonius(MakeUpload(other, 1));
  relay->UpdateDownloadNonius(MakeDownload(kTrickyPath, 1));
  relay->UpdateDownloadNonius(MakeDownload(other, 1));

  relay->UpdateUploadNoniusUnuploadBlocks(kTrickyPath, u"[\"1\",\"3-4\"]", 6);
  relay->UpdateUploadNoniusDuration(kTrickyPath, 9876543210LL);
  relay->UpdateDownloadNoniusRange(kTrickyPath, 77, 8, 1718000000999LL);
  ncUploadNonius upload = MakeUpload(kTrickyPath, 6);
  upload.unUploadBlocks = u"[\"1\",\"3-4\"]";
  upload.duration = 9876543210LL;
  ncUploadNonius read;
  ASSERT_TRUE(relay->GetUploadNoniusByPath(kTrickyPath, read));
  ExpectSame(upload, read);
  ncDownloadNonius download = MakeDownload(kTrickyPath, 8);
  download.range = 77;
  download.lastModified = 1718000000999LL;
  ncDownloadNonius readDownload;
  ASSERT_TRUE(relay->GetDownloadNoniusByPath(kTrickyPath, readDownload));
  ExpectSame(download, readDownload);

  relay->DeleteUploadNonius(kTrickyPath);
  relay->DeleteDownloadNonius(kTrickyPath);
  EXPECT_FALSE(relay->HasUploadNoniusWithPath(kTrickyPath));
  EXPECT_FALSE(relay->GetDownloadNoniusByPath(kTrickyPath, readDownload));
  ASSERT_TRUE(relay->GetUploadNoniusByPath(other, read));
  ExpectSame(MakeUpload(other, 1), read);
  ASSERT_TRUE(relay->GetDownloadNoniusByPath(other, readDownload));
  ExpectSame(MakeDownload(other, 1), readDownload);

  // Paths without a row: nothing changes and nothing is reported.
  relay->UpdateUploadNoniusUnuploadBlocks(kTrickyPath, u"[]", 1);
  relay->UpdateDownloadNonius_Pause(kTrickyPath, 0.5, 1);
  relay->DeleteUploadNonius(kTrickyPath);
  EXPECT_FALSE(relay->HasUploadNoniusWithPath(kTrickyPath));
}

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
