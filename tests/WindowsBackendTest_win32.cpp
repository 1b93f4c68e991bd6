// The Windows backend as the component relies on it: Win32's own codes and attributes, the
// long-path prefix, code page 936, desktop.ini, module files, and streams where the file
// system keeps them.
#include <gtest/gtest.h>

#include "FileTestSupport.h"
#include "TestSupport.h"
#include "base/Directory.h"
#include "platform/ncPlatform.h"

using base::String;

namespace {

TEST(WindowsPathTest, TheLongPathPrefixGoesOnAbsolutePathsOnlyAndComesOffAgain) {
  EXPECT_EQ(u"\\\\?\\C:\\a\\c", platform::AddLongPathPrefix(u"C:/a/b/../c"));
  EXPECT_EQ(u"\\\\?\\C:\\a", platform::AddLongPathPrefix(u"\\\\?\\C:\\a"));
  EXPECT_EQ(u"\\\\?\\UNC\\server\\share\\f", platform::AddLongPathPrefix(u"\\\\server\\share\\f"));
  EXPECT_EQ(u"relative\\f", platform::AddLongPathPrefix(u"relative\\f"));
  EXPECT_EQ(u"C:\\a", platform::RemoveLongPathPrefix(u"\\\\?\\C:\\a"));
  EXPECT_EQ(u"\\\\server\\share", platform::RemoveLongPathPrefix(u"\\\\?\\UNC\\server\\share"));

  // Beyond MAX_PATH every call still reaches the file.
  test::TempDir dir;
  String deep = dir.wpath();
  while (deep.size() < 400) deep += u"\\" + String(60, u'd');
  base::Directory::create(deep);
  const String file = deep + u"\\f.txt";
  ASSERT_TRUE(platform::CreateEmptyFile(file));
  EXPECT_TRUE(platform::GetFileAttributes(platform::AddLongPathPrefix(file)) != platform::kInvalidAttributes);
  EXPECT_TRUE(platform::MoveFile(file, deep + u"\\g.txt"));
  EXPECT_TRUE(platform::DeleteFile(deep + u"\\g.txt"));
}

TEST(WindowsFileTest, AttributesAndTheSystemsOwnCodesForOccupiedNames) {
  test::TempDir dir;
  const String a = dir.child("a.txt"), b = dir.child("b.txt");
  test::WriteFile(base::ToUtf8(a), "source");
  test::WriteFile(base::ToUtf8(b), "target");
  const uint32_t bits = platform::kAttrHidden | platform::kAttrSystem | platform::kAttrReadOnly;
  ASSERT_TRUE(platform::SetFileAttributes(a, bits));
  EXPECT_EQ(bits, platform::GetFileAttributes(a) & bits);
  ASSERT_TRUE(platform::SetFileAttributes(a, platform::kAttrNormal));
  EXPECT_EQ(0u, platform::GetFileAttributes(a) & bits);

  // CopyFileW answers 80 and MoveFileW 183; both leave the target alone.
  EXPECT_FALSE(platform::CopyFile(a, b, true));
  EXPECT_EQ(platform::kErrorFileExists, platform::GetLastError());
  EXPECT_FALSE(platform::MoveFile(a, b));
  EXPECT_EQ(platform::kErrorAlreadyExists, platform::GetLastError());
  EXPECT_EQ("target", test::ReadFile(base::ToUtf8(b)));
  EXPECT_FALSE(platform::DeleteFile(dir.child("missing")));
  EXPECT_EQ(platform::kErrorFileNotFound, platform::GetLastError());
}

TEST(WindowsFileTest, FoldersAreCustomisedThroughAHiddenSystemDesktopIni) {
  test::TempDir dir;
  const String folder = dir.child("Mine");
  ASSERT_TRUE(platform::CreateDirectory(folder));
  const String text = u"1-My Documents";
  ASSERT_TRUE(platform::CustomizeFolder(folder, &text, u"C:\\icons.dll", 5));
  EXPECT_EQ("1-My Documents", test::FolderDisplayText(base::ToUtf8(folder)));
  const uint32_t ini = platform::GetFileAttributes(folder + u"\\desktop.ini");
  EXPECT_EQ(platform::kAttrHidden | platform::kAttrSystem, ini & (platform::kAttrHidden | platform::kAttrSystem));
  const bool readOnly = platform::GetFileAttributes(folder) & platform::kAttrReadOnly;
  // Again, over the hidden system file of the first time.
  ASSERT_TRUE(platform::CustomizeFolder(folder, nullptr, u"C:\\icons.dll", 6));
  EXPECT_EQ("", test::FolderDisplayText(base::ToUtf8(folder)));
  platform::SetFileAttributes(folder, platform::kAttrNormal);
  if (!readOnly) GTEST_SKIP() << "the folder keeps no read-only bit here (Wine stores none for folders)";
}

TEST(WindowsTextTest, CodePage936BothWays) {
  EXPECT_EQ("\xD6\xD0\xCE\xC4", platform::ToCodePage936(u"中文"));
  EXPECT_EQ(u"中文", platform::FromCodePage936("\xD6\xD0\xCE\xC4"));
  EXPECT_EQ("a?", platform::ToCodePage936(u"a\U0001F600"));  // beyond the BMP: one '?'
}

TEST(WindowsModuleTest, TheModuleFileLoadsAndAMissingOneSaysWhy) {
  void* module = platform::LoadModuleFile(base::FromUtf8(DOCMGR_MODULE_PATH));
  ASSERT_NE(nullptr, module) << platform::LastModuleError();
  EXPECT_NE(nullptr, platform::FindModuleSymbol(module, "NSGetModule"));
  EXPECT_EQ(nullptr, platform::FindModuleSymbol(module, "NoSuchFunction"));
  platform::UnloadModuleFile(module);
  EXPECT_EQ(nullptr, platform::LoadModuleFile(u"Z:\\nonexistent\\docmgr.dll"));
  EXPECT_FALSE(platform::LastModuleError().empty());
  const String here = platform::GetModuleDirectory(reinterpret_cast<const void*>(&platform::LoadModuleFile));
  EXPECT_TRUE(base::Directory::exists(here)) << base::ToUtf8(here);
  EXPECT_FALSE(platform::GetUserName().empty());
}

TEST(WindowsStreamTest, NamedStreamsOfFilesAndFolders) {
  test::TempDir dir;
  if (!test::SupportsStreams(dir.path())) GTEST_SKIP() << test::kNoStreamsReason << dir.path();
  const String file = dir.child("f.txt");
  ASSERT_TRUE(platform::CreateEmptyFile(file));
  for (const String& holder : {file, dir.wpath()}) {
    ASSERT_TRUE(platform::WriteStream(holder, u"docId", std::string("long value", 10)));
    ASSERT_TRUE(platform::WriteStream(holder, u"docId", "id"));  // shorter: nothing of the old left
    std::string bytes;
    ASSERT_TRUE(platform::ReadStream(holder, u"docId", bytes));
    EXPECT_EQ("id", bytes);
    EXPECT_TRUE(platform::HasStream(holder, u"docId"));
    EXPECT_TRUE(platform::RemoveStream(holder, u"docId"));
    EXPECT_FALSE(platform::HasStream(holder, u"docId"));
    EXPECT_EQ(platform::kErrorFileNotFound, platform::GetLastError());
  }
}

}  // namespace
