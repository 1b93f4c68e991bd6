// The tag manager on real files and folders: the stream encodings, the quiet cases, the
// read-only retry and the errors it reports.
#include <utility>

#include "FileTestSupport.h"
#include "TestSupport.h"
#include "docmgr/ncADSMgr.h"
#include "docmgr/ncModuleAllocator.h"
#include "platform/ncPlatform.h"
#include "docmgr/nsCOMPtr.h"

namespace {

using base::String;

class ADSMgrTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!test::SupportsStreams(dir.path())) GTEST_SKIP() << test::kNoStreamsReason << dir.path();
    adsMgr = NC_NEW(ncADSMgr);
    file = dir.path() + "/report.docx";
    test::WriteFile(file, "content");
  }
  std::string Raw(const std::string& path, const char* stream) {
    std::string value;
    return test::GetXattr(path, std::string("user.kestrove.") + stream, value) ? value : "<absent>";
  }

  test::TempDir dir;
  nsCOMPtr<ncADSMgr> adsMgr;
  std::string file;
};

TEST_F(ADSMgrTest, TagsRoundTripInTheirStreamEncodingsOnFilesAndFolders) {
  test::MakeDir(dir.path() + "/folder");
  for (const std::string& path : {file, dir.path() + "/folder"}) {
    SCOPED_TRACE(path);
    const String wide = base::FromUtf8(path);
    adsMgr->SetDelayInfo(wide, 5000000000LL);
    adsMgr->SetDocIdInfo(wide, u"gns://AB12/\u00FCml");
    adsMgr->SetVrTypeInfo(wide, 3);
    adsMgr->SetErrMarkInfo(wide, -2);
    adsMgr->SetStatusInfo(wide, -7);
    adsMgr->SetStatusInfo(wide, 1);  // overwritten, not appended
    EXPECT_EQ(std::string("g\0n\0s\0:\0/\0/\0A\0B\0" "1\0" "2\0/\0\xFC\0m\0l\0", 28), Raw(path, "docId"));
    EXPECT_EQ(std::string("\xfe\xff\xff\xff\xff\xff\xff\xff", 8), Raw(path, "errMark"));  // widened with its sign

    using Getter = bool (ncADSMgr::*)(const String&, int64_t&);
    const std::pair<Getter, int64_t> tags[] = {
        {&ncADSMgr::GetDelayInfo, 5000000000LL}, {&ncADSMgr::GetVrTypeInfo, 3}, {&ncADSMgr::GetStatusInfo, 1}};
    for (const auto& tag : tags) {
      int64_t value = 0;
      EXPECT_TRUE((adsMgr.get()->*tag.first)(wide, value));
      EXPECT_EQ(tag.second, value);
    }

    for (auto remove : {&ncADSMgr::DeleteDelayInfo, &ncADSMgr::DeleteDocIdInfo, &ncADSMgr::DeleteVrTypeInfo,
                        &ncADSMgr::DeleteErrMarkInfo, &ncADSMgr::DeleteStatusInfo})
      (adsMgr.get()->*remove)(wide);
    EXPECT_FALSE(adsMgr->CheckDelayInfo(wide) || adsMgr->CheckDocIdInfo(wide) || adsMgr->CheckVrTypeInfo(wide) ||
                 adsMgr->CheckErrMarkInfo(wide) || adsMgr->CheckStatusInfo(wide));
  }
}

TEST_F(ADSMgrTest, PathsAndIdsAreCheckedPathFirstAndAbsentTagsAreQuiet) {
  const String wide = base::FromUtf8(file);
  EXPECT_THROW_CODE_MESSAGE(adsMgr->SetDocIdInfo(u"", u"not an id"), 2, u"Path () is INVALID.");
  EXPECT_THROW_CODE_MESSAGE(adsMgr->SetDocIdInfo(wide, u"not an id"), 2, u"Gns (not an id) is INVALID.");
  int64_t value = 0;
  EXPECT_THROW_CODE(adsMgr->GetStatusInfo(String(u"a\0b", 3), value), 2);
  EXPECT_EQ("<absent>", Raw(file, "docId"));

  // The long-path prefix is accepted as it stands.
  adsMgr->SetVrTypeInfo(u"\\\\?\\" + wide, 9);
  EXPECT_EQ(std::string("\x09\0\0\0\0\0\0\0", 8), Raw(file, "vrType"));

  // Absent tags and vanished items are quiet.
  const String gone = dir.child("gone.txt");
  value = 42;
  EXPECT_FALSE(adsMgr->GetDelayInfo(wide, value));
  adsMgr->DeleteStatusInfo(wide);  // never set
  adsMgr->DeleteDocIdInfo(gone);
  adsMgr->SetDelayInfo(gone, 1);
  EXPECT_FALSE(test::Exists(dir.path() + "/gone.txt"));
  // A stream of the wrong size is not an integer.
  ASSERT_TRUE(platform::WriteStream(wide, u"status", "abc"));
  EXPECT_FALSE(adsMgr->GetStatusInfo(wide, value));
  EXPECT_EQ(42, value);
}

// A write and a removal of a tag fail with their own codes and carry the system error.
void ExpectTagChangesFail(ncADSMgr* adsMgr, const String& path, int cause) {
  for (int code : {4, 5}) {
    try {
      code == 4 ? adsMgr->SetStatusInfo(path, 2) : adsMgr->DeleteStatusInfo(path);
      ADD_FAILURE() << "no exception";
    } catch (const base::Exception& e) {
      EXPECT_EQ(String(code == 4 ? u"Could not write" : u"Could not remove") + u" the synchronization tag of " + path + u".",
                e.getMessage());
      EXPECT_TRUE(e.getCode() == code && e.getCause() && e.getCause()->isSystemError() && e.getCause()->getCode() == cause);
    }
  }
}

// An item without streams reports that; one that stays unwritable after the read-only retry
// reports access denied and keeps its tag.
TEST_F(ADSMgrTest, TagsThatCannotChangeReportTheSystemErrorAsCause) {
  const std::string link = dir.path() + "/link";
  if (test::MakeSymlink(file, link)) ExpectTagChangesFail(adsMgr.get(), base::FromUtf8(link), 50);

  adsMgr->SetStatusInfo(base::FromUtf8(file), 1);
  test::Immutable locked(file);
  if (!locked.active()) GTEST_SKIP() << "the immutable flag is not available here";
  ExpectTagChangesFail(adsMgr.get(), base::FromUtf8(file), 5);
  EXPECT_EQ(std::string("\x01\0\0\0\0\0\0\0", 8), Raw(file, "status"));
}

// A read-only file refuses its streams to an ordinary user: the tag is written after the
// flag is lifted once, and the file is read-only again afterwards.
TEST_F(ADSMgrTest, ReadOnlyFilesAreTaggedAndStayReadOnly) {
  const String wide = base::FromUtf8(file);
  ASSERT_TRUE(platform::SetFileAttributes(wide, platform::kAttrReadOnly));
  test::GiveToUnprivileged(dir.path(), file);
  std::string why;
  const int result = test::RunUnprivileged(
      [&]() -> int {
        try {
          if (platform::WriteStream(wide, u"probe", "x")) return 10;  // the simulation does not refuse
          adsMgr->SetStatusInfo(wide, 4);
          adsMgr->SetVrTypeInfo(wide, 2);
          adsMgr->DeleteVrTypeInfo(wide);
          return 0;
        } catch (const base::Exception&) {
          return 11;
        }
      },
      why);
  if (result < 0) GTEST_SKIP() << "cannot make permission bits apply: " << why;
  ASSERT_EQ(0, result) << "10: the file system lets a read-only file be tagged";
  EXPECT_EQ(std::string("\x04\0\0\0\0\0\0\0", 8), Raw(file, "status"));
  EXPECT_EQ("<absent>", Raw(file, "vrType"));
  EXPECT_TRUE(platform::GetFileAttributes(wide) & platform::kAttrReadOnly);
}

}  // namespace
