// The POSIX backend's emulation of Win32 semantics: hidden and system bits in user.DOSATTRIB,
// read-only as permission bits, errno to Win32 codes, copies that never truncate their
// source, and the lock probe.
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "FileTestSupport.h"
#include "TestSupport.h"
#include "base/Directory.h"
#include "base/File.h"
#include "platform/ncFileLockProbe.h"
#include "platform/ncPlatform.h"

using base::String;

namespace {

// Hidden and system live in user.DOSATTRIB, read-only is the owner-write bit, a dotted name
// reads as hidden, errors carry Win32 codes, and a copy onto the source itself (also through
// a hard link) fails without truncating it or leaving a working copy behind.
TEST(FileSystemTest, AttributesCodesAndCopiesOntoTheSource) {
  test::TempDir dir;
  const std::string file = dir.path() + "/f.txt";
  test::WriteFile(file, "");
  const uint32_t all = platform::kAttrHidden | platform::kAttrSystem | platform::kAttrReadOnly;
  ASSERT_TRUE(platform::SetFileAttributes(dir.child("f.txt"), all));
  EXPECT_EQ(all, platform::GetFileAttributes(dir.child("f.txt")));
  struct stat info;
  ASSERT_EQ(0, ::stat(file.c_str(), &info));
  EXPECT_EQ(0u, info.st_mode & 0222);
  std::string dosAttributes;
  EXPECT_TRUE(test::GetXattr(file, "user.DOSATTRIB", dosAttributes));
  EXPECT_STREQ("0x6", dosAttributes.c_str());
  EXPECT_EQ(platform::kInvalidAttributes, platform::GetFileAttributes(dir.child(".dotted")));
  EXPECT_EQ(platform::kErrorFileNotFound, platform::GetLastError());
  base::File::create(dir.child(".dotted"));
  EXPECT_TRUE(platform::GetFileAttributes(dir.child(".dotted")) & platform::kAttrHidden);
  EXPECT_THROW_CODE(base::File::remove(dir.child("missing")), 2);

  test::WriteFile(dir.path() + "/a.txt", "original");
  ASSERT_EQ(0, ::link((dir.path() + "/a.txt").c_str(), (dir.path() + "/hard.txt").c_str()));
  EXPECT_FALSE(platform::CopyFile(dir.child("a.txt"), dir.child("a.txt"), false));
  EXPECT_EQ(platform::kErrorSharingViolation, platform::GetLastError());
  EXPECT_FALSE(platform::CopyFile(dir.child("a.txt"), dir.child("hard.txt"), false));
  EXPECT_EQ("original", test::ReadFile(dir.path() + "/a.txt"));
  EXPECT_EQ(4u, base::Directory::list(dir.wpath()).size());  // f.txt, .dotted, a.txt, hard.txt
}

// A write lock taken with fcntl, as SQLite takes its locks.
bool LockBytes(int fd, short type, off_t start, off_t length) {
  struct flock lock = {type, SEEK_SET, start, length, 0};  // Linux's field order
  return ::fcntl(fd, F_SETLK, &lock) == 0;
}

TEST(PlatformLockProbeTest, SeesAnotherProcesssLockButNotItsOwn) {
  test::TempDir dir;
  test::WriteFile(dir.path() + "/db", "data");
  ASSERT_TRUE(ncFileLockProbe::isSupported());
  ncFileLockProbe probe(dir.child("db"));
  ASSERT_TRUE(probe.isOpen());
  int64_t holder = 0;
  EXPECT_FALSE(probe.heldByOther(0, 4, holder));

  const int own = ::open((dir.path() + "/db").c_str(), O_RDWR);
  ASSERT_TRUE(LockBytes(own, F_WRLCK, 0, 2));
  EXPECT_FALSE(probe.heldByOther(0, 4, holder));  // this process's own lock
  ASSERT_TRUE(LockBytes(own, F_UNLCK, 0, 2));

  // Another process locks byte 2, says so, and holds the lock until it is killed.
  int ready[2];
  ASSERT_EQ(0, ::pipe(ready));
  const pid_t child = ::fork();
  if (child == 0) {
    const char byte = LockBytes(own, F_WRLCK, 2, 1) ? 'y' : 'n';
    if (::write(ready[1], &byte, 1) == 1) ::pause();
    ::_exit(1);
  }
  char byte = 0;
  ASSERT_EQ(1, ::read(ready[0], &byte, 1));
  EXPECT_EQ('y', byte);
  EXPECT_TRUE(probe.heldByOther(0, 4, holder));
  EXPECT_EQ(child, holder);
  EXPECT_FALSE(probe.heldByOther(0, 2, holder));  // the bytes the other process leaves free
  ::kill(child, SIGKILL);
  ::waitpid(child, nullptr, 0);
  EXPECT_FALSE(probe.heldByOther(0, 4, holder));
  for (int fd : {own, ready[0], ready[1]}) ::close(fd);

  EXPECT_FALSE(ncFileLockProbe(dir.child("missing.db")).isOpen());
}

}  // namespace
