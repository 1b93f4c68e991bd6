// Resume records of uploads and downloads in a real nonius.db, and the list of blocks an
// interrupted upload still owes (expanding, counting, closing the open range, removing blocks
// one by one).
#include <gtest/gtest.h>

#include <cmath>
#include <set>

#include "TestSupport.h"
#include "dataapi/ncJson.h"
#include "docmgr/ncModuleAllocator.h"
#include "docmgr/ncRelayMgr.h"

using base::String;

namespace {

// A path with an apostrophe, a percent sign, a format directive and Chinese text.
const String kTrickyPath = u"/data/O'Brien's 100% %s 报告/设计'文档.docx";

// Records in column order, with distinct values in every column so that a swapped column shows.
ncUploadNonius MakeUpload(const String& srcPath, int status) {
  return {srcPath, u"gns://A1/B'2/目标 100%", u"gns://A1/B2/C3", u"d41d8cd98f00b204e9800998ecf8427e", u"1a2b3c4d",
          u"0cc175b9c0f1b6a831c399e269772661", u"upload-7", 1718000000123456789LL, u"otag-1", 4LL << 20,
          5000000000LL, u"[\"3-1193\"]", true, status, 3, 2, true, 0.5, -17, u"secret"};
}

ncDownloadNonius MakeDownload(const String& srcPath, int status) {
  return {srcPath, u"gns://X/Y'Z", u"gns://X/Y", 42, u"o-9", 4, u"Department's 文档库", 2, u"100% 共享",
          1718000000000000LL, 1LL << 40, 0x21, 123456789012LL, false, status, 1, false, 0.25};
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

class RelayMgrTest : public ::testing::Test {
 protected:
  void SetUp() override { relay->Init(dir.child("nonius.db")); }
  void TearDown() override { relay->Close(); }
  bool Get(const String& path, ncUploadNonius& read) { return relay->GetUploadNoniusByPath(path, read); }
  bool Get(const String& path, ncDownloadNonius& read) { return relay->GetDownloadNoniusByPath(path, read); }
  // The stored record of the same source path equals the expected one.
  template <typename Record>
  void ExpectStored(const Record& expected) {
    Record read;
    ASSERT_TRUE(Get(expected.srcPath, read));
    ExpectSame(expected, read);
  }

  test::TempDir dir;
  nsCOMPtr<ncRelayMgr> relay{NC_NEW(ncRelayMgr)};
};

// Listings: all records highest status first, or those whose status is not 2, or only those
// whose status is 2.
TEST_F(RelayMgrTest, ListingsSelectByStatus) {
  const auto expectListings = [this](auto make, auto update, auto list, auto listStatus2) {
    using Record = decltype(make(u"", 0));
    const auto paths = [](const std::vector<Record>& list) {
      std::vector<String> srcPaths;
      for (const Record& r : list) srcPaths.push_back(r.srcPath);
      return srcPaths;
    };
    std::vector<Record> records(1);  // listings append to what the caller has
    EXPECT_FALSE((relay.get()->*list)(records, true) || (relay.get()->*listStatus2)(records));
    for (int status : {1, 3, 2, 0}) (relay.get()->*update)(make(base::Format(u"/data/%d'", status), status));
    ASSERT_TRUE((relay.get()->*list)(records, true));
    EXPECT_EQ((std::vector<String>{u"", u"/data/3'", u"/data/2'", u"/data/1'", u"/data/0'"}), paths(records));
    ExpectSame(make(u"/data/3'", 3), records[1]);
    records.clear();
    ASSERT_TRUE((relay.get()->*list)(records, false));
    EXPECT_EQ(3u, records.size());
    for (const Record& r : records) EXPECT_NE(2, r.status);
    records.clear();
    ASSERT_TRUE((relay.get()->*listStatus2)(records));
    EXPECT_EQ(std::vector<String>{u"/data/2'"}, paths(records));
  };
  expectListings(MakeUpload, &ncRelayMgr::UpdateUploadNonius, &ncRelayMgr::ListUploadNonius,
                 &ncRelayMgr::ListUploadNoniusWithStatus2);
  expectListings(MakeDownload, &ncRelayMgr::UpdateDownloadNonius, &ncRelayMgr::ListDownloadNonius,
                 &ncRelayMgr::ListDownloadNoniusWithStatus2);
}

// That every other row stays as it was HostileValuesTest checks for each of these calls.
TEST_F(RelayMgrTest, FieldUpdatesPausesWholeWritesAndDeletesReachTheirRow) {
  relay->UpdateUploadNonius(MakeUpload(kTrickyPath, 1));
  relay->UpdateDownloadNonius(MakeDownload(kTrickyPath, 1));
  relay->UpdateUploadNoniusUnuploadBlocks(kTrickyPath, u"[\"1\",\"3-4\"]", 6);
  relay->UpdateUploadNoniusDuration(kTrickyPath, 9876543210LL);
  relay->UpdateDownloadNonius_Pause(kTrickyPath, 0.12345, 5);
  relay->UpdateDownloadNoniusRange(kTrickyPath, 77, 8, 1718000000999LL);
  // A pause keeps four decimals of the ratio, truncated toward zero.
  relay->UpdateUploadNonius_Pause(kTrickyPath, -0.12345, 4);
  EXPECT_EQ(0, ncRelayMgr::EncodeRatio(std::nan("")));
  EXPECT_EQ(INT32_MAX, ncRelayMgr::EncodeRatio(1e300));
  ncUploadNonius upload = MakeUpload(kTrickyPath, 4);
  upload.unUploadBlocks = u"[\"1\",\"3-4\"]";
  upload.duration = 9876543210LL;
  upload.ratios = -0.1234;
  ncDownloadNonius download = MakeDownload(kTrickyPath, 8);
  download.range = 77;
  download.lastModified = 1718000000999LL;
  download.ratios = 0.1234;
  ExpectStored(upload);
  ExpectStored(download);

  // The next write of the same source path replaces every field; an empty uploadId still counts.
  ncUploadNonius blank;
  blank.srcPath = kTrickyPath;
  relay->UpdateUploadNonius(blank);
  ExpectStored(blank);
  EXPECT_TRUE(relay->HasUploadNoniusWithPath(kTrickyPath));
  EXPECT_FALSE(relay->HasUploadNoniusWithPath(u"/data/O'Brien"));

  relay->DeleteUploadNonius(kTrickyPath);
  relay->DeleteDownloadNonius(kTrickyPath);
  // Nothing found: the caller's record is left as it was.
  ncUploadNonius untouched = upload;
  EXPECT_FALSE(Get(kTrickyPath, untouched) || Get(kTrickyPath, download));
  ExpectSame(upload, untouched);
}

class BlockListTest : public ::testing::Test {
 protected:
  std::set<int32_t> Parse(const String& list, int32_t maxNum) {
    std::set<int32_t> blocks = {-1};  // cleared by the call
    EXPECT_TRUE(relay->ParseUnuploadBlocks(list, maxNum, blocks));
    return blocks;
  }
  // The count is added to the caller's number.
  uint32_t Count(const String& list) {
    uint32_t num = 100;
    EXPECT_TRUE(relay->GetUnuploadNum(list, num));
    return num - 100;
  }
  String Delete(String list, int32_t blockId) {
    EXPECT_TRUE(relay->DeleteFormUnupload(list, blockId));
    return list;
  }

  // The codec works on text only: no database is opened.
  nsCOMPtr<ncRelayMgr> relay{NC_NEW(ncRelayMgr)};
};

TEST_F(BlockListTest, ExpandsCountsAndDeletesOnlyWhatClosedRangesHoldAndPassesOnTheReadersErrors) {
  // Equal or reversed ends and an open range hold no block yet; order and repeats do not
  // matter to the set; a range at the top of the number space ends.
  const struct { const char16_t* list; int32_t maxNum; std::set<int32_t> blocks; uint32_t count; } cases[] = {
      {u"[\"1-4\", \"7\"]", 10, {1, 2, 3, 4, 7}, 5}, {u"[\"1-4\", \"7\"]", 3, {1, 2, 3}, 5}, {u"[\"1-4\"]", 0, {}, 4},
      {u"[\"5-5\"]", 100, {}, 0}, {u"[\"3-\"]", 100, {}, 0}, {u"[\"9-2\"]", 100, {}, 0}, {u"[]", 100, {}, 0},
      {u" [ \"8\", \"2-3\", \"3\" ] ", 10, {2, 3, 8}, 4},
      {u"[\"2147483646-2147483647\"]", 10, {2147483646, 2147483647}, 2}};
  for (const auto& c : cases) {
    SCOPED_TRACE(base::ToUtf8(c.list));
    EXPECT_EQ(c.blocks, Parse(c.list, c.maxNum));
    EXPECT_EQ(c.count, Count(c.list));
  }
  uint32_t num = 12;
  EXPECT_FALSE(relay->GetUnuploadNum(u"", num));  // an empty text is no list at all
  EXPECT_EQ(12u, num);

  // Deleting a block splits the first element that holds it.
  const struct { const char16_t* before; int32_t block; const char16_t* after; } deletions[] = {
      {u"[\"1-4\"]", 1, u"[\"2-4\"]"},           {u"[\"1-4\"]", 2, u"[\"1\",\"3-4\"]"},
      {u"[\"1-4\"]", 3, u"[\"1-2\",\"4\"]"},     {u"[\"1-4\"]", 4, u"[\"1-3\"]"},
      {u"[\"1-4\", \"7\"]", 6, u"[\"1-4\",\"7\"]"}, {u"[\"3\",\"3\"]", 3, u"[\"3\"]"},
      {u"[\"9\",\"1-3\"]", 5, u"[\"9\",\"1-3\"]"}};
  for (const auto& d : deletions) EXPECT_EQ(String(d.after), Delete(d.before, d.block)) << base::ToUtf8(d.before);
  String empty;
  EXPECT_FALSE(relay->DeleteFormUnupload(empty, 1));
  EXPECT_EQ(u"", empty);

  // Text that is not a list of strings reaches the caller as the reader's exception.
  std::set<int32_t> blocks;
  EXPECT_THROW_CODE_MESSAGE(
      relay->ParseUnuploadBlocks(u"[1, 2]", 10, blocks), JSON::TypeError,
      u"Assert false : Type error: except(String), actual(Integer) [JSON::ValueT<char>::as_string ()]");
}

TEST_F(BlockListTest, ClosingTheOpenRangeAndResumingInAnyOrderEndWithAnEmptyList) {
  // A failure (no "after") leaves the list as it was: not exactly one element, a closed range,
  // an element that is no range, a start beyond the last block.
  const struct { const char16_t* before; int32_t maxId; const char16_t* after; } cases[] = {
      {u"", 1, u"[\"1\"]"}, {u"[\"3-\"]", 9, u"[\"3-9\"]"}, {u"[\"3-\"]", 3, u"[\"3\"]"}, {u"", 0, nullptr},
      {u"[\"3-\"]", 2, nullptr}, {u"[\"1-3\",\"5-9\"]", 9, nullptr}, {u"[]", 9, nullptr}, {u"[\"3-5\"]", 9, nullptr},
      {u"[\"\"]", 9, nullptr}};
  for (const auto& c : cases) {
    SCOPED_TRACE(base::ToUtf8(c.before) + " " + std::to_string(c.maxId));
    String list = c.before;
    EXPECT_EQ(c.after != nullptr, relay->UpdateUnuploadWithMaxId(c.maxId, list));
    EXPECT_EQ(String(c.after ? c.after : c.before), list);
  }

  // An upload resumed block by block in any order: after every block the list names exactly
  // the blocks still owed.
  String list;
  ASSERT_TRUE(relay->UpdateUnuploadWithMaxId(9, list));
  std::set<int32_t> owed = {1, 2, 3, 4, 5, 6, 7, 8, 9};
  for (int32_t block : {5, 1, 9, 3, 2, 8, 4, 7, 6}) {
    list = Delete(list, block);
    owed.erase(block);
    ASSERT_EQ(owed, Parse(list, INT32_MAX)) << base::ToUtf8(list);
    ASSERT_EQ(owed.size(), Count(list)) << base::ToUtf8(list);
  }
  EXPECT_EQ(u"[]", list);
}

}  // namespace
