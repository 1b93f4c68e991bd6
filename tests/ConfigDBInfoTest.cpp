// config.db of a sync root: the hidden data directory its first Init creates, and the schema
// and view versions it keeps, one row each, cached once read.
#include <gtest/gtest.h>

#include "TestSupport.h"
#include "docmgr/ncConfigDBInfo.h"
#include "platform/ncPlatform.h"

using base::String;

namespace {

TEST(ConfigDBInfoTest, FirstInitCreatesTheHiddenDataDirectoryAndTheVersionsAreAbsentUntilWritten) {
  test::TempDir dir;
  ncConfigDBInfo config;
  EXPECT_THROW_CODE(config.Init(u"", false), 2);
  EXPECT_FALSE(test::Exists(dir.path() + "/.kestrove.cache"));
  EXPECT_FALSE(config.Init(dir.wpath(), false));
  const String data = dir.child(".kestrove.cache");
  EXPECT_EQ(data, config.GetDBPath());
  EXPECT_TRUE(platform::GetFileAttributes(data) & platform::kAttrHidden);
  EXPECT_TRUE(test::Exists(dir.path() + "/.kestrove.cache/config.db"));
  EXPECT_THROW_CODE_MESSAGE(config.GetVersionNum(), 1, u"Failed to get versionId from tb_version.");
  EXPECT_THROW_CODE_MESSAGE(config.GetViewVer(), 1, u"Failed to get versionId from tb_viewver.");
  config.Close();

  ncConfigDBInfo again;
  EXPECT_TRUE(again.Init(dir.wpath(), false));
  again.Close();
}

TEST(ConfigDBInfoTest, VersionsAreKeptInOneRowCachedOnceReadAndSurviveAReopen) {
  test::TempDir dir;
  ncConfigDBInfo config;
  config.Init(dir.wpath(), false);
  EXPECT_EQ(23, config.UpdateVersionNum(23));
  EXPECT_EQ(23, config.UpdateVersionNum(23));
  EXPECT_EQ((test::Rows{{"1"}}), test::Query(config.GetDBMgr(), "select count(*) from tb_version"));
  config.GetDBMgr()->ExecuteSql(u"update tb_version set versionId = 5");
  EXPECT_EQ(23, config.GetVersionNum());  // cached: no query

  EXPECT_EQ(0, config.UpdateVersionNum(0));
  config.GetDBMgr()->ExecuteSql(u"update tb_version set versionId = 9");
  EXPECT_EQ(9, config.GetVersionNum());  // 0 is never cached: read again

  EXPECT_EQ(2, config.UpdateViewVer(2));
  config.Close();
  ncConfigDBInfo reopened;
  EXPECT_TRUE(reopened.Init(dir.wpath(), false));
  EXPECT_EQ(9, reopened.GetVersionNum());
  EXPECT_EQ(2, reopened.GetViewVer());
  reopened.Close();
}

}  // namespace
