// config.db of a sync root: the data directory its first Init creates, and the schema and
// view versions it keeps, one row each, cached once read.
#include <gtest/gtest.h>

#include "TestSupport.h"
#include "docmgr/ncConfigDBInfo.h"

namespace {

TEST(ConfigDBInfoTest, FirstInitCreatesTheDataDirectoryAndEachVersionIsOneCachedRow) {
  test::TempDir dir;
  ncConfigDBInfo config;
  EXPECT_THROW_CODE(config.Init(u"", false), 2);
  EXPECT_FALSE(test::Exists(dir.path() + "/.kestrove.cache"));
  EXPECT_FALSE(config.Init(dir.wpath(), false));
  EXPECT_EQ(dir.child(".kestrove.cache"), config.GetDBPath());
  EXPECT_TRUE(test::Exists(dir.path() + "/.kestrove.cache/config.db"));
  EXPECT_THROW_CODE_MESSAGE(config.GetVersionNum(), 1, u"Failed to get versionId from tb_version.");
  EXPECT_THROW_CODE_MESSAGE(config.GetViewVer(), 1, u"Failed to get versionId from tb_viewver.");

  // One row per version, cached once read, and kept across a reopen.
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
