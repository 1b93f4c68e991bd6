// Resume records of uploads and downloads in a real nonius.db.
#include <gtest/gtest.h>

#include <cmath>

#include "TestSupport.h"
#include "docmgr/ncModuleAllocator.h"
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

void ExpectSame(const ncUploadNonius& a, const ncUploadNonius& b) {
  EXPECT_EQ(a.srcPath, b.srcPath);
  EXPECT_EQ(a.destPath, b.destPath);
  EXPECT_EQ(a.docId, b.docId);
  EXPECT_EQ(a.md5, b.md5);
  EXPECT_EQ(a.crc32, b.crc32);
  EXPECT_EQ(a.sliceMd5, b.sliceMd5);
  EXPECT_EQ(a.uploadId, b.uploadId);
  EXPECT_EQ(a.lastModified, b.lastModified);
  EXPECT_EQ(a.otag, b.otag);
  EXPECT_EQ(a.partSize, b.partSize);
  EXPECT_EQ(a.size, b.size);
  EXPECT_EQ(a.unUploadBlocks, b.unUploadBlocks);
  EXPECT_EQ(a.direcMode, b.direcMode);
  EXPECT_EQ(a.status, b.status);
  EXPECT_EQ(a.taskSrc, b.taskSrc);
  EXPECT_EQ(a.onDup, b.onDup);
  EXPECT_EQ(a.delSrc, b.delSrc);
  EXPECT_DOUBLE_EQ(a.ratios, b.ratios);
  EXPECT_EQ(a.duration, b.duration);
  EXPECT_EQ(a.csf, b.csf);
}

void ExpectSame(const ncDownloadNonius& a, const ncDownloadNonius& b) {
  EXPECT_EQ(a.srcPath, b.srcPath);
  EXPECT_EQ(a.destPath, b.destPath);
  EXPECT_EQ(a.docId, b.docId);
  EXPECT_EQ(a.lastModified, b.lastModified);
  EXPECT_EQ(a.otag, b.otag);
  EXPECT_EQ(a.docType, b.docType);
  EXPECT_EQ(a.typeName, b.typeName);
  EXPECT_EQ(a.viewType, b.viewType);
  EXPECT_EQ(a.viewName, b.viewName);
  EXPECT_EQ(a.mtime, b.mtime);
  EXPECT_EQ(a.size, b.size);
  EXPECT_EQ(a.attr, b.attr);
  EXPECT_EQ(a.range, b.range);
  EXPECT_EQ(a.direcMode, b.direcMode);
  EXPECT_EQ(a.status, b.status);
  EXPECT_EQ(a.taskSrc, b.taskSrc);
  EXPECT_EQ(a.delSrc, b.delSrc);
  EXPECT_DOUBLE_EQ(a.ratios, b.ratios);
}

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

TEST_F(RelayMgrTest, ListingsSelectByStatus) {
  std::vector<ncUploadNonius> uploads(1);  // listings append to what the caller has
  std::vector<ncDownloadNonius> downloads(1);
  EXPECT_FALSE(relay->ListUploadNonius(uploads, true));
  EXPECT_FALSE(relay->ListUploadNoniusWithStatus2(uploads));
  EXPECT_FALSE(relay->ListDownloadNonius(downloads, false));
  EXPECT_EQ(1u, uploads.size());
  EXPECT_EQ(1u, downloads.size());

  const int statuses[] = {1, 3, 2, 0};
  for (int status : statuses) {
    const String path = base::Format(u"/data/%d'", status);
    relay->UpdateUploadNonius(MakeUpload(path, status));
    relay->UpdateDownloadNonius(MakeDownload(path, status));
  }
  uploads.clear();
  ASSERT_TRUE(relay->ListUploadNonius(uploads, true));
  EXPECT_EQ((std::vector<String>{u"/data/3'", u"/data/2'", u"/data/1'", u"/data/0'"}), Paths(uploads));
  ExpectSame(MakeUpload(u"/data/3'", 3), uploads.front());
  uploads.clear();
  ASSERT_TRUE(relay->ListUploadNonius(uploads, false));
  EXPECT_EQ(3u, uploads.size());
  for (const ncUploadNonius& r : uploads) EXPECT_NE(2, r.status);
  uploads.clear();
  ASSERT_TRUE(relay->ListUploadNoniusWithStatus2(uploads));
  EXPECT_EQ(std::vector<String>{u"/data/2'"}, Paths(uploads));

  downloads.clear();
  ASSERT_TRUE(relay->ListDownloadNonius(downloads, true));
  EXPECT_EQ((std::vector<String>{u"/data/3'", u"/data/2'", u"/data/1'", u"/data/0'"}), Paths(downloads));
  ExpectSame(MakeDownload(u"/data/3'", 3), downloads.front());
  downloads.clear();
  ASSERT_TRUE(relay->ListDownloadNonius(downloads, false));
  EXPECT_EQ(3u, downloads.size());
  downloads.clear();
  ASSERT_TRUE(relay->ListDownloadNoniusWithStatus2(downloads));
  EXPECT_EQ(std::vector<String>{u"/data/2'"}, Paths(downloads));
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

TEST(RelayMgrInitTest, RefusesAnInvalidPath) {
  nsCOMPtr<ncRelayMgr> relay(NC_NEW(ncRelayMgr));
  EXPECT_THROW_CODE_MESSAGE(relay->Init(u""), 2, u"Path () is INVALID.");
  relay->Close();  // nothing was opened
}

}  // namespace
