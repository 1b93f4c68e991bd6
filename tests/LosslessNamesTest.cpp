// Names and values that are not valid Unicode: lone surrogates in Strings, bytes that are
// not UTF-8 in Linux file names, NUL units in a tag. Each must keep its own identity
// through the text conversions, the cache (a real cache.db) and the tags (real xattrs).
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

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

// The conversions give back what they were given on any input (the fuzz target checks that);
// these are the forms they give.
TEST(LosslessTextTest, LoneSurrogatesAndBytesThatAreNotUtf8HaveFormsOfTheirOwn) {
  EXPECT_EQ("\xED\xA0\x80", base::ToUtf8(kLoneHigh));
  EXPECT_EQ("\xED\xBF\xBF", base::ToUtf8(kLoneLow));
  EXPECT_EQ(kLoneLow + kLoneHigh, base::FromUtf8("\xED\xBF\xBF\xED\xA0\x80"));  // a reversed pair stays two units
  // Bytes that ToUtf8 never writes read as U+FFFD, one per byte, whatever they are.
  EXPECT_EQ(u"a\uFFFD\uFFFDb", base::FromUtf8(std::string("a\xFF\xC3" "b")));
  EXPECT_EQ(u"\uFFFD\uFFFD", base::FromUtf8(std::string("\xC0\xAF")));  // overlong form

  // In a native name each byte that is not UTF-8 becomes its own escape unit; other lone
  // surrogates go to disk in their 3-byte form and are listed back unchanged.
  EXPECT_EQ(u"a\xDCFF.txt", base::FromNativeBytes("a\xFF.txt"));
  EXPECT_EQ("a\xFE.txt", base::ToNativeBytes(u"a\xDCFE.txt"));
  for (const String& name : {kLoneHigh, kLoneLow, kLoneHigh + kLoneHigh + u"x", String(1, char16_t(0xDC7F))})
    EXPECT_EQ(name, base::FromNativeBytes(base::ToNativeBytes(name)));
  EXPECT_TRUE(base::Path::isValidPath(u"/a/b" + kLoneHigh));
}

const char kNoByteNames[] = "file names are UTF-16 units on Windows, not bytes";

// Every test here tags files.
class LosslessNamesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    cache_->Init(dir_.child("cache.db"), false);
    if (!test::SupportsStreams(dir_.path())) GTEST_SKIP() << test::kNoStreamsReason << dir_.path();
  }
  void TearDown() override { cache_->Close(); }
  // Creates the file under its exact bytes, as another program would.
  void CreateRaw(const std::string& name) { test::WriteFile(dir_.path() + "/" + name, ""); }
  String Absolute(const String& name) const { return dir_.wpath() + u"/" + name; }

  test::TempDir dir_;
  nsCOMPtr<ncADSMgr> tags_{NC_NEW(ncADSMgr)};
  nsCOMPtr<ncCacheMgr> cache_{NC_NEW(ncCacheMgr)};
};

TEST_F(LosslessNamesTest, NamesThatDifferOnlyInInvalidUnitsKeepTheirOwnRowsTagsAndFiles) {
  if (!test::kPosixBackend) GTEST_SKIP() << kNoByteNames;
  CreateRaw("a\xFF.txt");
  CreateRaw("a\xFE.txt");
  test::MakeDir(dir_.path() + "/sub\xFF");
  ASSERT_TRUE(platform::CreateEmptyFile(Absolute(u"b" + kLoneHigh + u".txt")));
  ASSERT_TRUE(platform::CreateEmptyFile(Absolute(u"b" + kLoneLow + u".txt")));

  std::vector<String> files;
  ASSERT_TRUE(platform::ListDirectory(dir_.wpath(), files));
  files.erase(std::remove_if(files.begin(), files.end(), [](const String& n) { return !base::EndsWith(n, u".txt"); }),
              files.end());
  std::sort(files.begin(), files.end());
  ASSERT_EQ((std::vector<String>{u"a\xDCFE.txt", u"a\xDCFF.txt", u"b" + kLoneHigh + u".txt", u"b" + kLoneLow + u".txt"}),
            files);

  const auto idOf = [](size_t i) { return u"gns://R/" + base::ToString(static_cast<int64_t>(i)); };
  for (size_t i = 0; i < files.size(); ++i) {
    ncCacheInfo info;
    info.id = idOf(i);
    cache_->Update(u"dir\\" + files[i], info);
    tags_->SetDocIdInfo(Absolute(files[i]), idOf(i));
  }
  for (size_t i = 0; i < files.size(); ++i) {
    SCOPED_TRACE(i);
    ncCacheInfo info;
    ASSERT_TRUE(cache_->GetInfoByPath(u"dir\\" + files[i], info));
    String tagged;
    ASSERT_TRUE(tags_->GetDocIdInfo(Absolute(files[i]), tagged));
    EXPECT_EQ(idOf(i) + u"|" + idOf(i), info.id + u"|" + tagged);
  }

  // File operations reach the item with those exact bytes, and only it.
  nsCOMPtr<ncPathMgr> pathMgr(NC_NEW(ncPathMgr));
  pathMgr->Init(dir_.wpath(), false);
  nsCOMPtr<ncFileMgr> fileMgr(NC_NEW(ncFileMgr, pathMgr.get()));
  const String renamed = Absolute(u"sub\xDCFF/c" + kLoneHigh + u".txt");
  fileMgr->InternalRename(Absolute(files[1]), renamed, idOf(1));
  // Its neighbour, one byte apart, is another file.
  EXPECT_TRUE(test::Exists(dir_.path() + "/sub\xFF/c\xED\xA0\x80.txt") && test::Exists(dir_.path() + "/a\xFE.txt"));
  String tagged;
  EXPECT_TRUE(tags_->GetDocIdInfo(renamed, tagged));
  EXPECT_EQ(idOf(1), tagged);
  fileMgr->Delete(Absolute(u"sub\xDCFF"));
  EXPECT_FALSE(test::Exists(dir_.path() + "/sub\xFF"));
}

TEST_F(LosslessNamesTest, ADocumentIdWithANulInsideIsStoredAndReadWhole) {
  const String file = Absolute(u"report.docx");
  ASSERT_TRUE(platform::CreateEmptyFile(file));
  // The read limit of 1,023 units holds, NULs counted like any unit.
  for (const String& id : {String(u"gns://A\0B\0", 10), u"gns://" + String(2000, u'\0')}) {
    tags_->SetDocIdInfo(file, id);
    String read;
    ASSERT_TRUE(tags_->GetDocIdInfo(file, read));
    EXPECT_EQ(id.substr(0, 1023), read);
  }
}

}  // namespace
