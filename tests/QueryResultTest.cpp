// The typed reader of query results on a real database.
#include <gtest/gtest.h>

#include "TestSupport.h"
#include "docmgr/ncModuleAllocator.h"
#include "docmgr/ncQueryResult.h"
#include "docmgr/nsCOMPtr.h"

namespace {

TEST(QueryResultTest, ReadsCellsByPositionAndReadsNullOutsideTheResult) {
  test::TempDir dir;
  nsCOMPtr<ncDBMgr> db(NC_NEW(ncDBMgr));
  db->Open(dir.child("query.db"));
  db->ExecuteSql(u"create table t (name text, count int, big int, note text)");
  db->ExecuteSql(u"insert into t values ('caf\u00e9 \u6587\u4ef6', 42, 9000000000, NULL)");
  db->ExecuteSql(u"insert into t values (NULL, -7, 0, '')");
  ncQueryResult result(db.get(), u"select name, count, big, note from t order by rowid");
  ASSERT_EQ(2, result.rows());
  ASSERT_EQ(4, result.columns());
  EXPECT_EQ(u"count", result.columnName(1));
  EXPECT_EQ(u"caf\u00e9 \u6587\u4ef6", result.text(0, 0));
  EXPECT_EQ(42, result.int32(0, 1));
  EXPECT_EQ(u"42", result.text(0, 1));
  EXPECT_EQ(INT64_C(9000000000), result.int64(0, 2));
  EXPECT_TRUE(result.flag(0, 1));
  EXPECT_FALSE(result.flag(1, 2));
  // NULL and an empty text read alike; only isNull tells them apart.
  EXPECT_TRUE(result.isNull(0, 3));
  EXPECT_FALSE(result.isNull(1, 3));
  EXPECT_EQ(u"", result.text(0, 3));
  EXPECT_EQ(0, result.int64(1, 0));

  for (const auto& [row, column] : {std::pair{-1, 0}, {2, 0}, {0, -1}, {0, 4}}) {
    EXPECT_TRUE(result.isNull(row, column)) << row << "," << column;
    EXPECT_EQ(u"", result.text(row, column));
    EXPECT_EQ(0, result.int64(row, column));
  }
  EXPECT_EQ(u"", result.columnName(4));

  ncQueryResult skipped(nullptr, u"select name from t");
  EXPECT_EQ(0, skipped.rows());
  db->Close();
}

}  // namespace
