// Copies through the platform layer: a copy never truncates its own source and a failed or
// refused copy leaves an existing target as it was.
#include <gtest/gtest.h>
#include <unistd.h>

#include "TestSupport.h"
#include "base/Directory.h"
#include "platform/ncPlatform.h"

namespace {

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
