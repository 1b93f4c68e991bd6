// The path manager: data directory, containment, absolute <-> relative paths of a main root
// and of a local sync root, path classification and the derived working names.
#include <gtest/gtest.h>

#include <regex>
#include <string>

#include "FileTestSupport.h"
#include "TestSupport.h"
#include "base/Path.h"
#include "base/User.h"
#include "docmgr/ncDocMgrLibrary.h"
#include "docmgr/ncModuleAllocator.h"
#include "docmgr/ncPathMgr.h"
#include "platform/ncPlatform.h"
#include "docmgr/nsCOMPtr.h"

namespace {

using base::String;

nsCOMPtr<ncPathMgr> MakePathMgr(const String& root, bool isLocalSync) {
  nsCOMPtr<ncPathMgr> pathMgr(NC_NEW(ncPathMgr));
  pathMgr->Init(root, isLocalSync);
  return pathMgr;
}

TEST(PathMgrTest, MainAndLocalSyncRootPaths) {
  nsCOMPtr<ncPathMgr> pathMgr = MakePathMgr(test::Native(u"/home/u/Sync"), false);
  EXPECT_EQ(test::Native(u"/home/u/Sync/.kestrove.cache"), pathMgr->GetDBPath());
  EXPECT_EQ(test::Native(u"/home/u/Sync/") + ncDocMgrLibrary::loadString(u"IDS_UNSYNC_DOC"), pathMgr->GetUnsyncDocPath());
  EXPECT_TRUE(pathMgr->IsInRootPath(test::Native(u"/home/u/sync/a"), false));
  EXPECT_FALSE(pathMgr->IsInRootPath(test::Native(u"/home/u/Sync"), false));
  EXPECT_TRUE(pathMgr->IsInDBPath(test::Native(u"/home/u/Sync/.kestrove.cache/cache.db"), false));

  EXPECT_EQ(u"", pathMgr->GetRelativePath(test::Native(u"/home/u/Sync")));
  EXPECT_EQ(u"a", pathMgr->GetRelativePath(u"\\\\?\\" + test::Native(u"/home/u/Sync/a")));
  EXPECT_EQ(u"项目\\Plan A.docx", pathMgr->GetRelativePath(test::Native(u"/home/u/Sync/项目/Plan A.docx")));
  EXPECT_EQ(u"A\\b", pathMgr->GetRelativePath(test::Native(u"/home/u/SYNC/A/b/")));  // the given case is kept
  EXPECT_EQ(test::Native(u"/home/u/Sync/a/b"), pathMgr->GetAbsolutePath(u"\\a\\b\\"));
  // A local sync root's relative paths start with its name.
  EXPECT_EQ(test::Native(u"/work/Sync/x"), MakePathMgr(test::Native(u"/work/Sync"), true)->GetAbsolutePath(u"Sync\\x"));
  EXPECT_TRUE(MakePathMgr(u"D:", true)->IsDriveRoot());
}

class PathRulesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    pathMgr->Init(dir.wpath(), false);
    pathMgr->SetUserName(u"alice");
  }
  String at(const std::string& name) const { return dir.child(name); }
  // "temp,backup,copy,transfer,conflict" as recognised (1) or not (0).
  std::string Kinds(const String& path) const {
    std::string kinds;
    for (bool kind : {pathMgr->IsTempPath(path), pathMgr->IsBackupPath(path), pathMgr->IsCopyPath(path),
                      pathMgr->IsTransferUnsyncPath(path), pathMgr->IsConflictPath(path)})
      kinds += kind ? '1' : '0';
    return kinds;
  }

  test::TempDir dir;
  nsCOMPtr<ncPathMgr> pathMgr{NC_NEW(ncPathMgr)};
};

TEST_F(PathRulesTest, EachIgnoreRuleAndTheCadTemporariesMatchAndTheirNearMissesDoNot) {
  // The eight-character rule needs an existing file; a folder or a near name is not it.
  for (const char* name : {"A1B2C3D4", "A1B2_3D4", "A1B2C3D"}) test::WriteFile(dir.path() + "/" + name, "x");
  test::MakeDir(dir.path() + "/B1B2C3D4");
  for (const char* name : {"atmp1234", "~$report.docx", "~~$report.docx", "._photo.jpg", "movie.crdownload", "NOTES.TMP",
                           "settings.td.cfg", "a.kestrove.bak", "desktop.ini", "sub/Desktop.INI", ".directory", "A1B2C3D4",
                           "~proj.MPJ~", "~proj.mpj~", "TMP0.MPJ", "tmp0.mtw", "a.txt___jb_tmp___", "b.txt___jb_old___"})
    EXPECT_TRUE(pathMgr->IsIgnorePath(at(name))) << name;
  for (const char* name : {"report.docx", "atmp.txt", "xatmp123", "_.photo.jpg", "tmp.txt", "a.tmpx", "a.bak.txt",
                           "desktop.ini.txt", "mydesktop.ini", "B1B2C3D4", "C1B2C3D4", "A1B2_3D4", "A1B2C3D", "proj.MPJ~",
                           "TMP1.MPJ", "c___jb_tmp___"})
    EXPECT_FALSE(pathMgr->IsIgnorePath(at(name))) << name;
  EXPECT_EQ(test::kPosixBackend, pathMgr->IsIgnorePath(at("back\\slash.txt")));  // a separator on Windows

  // CAD temporaries begin with the user name and twelve letters or digits.
  const std::string prefix = base::ToUtf8(base::User::getName().substr(0, 4));
  ASSERT_FALSE(prefix.empty());
  for (const char* ending : {"ABCDEF123456.prt", "ABCDEF123456", "abcdef123456.sim", "ABCDEF123456.PRT12"})
    EXPECT_TRUE(pathMgr->IsCadTempPath(at(prefix + ending)) && pathMgr->IsIgnorePath(at(prefix + ending))) << ending;
  for (const char* ending : {"ABCDEF123456.txt", "ABCDEF12345.prt", "ABCDEF12345_.prt", "ABCDEF1234567.prt"})
    EXPECT_FALSE(pathMgr->IsCadTempPath(at(prefix + ending))) << ending;
}

TEST_F(PathRulesTest, DerivedNamesAreSiblingsInTheirFormatsAndRecognisedOnlyAsTheirOwnKind) {
  const String source = at("sub/Quarterly report.docx");
  const String docId = u"gns://0A1B/C2D3E4F5";
  const struct { const char* kinds; String derived; } names[] = {
      {"10000", pathMgr->GetContainDocIdTempPathName(source, docId)}, {"10000", pathMgr->GetGuidTempPathName(source)},
      {"01000", pathMgr->GetBackupPathContainDocId(source, docId)},   {"00100", pathMgr->GetCopyPath(source)},
      {"00010", pathMgr->GetTransferUnsyncPath(source)},              {"00001", pathMgr->GetConflictPath(source)},
  };
  for (const auto& n : names) {
    SCOPED_TRACE(base::ToUtf8(n.derived));
    EXPECT_EQ(base::Path::getDirectoryName(source), base::Path::getDirectoryName(n.derived));
    EXPECT_EQ(u'.', base::Path::getFileName(n.derived)[0]);
    EXPECT_EQ(n.kinds, Kinds(n.derived));
  }
  // The document's own id component makes two documents' temporaries differ.
  EXPECT_NE(names[0].derived, pathMgr->GetContainDocIdTempPathName(source, u"gns://0A1B/99"));
  // User files that merely end like a working name are not taken for one.
  for (const char* name : {"notes.kestrove.temp", "notes.kestrove.copy", ".kestrove.tu", "x.kestrove.conflict"})
    EXPECT_EQ("00000", Kinds(at(name))) << name;

  // Siblings share the folder but not the name.
  EXPECT_TRUE(pathMgr->IsSiblingPath(at("d/a.txt"), at("d/b.txt")));
  EXPECT_TRUE(pathMgr->IsSiblingPath(at("D/a.txt"), at("d/.a.txt.kestrove.temp")));
  EXPECT_FALSE(pathMgr->IsSiblingPath(at("d/a.txt"), at("d/A.TXT")));
  EXPECT_FALSE(pathMgr->IsSiblingPath(at("d/a.txt"), at("d/e/b.txt")));

  // Two GUID names differ; only the third group of the GUID is printed in lower case.
  const std::string guid = base::ToUtf8(pathMgr->GetGuidTempPathName(at("a.txt")));
  EXPECT_NE(guid, base::ToUtf8(pathMgr->GetGuidTempPathName(at("a.txt"))));
  EXPECT_TRUE(std::regex_search(guid, std::regex(R"([/\\]\.a\.txt\.[0-9A-F]{12}[0-9a-f]{4}[0-9A-F]{16}\.kestrove\.temp$)")))
      << guid;
  const std::string conflict = base::ToUtf8(pathMgr->GetConflictPath(at("plan.v2.xlsx")));
  EXPECT_TRUE(std::regex_search(conflict, std::regex(R"([/\\]\.plan\.v2_alice_\d\d_\d\d_\d\d\.xlsx\.kestrove\.conflict$)")))
      << conflict;
}

TEST_F(PathRulesTest, TooLongAtTheFileSystemsLimits) {
  const size_t pathMax = test::kNativePathMax;  // 0 on Windows: no limit below the long-path rule
  EXPECT_FALSE(pathMgr->IsTooLongPath(base::FromUtf8("/a/" + std::string(test::kNativeNameMax, 'n'))));
  EXPECT_TRUE(pathMgr->IsTooLongPath(base::FromUtf8("/a/" + std::string(test::kNativeNameMax + 1, 'n') + "/b")));
  if (pathMax == 0) return;
  std::string path = "/" + std::string(200, 'r');
  while (path.size() + 201 < pathMax) path += "/" + std::string(200, 'd');
  path += "/" + std::string(pathMax - 1 - path.size() - 1, 'f');  // pathMax - 1 bytes
  EXPECT_FALSE(pathMgr->IsTooLongPath(base::FromUtf8(path)));
  EXPECT_TRUE(pathMgr->IsTooLongPath(base::FromUtf8(path + "f")));
  // Bytes count, not units: 128 two-byte characters make a 256-byte name.
  EXPECT_TRUE(pathMgr->IsTooLongPath(u"/a/" + String(128, u'\u00E9')));
}

TEST_F(PathRulesTest, SystemHeldEntriesAtTheRootOfADriveOrMountAndSystemHiddenNeedsBothAttributes) {
  // Drive entries are held everywhere, POSIX mount markers only where they are the system's.
  const std::pair<const char16_t*, bool> held[] = {
      {u"C:\\pagefile.sys", true}, {u"d:\\System Volume Information", true}, {u"E:\\$RECYCLE.BIN\\S-1-5", true},
      {u"\\\\?\\C:\\pagefile.sys", true}, {u"/lost+found", test::kPosixBackend},
      {u"/.Trash-1000/files", test::kPosixBackend}, {u"/.Trashes", test::kPosixBackend}, {u"C:\\pagefile.sys.old", false},
      {u"C:\\data\\pagefile.sys", false}, {u"/.Trash-x", false}, {u"/.Trash-", false}, {u"/lost+found2", false}};
  for (const auto& h : held) EXPECT_EQ(h.second, pathMgr->IsSysHoldPath(h.first)) << base::ToUtf8(h.first);
  // The same names in an ordinary folder are the user's.
  test::MakeDir(dir.path() + "/lost+found");
  EXPECT_FALSE(pathMgr->IsSysHoldPath(at("lost+found")));

  // System-hidden needs both attributes (kept beside the streams on POSIX).
  if (test::kPosixBackend && !test::SupportsStreams(dir.path()))
    GTEST_SKIP() << test::kNoStreamsReason << dir.path();
  const struct { const char* name; uint32_t attributes; bool systemHidden; } files[] = {
      {"both", platform::kAttrHidden | platform::kAttrSystem, true}, {"hidden", platform::kAttrHidden, false},
      {"system", platform::kAttrSystem, false}, {".dot", platform::kAttrSystem, true}};  // a dot name is hidden
  for (const auto& f : files) {
    test::WriteFile(dir.path() + "/" + f.name, "");
    ASSERT_TRUE(platform::SetFileAttributes(at(f.name), f.attributes));
    EXPECT_EQ(f.systemHidden, pathMgr->IsSystemHiddenPath(at(f.name))) << f.name;
  }
}

TEST_F(PathRulesTest, InvalidAndOutsidePathsThrowBeforeAnyTest) {
  const String bad(u"a\0b", 3);
  EXPECT_THROW_CODE_MESSAGE(pathMgr->IsIgnorePath(u""), 2, u"Path () is INVALID.");
  EXPECT_THROW_CODE_MESSAGE(pathMgr->IsInRootPath(bad, true), 2, u"Path (" + bad + u") is INVALID.");
  EXPECT_THROW_CODE(pathMgr->GetAbsolutePath(u""), 2);
  const String outside = dir.wpath() + u"2/a";
  EXPECT_THROW_CODE_MESSAGE(pathMgr->GetRelativePath(outside), 2,
                            base::Format(ncDocMgrLibrary::loadString(u"IDS_NOT_IN_ROOT_PATH"), outside));
}

}  // namespace
