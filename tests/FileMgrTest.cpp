// The file manager on real files: numbered moves and copies, tags that travel (also across
// file systems) or are stripped, deletion of read-only content, the duplicate set aside, the
// folder customisation, and where an item is when an operation through a temporary name
// fails half-way.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <algorithm>
#include <utility>

#include "FileTestSupport.h"
#include "TestSupport.h"
#include "docmgr/ncADSMgr.h"
#include "docmgr/ncFileMgr.h"
#include "docmgr/ncModuleAllocator.h"
#include "docmgr/ncPathMgr.h"
#include "platform/ncPlatform.h"
#include "docmgr/nsCOMPtr.h"

namespace {

using base::String;
using test::Exists;
using test::ReadFile;
using test::WriteFile;

const String kDocId = u"gns://5F1E/9C0A";

class FileMgrTest : public ::testing::Test {
 protected:
  void SetUp() override {
    pathMgr->Init(dir.wpath(), false);
    fileMgr = NC_NEW(ncFileMgr, pathMgr.get());
  }
  std::string p(const std::string& relative) const { return dir.path() + "/" + relative; }
  String w(const std::string& relative) const { return dir.child(relative); }
  std::string TempOf(const std::string& relative) {
    return base::ToUtf8(pathMgr->GetContainDocIdTempPathName(w(relative), kDocId));
  }
  void Tag(const String& path) {
    adsMgr->SetDocIdInfo(path, kDocId);
    adsMgr->SetErrMarkInfo(path, 7);
    for (auto set : {&ncADSMgr::SetDelayInfo, &ncADSMgr::SetStatusInfo, &ncADSMgr::SetVrTypeInfo}) (adsMgr.get()->*set)(path, 3);
  }
  // Lays out folders (names ending in '/') and files with their content, in order.
  void Lay(std::initializer_list<std::pair<std::string, const char*>> items) {
    for (const auto& item : items)
      item.first.back() == '/' ? test::MakeDir(p(item.first.substr(0, item.first.size() - 1)))
                               : WriteFile(p(item.first), item.second);
  }
  // Moves and answers where the item went after numbering.
  String MovedTo(const String& from, String target) {
    fileMgr->Move(from, target);
    return target;
  }
  // "docId,isDelay,status,vrType,errMark" as present (1) or absent (0).
  std::string Tags(const String& path) {
    std::string present;
    for (bool tag : {adsMgr->CheckDocIdInfo(path), adsMgr->CheckDelayInfo(path), adsMgr->CheckStatusInfo(path),
                     adsMgr->CheckVrTypeInfo(path), adsMgr->CheckErrMarkInfo(path)})
      present += tag ? '1' : '0';
    return present;
  }

  test::TempDir dir;
  const bool streams = test::SupportsStreams(dir.path());
  nsCOMPtr<ncPathMgr> pathMgr{NC_NEW(ncPathMgr)};
  nsCOMPtr<ncIFileMgr> fileMgr;
  nsCOMPtr<ncADSMgr> adsMgr{NC_NEW(ncADSMgr)};
};

// What the tags of the files do, where files keep streams.
class FileMgrTagsTest : public FileMgrTest {
 protected:
  void SetUp() override {
    FileMgrTest::SetUp();
    if (!streams) GTEST_SKIP() << test::kNoStreamsReason << dir.path();
  }
};

TEST_F(FileMgrTest, MoveAndCopyNumberFilesAndFoldersAndNothingOverwritesUnasked) {
  Lay({{"a.txt", "new"}, {"docs/", ""}, {"docs/a.txt", "old"}, {"docs/a (2).txt", "older"}, {"b.txt", "b"},
       {"Plans.old/", ""}, {"Plans.old/inside", "1"}, {"archive/", ""}, {"archive/Plans.old/", ""}});
  EXPECT_EQ(w("docs/a (3).txt"), MovedTo(w("a.txt"), w("docs/a.txt")));
  EXPECT_EQ("new", ReadFile(p("docs/a (3).txt")));
  EXPECT_FALSE(Exists(p("a.txt")));
  // Folders are numbered as a whole, whatever dots their names hold.
  EXPECT_EQ(w("archive/Plans.old (2)"), MovedTo(w("Plans.old"), w("archive/Plans.old")));
  EXPECT_EQ("1", ReadFile(p("archive/Plans.old (2)/inside")));
  // Missing folders on the way are created; a vanished source is quiet.
  MovedTo(w("b.txt"), w("x/y/b.txt"));
  EXPECT_EQ("b", ReadFile(p("x/y/b.txt")));
  EXPECT_EQ(w("x/c.txt"), MovedTo(w("gone.txt"), w("x/c.txt")));
  EXPECT_THROW_CODE_MESSAGE(NC_NEW(ncFileMgr, nullptr), 2, u"Argument (pathMgr) is NULL.");

  // Rename refuses an occupied name and a missing folder; a vanished source is quiet.
  WriteFile(p("a.txt"), "source");
  EXPECT_THROW_CODE(fileMgr->Rename(w("a.txt"), w("docs/a.txt")), 183);
  EXPECT_THROW_CODE(fileMgr->Rename(w("a.txt"), w("none/a.txt")), 3);
  EXPECT_EQ("old", ReadFile(p("docs/a.txt")));
  fileMgr->Rename(w("gone.txt"), w("c.txt"));

  // Copy numbers only when asked not to overwrite, and only on code 183. Windows' CopyFileW
  // answers 80 to an occupied name, which ends the copy with that error instead.
  if (streams) Tag(w("a.txt"));
  WriteFile(p("b.txt"), "existing");
  String target = w("b.txt");
  if (test::kPosixBackend) {
    fileMgr->Copy(w("a.txt"), target, true);
    EXPECT_EQ(w("b (2).txt"), target);
    EXPECT_EQ("source", ReadFile(p("b (2).txt")));
    EXPECT_EQ(streams ? "11111" : "00000", Tags(target));
  } else {
    EXPECT_THROW_CODE(fileMgr->Copy(w("a.txt"), target, true), 80);
    EXPECT_FALSE(Exists(p("b (2).txt")));
  }
  EXPECT_EQ("existing", ReadFile(p("b.txt")));
  target = w("b.txt");
  fileMgr->Copy(w("a.txt"), target, false);
  EXPECT_EQ("source", ReadFile(p("b.txt")));
}

TEST_F(FileMgrTagsTest, TagsTravelWithRenameAndMoveAndMoveNoADSStripsThemAlsoOnAnotherFileSystem) {
  Lay({{"plain.txt", "data"}, {"doc.txt", "data"}});
  Tag(w("plain.txt"));
  fileMgr->MoveNoADS(w("plain.txt"), w("out/plain.txt"), kDocId);
  EXPECT_EQ("data", ReadFile(p("out/plain.txt")));
  EXPECT_EQ("00000", Tags(w("out/plain.txt")));

  ::chmod(p("doc.txt").c_str(), 0640);
  Tag(w("doc.txt"));
  fileMgr->Rename(w("doc.txt"), w("renamed.txt"));
  EXPECT_EQ("11111", Tags(w("renamed.txt")));
  EXPECT_EQ("11111", Tags(MovedTo(w("renamed.txt"), w("sub/moved.txt"))));

  // A folder on another file system that takes user extended attributes.
  test::TempDir shm("/dev/shm");
  const std::string elsewhere = shm.path();
  struct stat here, there;
  if (elsewhere.empty() || ::stat(elsewhere.c_str(), &there) != 0 || ::stat(dir.path().c_str(), &here) != 0 ||
      here.st_dev == there.st_dev || !test::SupportsStreams(elsewhere))
    GTEST_SKIP() << "no second file system with user extended attributes";
  WriteFile(elsewhere + "/far.txt", "occupied");
  const String target = MovedTo(w("sub/moved.txt"), base::FromUtf8(elsewhere + "/far.txt"));
  EXPECT_EQ(base::FromUtf8(elsewhere + "/far (2).txt"), target);
  EXPECT_EQ("data", ReadFile(elsewhere + "/far (2).txt"));
  EXPECT_EQ("11111", Tags(target));
  ASSERT_EQ(0, ::stat((elsewhere + "/far (2).txt").c_str(), &there));
  EXPECT_EQ(0640u, there.st_mode & 07777);

  // A folder does not cross file systems: it stays where it was.
  Lay({{"folder/", ""}, {"folder/f", "f"}});
  EXPECT_THROW_CODE(MovedTo(w("folder"), base::FromUtf8(elsewhere + "/folder")), 17);
  EXPECT_EQ("f", ReadFile(p("folder/f")));
}

TEST_F(FileMgrTest, DeleteRemovesReadOnlyTreesButNotWhatLinksPointTo) {
  Lay({{"outside/", ""}, {"outside/keep", "keep"}});
  const std::string tree = p("tree");
  std::string why;
  test::GiveToUnprivileged(dir.path(), dir.path());
  const int result = test::RunUnprivileged(
      [&]() -> int {
        Lay({{"tree/", ""}, {"tree/sub/", ""}, {"tree/sub/ro.txt", "r"}, {"tree/top.txt", "t"}});
        if (!test::MakeSymlink(p("outside"), tree + "/link")) return 3;
        platform::SetFileAttributes(w("tree/sub/ro.txt"), platform::kAttrReadOnly);
        platform::SetFileAttributes(w("tree/top.txt"), platform::kAttrReadOnly | platform::kAttrHidden | platform::kAttrSystem);
        platform::SetFileAttributes(w("tree/sub"), platform::kAttrReadOnly);
        try {
          fileMgr->Delete(base::FromUtf8(tree));
        } catch (const base::Exception&) {
          return 1;
        }
        return Exists(tree) ? 2 : 0;
      },
      why);
  if (result < 0) GTEST_SKIP() << "cannot make permission bits apply: " << why;
  EXPECT_EQ(0, result);  // 2: something of the tree is left
  EXPECT_EQ("keep", ReadFile(p("outside/keep")));
  fileMgr->Delete(w("tree"));  // nothing left: quiet
}

TEST_F(FileMgrTagsTest, InternalRenameAndDeleteGoThroughTheTemporaryNameAndCarryOnFromIt) {
  Lay({{"a.txt", "a"}, {"folder/", ""}, {"folder/x", "x"}});
  Tag(w("a.txt"));
  WriteFile(TempOf("a.txt"), "stale leftover");
  fileMgr->InternalRename(w("a.txt"), w("b.txt"), kDocId);
  EXPECT_EQ("a", ReadFile(p("b.txt")));
  EXPECT_EQ("11111", Tags(w("b.txt")));
  EXPECT_FALSE(Exists(TempOf("a.txt")));

  fileMgr->InternalDelete(w("folder"), kDocId);
  EXPECT_FALSE(Exists(p("folder")) || Exists(TempOf("folder")));

  // What an interrupted operation left at the temporary name is the item itself: the next
  // operation on it finishes the job instead of throwing it away.
  for (const char* name : {"a.txt", "m.txt", "d.txt"}) WriteFile(TempOf(name), name);
  fileMgr->InternalRename(w("a.txt"), w("c.txt"), kDocId);
  fileMgr->MoveNoADS(w("m.txt"), w("out/m.txt"), kDocId);
  fileMgr->InternalDelete(w("d.txt"), kDocId);
  EXPECT_EQ("a.txt|m.txt", ReadFile(p("c.txt")) + "|" + ReadFile(p("out/m.txt")));
  EXPECT_FALSE(Exists(TempOf("d.txt")));
}

TEST_F(FileMgrTagsTest, AFailedStepLeavesTheItemWhereThatStepFoundIt) {
  Lay({{"a.txt", "a"}, {"b.txt", "b"}, {"d.txt", "d"}, {"e.txt", "e"}, {"folder/", ""}, {"folder/keep", "k"},
       {"locked/", ""}, {"locked/la.txt", "la"}, {"locked/lb.txt", "lb"}, {"locked/lf/", ""}, {"locked/lf/f", "f"}});
  // The new name is taken: the item waits at the temporary name.
  EXPECT_THROW_CODE(fileMgr->InternalRename(w("a.txt"), w("b.txt"), kDocId), 183);
  EXPECT_EQ("a", ReadFile(TempOf("a.txt")));
  EXPECT_EQ("b", ReadFile(p("b.txt")));

  test::Immutable locked(p("locked"));
  if (!locked.active()) GTEST_SKIP() << "the immutable flag is not available here";
  // The first step cannot take the item out of a folder that refuses changes: it keeps its name.
  EXPECT_THROW_CODE(fileMgr->InternalRename(w("locked/la.txt"), w("la.txt"), kDocId), 5);
  EXPECT_THROW_CODE(fileMgr->InternalDelete(w("locked/lb.txt"), kDocId), 5);
  EXPECT_THROW_CODE(fileMgr->MoveNoADS(w("locked/lf"), w("lf"), kDocId), 5);
  EXPECT_EQ("la|lb|f",
            ReadFile(p("locked/la.txt")) + "|" + ReadFile(p("locked/lb.txt")) + "|" + ReadFile(p("locked/lf/f")));

  // The last step cannot put it into that folder: it waits at the temporary name, untagged.
  EXPECT_THROW_CODE(fileMgr->InternalRename(w("d.txt"), w("locked/d.txt"), kDocId), 5);
  EXPECT_EQ("d", ReadFile(TempOf("d.txt")));
  Tag(w("e.txt"));
  EXPECT_THROW_CODE(fileMgr->MoveNoADS(w("e.txt"), w("locked/e.txt"), kDocId), 5);
  EXPECT_EQ("e", ReadFile(TempOf("e.txt")));
  EXPECT_EQ("00000", Tags(base::FromUtf8(TempOf("e.txt"))));

  // A delete that fails inside leaves the rest at the temporary name.
  test::Immutable keep(p("folder/keep"));
  EXPECT_THROW_CODE(fileMgr->InternalDelete(w("folder"), kDocId), 5);
  EXPECT_EQ("k", ReadFile(TempOf("folder") + "/keep"));
  test::SetImmutable(TempOf("folder") + "/keep", false);
}

TEST_F(FileMgrTagsTest, DuplicatesRepeatTheirPlaceInTheUnsynchronisedFolderAndFoldersGetTheirIconAndText) {
  Lay({{"sub/", ""}, {"sub/x.txt", "first"}, {"top/", ""}});
  Tag(w("sub/x.txt"));
  const String unsync = pathMgr->GetUnsyncDocPath();
  const String first = fileMgr->CreateDupDoc(w("sub/x.txt"), kDocId);
  EXPECT_EQ(base::Path::combine(unsync, u"sub/x.txt"), first);
  EXPECT_EQ("01110", Tags(first));  // no longer that document, no error; delay, status and view stay
  EXPECT_EQ("Z-Unsynchronized Documents", test::FolderDisplayText(base::ToUtf8(unsync)));

  // Folders get the icon and text of their first kind.
  // Document type, virtual-view folder or not, display text, icon index.
  const struct { int docType; bool vr; const char* comment; int icon; } folders[] = {
      {5, false, "1-My Documents", 5}, {4, false, "5-Organization Documents-Finance", 9}, {0, false, "", 0},
      {9, true, "", 1},                {36, true, "", 2},                                 {64, true, "", 0}};
  for (const auto& f : folders) {
    if (f.vr) fileMgr->CustomizeVrFolder(w("top"), f.docType);
    else fileMgr->CustomizeFolder(w("top"), f.docType, u"Finance");
    EXPECT_EQ(f.comment, test::FolderDisplayText(p("top"))) << f.docType;
    EXPECT_NE(std::string::npos, ReadFile(p("top/.directory")).find("X-Kestrove-IconIndex=" + std::to_string(f.icon) + "\n"))
        << f.docType;
  }
  // A type name from the server stays one value: line breaks cannot add keys or groups.
  fileMgr->CustomizeFolder(w("top"), 4, u"A\nIcon=/evil.png\r\n[Other]\tx\\y\x01\x7F");
  const std::string text = ReadFile(p("top/.directory"));
  EXPECT_NE(std::string::npos, text.find("Comment=5-Organization Documents-A\\nIcon=/evil.png\\r\\n[Other]\\tx\\\\y\n"))
      << text;
  EXPECT_EQ(4, std::count(text.begin(), text.end(), '\n')) << text;
}

}  // namespace
