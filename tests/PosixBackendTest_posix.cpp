// The POSIX backend's emulation of Win32 semantics: folders and files, hidden and system
// bits in user.DOSATTRIB, read-only as permission bits, errno to Win32 codes, and copies
// that never truncate their source.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "FileTestSupport.h"
#include "TestSupport.h"
#include "base/Directory.h"
#include "docmgr/Exception.h"
#include "base/File.h"
#include "platform/ncPlatform.h"

using base::String;

namespace {

TEST(FileSystemTest, DirectoriesFilesAttributesAndWin32Codes) {
  test::TempDir dir;
  const String tree = dir.child("x/y/z");
  base::Directory::create(tree);
  EXPECT_TRUE(base::Directory::exists(tree));
  base::File::create(dir.child("x/y/z/f.txt"));
  EXPECT_TRUE(base::File::isFile(dir.child("x/y/z/f.txt")));
  const auto entries = base::Directory::list(dir.child("x/y/z"));
  ASSERT_EQ(1u, entries.size());
  EXPECT_EQ(dir.child("x/y/z/f.txt"), entries[0]);  // full paths

  // Hidden and system live in user.DOSATTRIB; read-only is the owner-write bit.
  const String file = dir.child("x/y/z/f.txt");
  ASSERT_TRUE(platform::SetFileAttributes(file, platform::kAttrHidden | platform::kAttrSystem | platform::kAttrReadOnly));
  const uint32_t attributes = platform::GetFileAttributes(file);
  EXPECT_EQ(platform::kAttrHidden | platform::kAttrSystem | platform::kAttrReadOnly, attributes);
  struct stat info;
  ASSERT_EQ(0, ::stat((dir.path() + "/x/y/z/f.txt").c_str(), &info));
  EXPECT_EQ(0u, info.st_mode & 0222);
  std::string dosAttributes;
  EXPECT_TRUE(test::GetXattr(dir.path() + "/x/y/z/f.txt", "user.DOSATTRIB", dosAttributes));
  EXPECT_STREQ("0x6", dosAttributes.c_str());
  EXPECT_TRUE(platform::GetFileAttributes(dir.child(".dotted")) == platform::kInvalidAttributes);
  EXPECT_EQ(platform::kErrorFileNotFound, platform::GetLastError());
  base::File::create(dir.child(".dotted"));
  EXPECT_TRUE(platform::GetFileAttributes(dir.child(".dotted")) & platform::kAttrHidden);

  // System errors carry Win32 codes.
  try {
    base::File::remove(dir.child("missing"));
    FAIL() << "no exception";
  } catch (const base::Exception& e) {
    EXPECT_EQ(2, e.getCode());
    EXPECT_TRUE(e.isSystemError());
  }
  EXPECT_EQ(183u, platform::Win32ErrorFromErrno(EEXIST));
  EXPECT_EQ(145u, platform::Win32ErrorFromErrno(ENOTEMPTY));
  EXPECT_EQ(31u, platform::Win32ErrorFromErrno(ELOOP));
}

TEST(PlatformCopyTest, CopyOntoItselfOrAnExistingTargetKeepsBothFiles) {
  test::TempDir dir;
  test::WriteFile(dir.path() + "/a.txt", "original");
  test::WriteFile(dir.path() + "/b.txt", "target");
  ::link((dir.path() + "/a.txt").c_str(), (dir.path() + "/hard.txt").c_str());

  EXPECT_FALSE(platform::CopyFile(dir.child("a.txt"), dir.child("a.txt"), false));
  EXPECT_EQ(platform::kErrorSharingViolation, platform::GetLastError());
  EXPECT_FALSE(platform::CopyFile(dir.child("a.txt"), dir.child("hard.txt"), false));
  EXPECT_EQ("original", test::ReadFile(dir.path() + "/a.txt"));

  EXPECT_FALSE(platform::CopyFile(dir.child("a.txt"), dir.child("b.txt"), true));
  EXPECT_EQ(platform::kErrorAlreadyExists, platform::GetLastError());
  EXPECT_EQ("target", test::ReadFile(dir.path() + "/b.txt"));

  ASSERT_TRUE(platform::CopyFile(dir.child("a.txt"), dir.child("b.txt"), false));
  EXPECT_EQ("original", test::ReadFile(dir.path() + "/b.txt"));
  EXPECT_FALSE(platform::CopyFile(dir.child("a.txt"), dir.child("missing/c.txt"), false));
  EXPECT_EQ(platform::kErrorPathNotFound, platform::GetLastError());
  // Nothing but the three files: no working copy is left behind.
  EXPECT_EQ(3u, base::Directory::list(dir.wpath()).size());
}

}  // namespace
