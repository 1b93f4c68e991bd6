// Names and values that are not valid Unicode: lone surrogates in Strings, bytes that are
// not UTF-8 in Linux file names, NUL units in a tag. Each must keep its own identity
// through the text conversions, the cache (a real cache.db) and the tags (real xattrs).
#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "FileTestSupport.h"
#include "TestSupport.h"
#include "base/Path.h"
#include "docmgr/ncADSMgr.h"
#include "docmgr/ncCacheMgr.h"
#include "docmgr/ncFileMgr.h"
#include "docmgr/ncModuleAllocator.h"
#include "docmgr/ncPathMgr.h"
#include "platform/ncPlatform.h"
#include "docmgr/nsCOMPtr.h"

namespace {

using base::String;

const String kLoneHigh(1, char16_t(0xD800));
const String kLoneLow(1, char16_t(0xDFFF));

TEST(LosslessTextTest, LoneSurrogatesRoundTripThroughWtf8) {
  EXPECT_EQ("\xED\xA0\x80", base::ToUtf8(kLoneHigh));
  EXPECT_EQ("\xED\xBF\xBF", base::ToUtf8(kLoneLow));
  const std::vector<String> texts = {u"a" + kLoneHigh + u"b", kLoneLow + kLoneHigh,  // reversed pair stays two lone units
                                     kLoneHigh + kLoneHigh + u"项", u"\U0001F600" + kLoneLow};
  for (const String& text : texts) EXPECT_EQ(text, base::FromUtf8(base::ToUtf8(text)));
  // Bytes that ToUtf8 never writes read as U+FFFD, one per byte, whatever they are.
  EXPECT_EQ(u"a\uFFFD\uFFFDb", base::FromUtf8(std::string("a\xFF\xC3" "b")));
  EXPECT_EQ(u"\uFFFD\uFFFD", base::FromUtf8(std::string("\xC0\xAF")));  // overlong form
}

TEST(LosslessTextTest, NativeNamesKeepEveryByteAndEveryLoneSurrogate) {
  // Each byte that is not UTF-8 becomes its own escape unit and comes back as that byte.
  EXPECT_EQ(u"a\xDCFF.txt", base::FromNativeBytes("a\xFF.txt"));
  EXPECT_EQ("a\xFE.txt", base::ToNativeBytes(u"a\xDCFE.txt"));
  const std::vector<std::string> names = {
      "plain", "\xE4\xB8\xAD\xE6\x96\x87", "a\xFF\xFE", "\xC3",  // truncated sequence
      "\xED\xA0\x80",                                            // a lone high surrogate's form
      "\xED\xA0\x80\xED\xB0\x80",                                // a pair in two 3-byte forms
      "\xED\xA0\x80\x80", "\xED\xA0\x80\xED\xA0\x81\xFF",        // highs before an escaped byte
      "\xED\xB2\x80",                                            // the form of an escape unit
      "\xF4\x90\x80\x80"};                                       // beyond U+10FFFF
  for (const std::string& name : names) {
    const String wide = base::FromNativeBytes(name);
    EXPECT_EQ(name, base::ToNativeBytes(wide));
    EXPECT_EQ(wide, base::FromNativeBytes(base::ToNativeBytes(wide)));
  }
  // Other lone surrogates go to disk in their 3-byte form and are listed back unchanged.
  for (const String& name : {kLoneHigh, kLoneLow, kLoneHigh + kLoneHigh + u"x", String(1, char16_t(0xDC7F))})
    EXPECT_EQ(name, base::FromNativeBytes(base::ToNativeBytes(name)));
  EXPECT_TRUE(base::Path::isValidPath(u"/a/b" + kLoneHigh));
}

class LosslessNamesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    tags_ = NC_NEW(ncADSMgr);
    cache_ = NC_NEW(ncCacheMgr);
    cache_->Init(dir_.child("cache.db"), false);
  }
  void TearDown() override {
    if (cache_) cache_->Close();
  }
  // Creates the file under its exact bytes, as another program would.
  void CreateRaw(const std::string& name) {
    const int fd = ::open((dir_.path() + "/" + name).c_str(), O_CREAT | O_WRONLY, 0644);
    ASSERT_GE(fd, 0) << name;
    ::close(fd);
  }
  String Absolute(const String& name) const { return dir_.wpath() + u"/" + name; }
  // Why a test that tags, or that makes names of raw bytes, cannot run here ("" when it can).
  std::string noStreams() const {
    return test::SupportsStreams(dir_.path()) ? "" : test::kNoStreamsReason + dir_.path();
  }
  static std::string noByteNames() {
    return test::kPosixBackend ? "" : "file names are UTF-16 units on Windows, not bytes";
  }

  test::TempDir dir_;
  nsCOMPtr<ncADSMgr> tags_;
  nsCOMPtr<ncCacheMgr> cache_;
};

TEST_F(LosslessNamesTest, NamesThatDifferOnlyInInvalidUnitsKeepTheirOwnRowsAndTags) {
  if (!noByteNames().empty()) GTEST_SKIP() << noByteNames();
  if (!noStreams().empty()) GTEST_SKIP() << noStreams();
  CreateRaw("a\xFF.txt");
  CreateRaw("a\xFE.txt");
  ASSERT_TRUE(platform::CreateEmptyFile(Absolute(u"b" + kLoneHigh + u".txt")));
  ASSERT_TRUE(platform::CreateEmptyFile(Absolute(u"b" + kLoneLow + u".txt")));

  std::vector<String> listed;
  ASSERT_TRUE(platform::ListDirectory(dir_.wpath(), listed));
  std::vector<String> files;
  for (const String& name : listed)
    if (base::EndsWith(name, u".txt")) files.push_back(name);
  std::sort(files.begin(), files.end());
  const std::vector<String> expected = {u"a\xDCFE.txt", u"a\xDCFF.txt", u"b" + kLoneHigh + u".txt",
                                        u"b" + kLoneLow + u".txt"};
  ASSERT_EQ(expected, files);

  for (size_t i = 0; i < files.size(); ++i) {
    const String id = u"gns://R/" + base::ToString(static_cast<int64_t>(i));
    ncCacheInfo info;
    info.id = id;
    cache_->Update(u"dir\\" + files[i], info);
    tags_->SetDocIdInfo(Absolute(files[i]), id);
  }
  EXPECT_EQ(4u, test::Query(cache_->GetDBMgr(), "select * from tb_cacheInfo").size());
  for (size_t i = 0; i < files.size(); ++i) {
    SCOPED_TRACE(i);
    const String id = u"gns://R/" + base::ToString(static_cast<int64_t>(i));
    ncCacheInfo info;
    ASSERT_TRUE(cache_->GetInfoByPath(u"dir\\" + files[i], info));
    EXPECT_EQ(id, info.id);
    String tagged;
    ASSERT_TRUE(tags_->GetDocIdInfo(Absolute(files[i]), tagged));
    EXPECT_EQ(id, tagged);
  }
  // The tag sits on the file with exactly those bytes.
  std::string raw;
  ASSERT_TRUE(test::GetXattr(dir_.path() + "/a\xFF.txt", "user.kestrove.docId", raw));
  EXPECT_EQ(std::string("g\0n\0s\0:\0/\0/\0R\0/\0" "1\0", 18), raw);
}

TEST_F(LosslessNamesTest, FileOperationsReachTheItemWithThoseExactBytes) {
  if (!noByteNames().empty()) GTEST_SKIP() << noByteNames();
  if (!noStreams().empty()) GTEST_SKIP() << noStreams();
  nsCOMPtr<ncPathMgr> pathMgr(NC_NEW(ncPathMgr));
  pathMgr->Init(dir_.wpath(), false);
  nsCOMPtr<ncFileMgr> files(NC_NEW(ncFileMgr, pathMgr.get()));
  test::MakeDir(dir_.path() + "/sub\xFF");
  CreateRaw("sub\xFF/a\xFF.txt");
  CreateRaw("sub\xFF/a\xFE.txt");
  const String folder = Absolute(u"sub\xDCFF");
  tags_->SetDocIdInfo(folder + u"/a\xDCFF.txt", u"gns://R/ff");

  files->InternalRename(folder + u"/a\xDCFF.txt", folder + u"/b" + kLoneHigh + u".txt", u"gns://R/ff");
  EXPECT_TRUE(test::Exists(dir_.path() + "/sub\xFF/b\xED\xA0\x80.txt"));
  EXPECT_TRUE(test::Exists(dir_.path() + "/sub\xFF/a\xFE.txt"));  // its neighbour is another file
  String id;
  EXPECT_TRUE(tags_->GetDocIdInfo(folder + u"/b" + kLoneHigh + u".txt", id));
  EXPECT_EQ(u"gns://R/ff", id);

  files->Delete(folder);
  EXPECT_FALSE(test::Exists(dir_.path() + "/sub\xFF"));
}

TEST_F(LosslessNamesTest, ADocumentIdWithANulInsideIsStoredAndReadWhole) {
  if (!noStreams().empty()) GTEST_SKIP() << noStreams();
  const String file = Absolute(u"report.docx");
  ASSERT_TRUE(platform::CreateEmptyFile(file));
  const String withNul(u"gns://A\0B\0", 10);
  tags_->SetDocIdInfo(file, withNul);
  String read;
  ASSERT_TRUE(tags_->GetDocIdInfo(file, read));
  EXPECT_EQ(withNul, read);
  // The read limit of 1,023 units still holds, NULs counted like any unit.
  const String longId = u"gns://" + String(2000, u'\0');
  tags_->SetDocIdInfo(file, longId);
  ASSERT_TRUE(tags_->GetDocIdInfo(file, read));
  EXPECT_EQ(longId.substr(0, 1023), read);
}

}  // namespace
