// config.db: the data directory created hidden on first use, and the version numbers with
// their caching.
#include <gtest/gtest.h>

#include "TestSupport.h"
#include "docmgr/ncAutoGetTable.h"
#include "docmgr/ncConfigDBInfo.h"
#include "platform/ncPlatform.h"

using base::String;

namespace {

int CountRows(ncDBMgr* db, const String& table) {
  int rows = 0, columns = 0;
  char** result = nullptr;
  ncAutoGetTable reader(db, u"select count(*) from " + table, rows, columns, result);
  return base::ToInt32(result[columns]);
}

TEST(ConfigDBInfoTest, FirstInitCreatesTheHiddenDataDirectory) {
  test::TempDir dir;
  ncConfigDBInfo first;
  EXPECT_FALSE(first.Init(dir.wpath(), false));
  const String data = dir.child(".kestrove.cache");
  EXPECT_EQ(data, first.GetDBPath());
  EXPECT_TRUE(platform::GetFileAttributes(data) & platform::kAttrHidden);
  EXPECT_TRUE(test::Exists(dir.path() + "/.kestrove.cache/config.db"));
  first.Close();
  ncConfigDBInfo second;
  EXPECT_TRUE(second.Init(dir.wpath(), false));
  EXPECT_THROW_CODE(second.Init(u"", false), 2);
}

TEST(ConfigDBInfoTest, VersionsAreStoredAsOneRowAndCached) {
  test::TempDir dir;
  ncConfigDBInfo config;
  config.Init(dir.wpath(), false);
  EXPECT_THROW_CODE_MESSAGE(config.GetVersionNum(), 1, u"Failed to get versionId from tb_version.");
  EXPECT_THROW_CODE_MESSAGE(config.GetViewVer(), 1, u"Failed to get versionId from tb_viewver.");

  EXPECT_EQ(23, config.UpdateVersionNum(23));
  EXPECT_EQ(23, config.UpdateVersionNum(23));
  EXPECT_EQ(1, CountRows(config.GetDBMgr(), u"tb_version"));
  config.GetDBMgr()->ExecuteSql(u"update tb_version set versionId = 5");
  EXPECT_EQ(23, config.GetVersionNum());  // cached: no query

  EXPECT_EQ(0, config.UpdateVersionNum(0));
  config.GetDBMgr()->ExecuteSql(u"update tb_version set versionId = 9");
  EXPECT_EQ(9, config.GetVersionNum());  // 0 is never cached: read again

  EXPECT_EQ(2, config.UpdateViewVer(2));
  EXPECT_EQ(2, config.GetViewVer());
  config.Close();
  ncConfigDBInfo reopened;
  reopened.Init(dir.wpath(), false);
  EXPECT_EQ(9, reopened.GetVersionNum());
  EXPECT_EQ(2, reopened.GetViewVer());
}

}  // namespace
