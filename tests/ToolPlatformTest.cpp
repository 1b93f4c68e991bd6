// What the platform layer gives the tool on every system: whole files, readability, the
// kind of an entry, folders reached through links, the temporary folder and local times.
#include <gtest/gtest.h>

#include "FileTestSupport.h"
#include "TestSupport.h"
#include "platform/ncPlatform.h"

namespace {

using base::String;

TEST(ToolPlatformTest, WholeFilesKindsAndReadability) {
  test::TempDir dir;
  const String file = dir.child("notes.txt");
  ASSERT_TRUE(platform::WriteWholeFile(file, "a longer first text"));
  ASSERT_TRUE(platform::WriteWholeFile(file, "short"));  // replaces, never appends or keeps a tail
  EXPECT_EQ("short", test::ReadFile(dir.path() + "/notes.txt"));

  platform::FileInfo info;
  ASSERT_TRUE(platform::GetFileInfo(file, info));
  EXPECT_EQ(platform::FileKind::kRegularFile, info.kind);
  EXPECT_EQ(5, info.size);
  ASSERT_TRUE(platform::GetFileInfo(dir.wpath(), info));
  EXPECT_EQ(platform::FileKind::kDirectory, info.kind);
  EXPECT_EQ(0, info.size);

  EXPECT_TRUE(platform::IsReadable(file));
  EXPECT_TRUE(platform::IsDirectory(dir.wpath()));
  EXPECT_FALSE(platform::IsDirectory(file));
  EXPECT_FALSE(platform::IsReadable(dir.child("missing.txt")));
  EXPECT_EQ(platform::kErrorFileNotFound, platform::GetLastError());
  EXPECT_FALSE(platform::WriteWholeFile(dir.child("missing/notes.txt"), "x"));
  EXPECT_FALSE(platform::GetFileInfo(dir.child("missing.txt"), info));
}

TEST(ToolPlatformTest, AFolderReachedThroughALinkIsAFolderButTheLinkIsNotOne) {
  test::TempDir dir;
  test::MakeDir(dir.path() + "/real");
  if (!test::MakeSymlink(dir.path() + "/real", dir.path() + "/link")) GTEST_SKIP() << "no symbolic links here";
  // Wine makes the link, and then its own file calls find nothing at the name.
  if (platform::GetFileAttributes(dir.child("link")) == platform::kInvalidAttributes)
    GTEST_SKIP() << "the symbolic link just made cannot be examined here (error " << platform::GetLastError() << ")";
  EXPECT_TRUE(platform::IsDirectory(dir.child("link")));
  platform::FileInfo info;
  ASSERT_TRUE(platform::GetFileInfo(dir.child("link"), info));
  EXPECT_EQ(platform::FileKind::kLink, info.kind);
  EXPECT_FALSE(info.isDirectory);
}

TEST(ToolPlatformTest, TheTemporaryFolderAndLocalTimes) {
  const String temp = platform::GetTempDirectory();
  ASSERT_FALSE(temp.empty());
  EXPECT_TRUE(platform::IsDirectory(temp));
  EXPECT_NE(platform::kPathSeparator, temp.back());

  // Zones differ by whole minutes: the seconds and the order of moments survive.
  platform::LocalTime first, later;
  ASSERT_TRUE(platform::ToLocalTime(1767225600 + 7, first));  // 2026-01-01 00:00:07 UTC
  ASSERT_TRUE(platform::ToLocalTime(1767225600 + 7 + 86400 * 45, later));  // mid-February anywhere
  EXPECT_EQ(7, first.second);
  EXPECT_TRUE(first.year == 2025 || first.year == 2026) << first.year;
  EXPECT_EQ(2026, later.year);
  EXPECT_EQ(2, later.month);
}

}  // namespace
