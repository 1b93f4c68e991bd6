// The typed reader of query results on a real database: NULL cells, numbers,
// texts, column names, and positions outside the result.
#include <gtest/gtest.h>

#include "TestSupport.h"
#include "docmgr/ncModuleAllocator.h"
#include "docmgr/ncQueryResult.h"
#include "docmgr/nsCOMPtr.h"

using base::String;

namespace {

class QueryResultTest : public ::testing::Test {
 protected:
  void SetUp() override {
    db = NC_NEW(ncDBMgr);
    db->Open(dir.child("query.db"));
    db->ExecuteSql(u"create table t (name text, count int, big int, note text)");
    db->ExecuteSql(
        u"insert into t values ('caf\u00e9 \u6587\u4ef6', 42, "
        u"9000000000, NULL)");
    db->ExecuteSql(u"insert into t values (NULL, -7, 0, '')");
  }
  void TearDown() override { db->Close(); }

  test::TempDir dir;
  nsCOMPtr<ncDBMgr> db;
};

TEST_F(QueryResultTest, ReadsTextsNumbersAndNullsByRowAndColumn) {
  ncQueryResult result(db.get(), u"select name, count, big, note from t order by rowid");
  ASSERT_EQ(2, result.rows());
  ASSERT_EQ(4, result.columns());
  EXPECT_EQ(u"count", result.columnName(1));

  EXPECT_EQ(u"caf\u00e9 \u6587\u4ef6", result.text(0, 0));
  EXPECT_EQ(42, result.int32(0, 1));
  EXPECT_EQ(INT64_C(9000000000), result.int64(0, 2));
  EXPECT_TRUE(result.flag(0, 1));
  EXPECT_EQ(u"42", result.text(0, 1));

  // NULL and an empty text read alike; only isNull tells them apart.
  EXPECT_TRUE(result.isNull(0, 3));
  EXPECT_FALSE(result.isNull(1, 3));
  EXPECT_EQ(u"", result.text(0, 3));
  EXPECT_EQ(u"", result.text(1, 3));
  EXPECT_TRUE(result.isNull(1, 0));
  EXPECT_EQ(0, result.int64(1, 0));
  EXPECT_FALSE(result.flag(1, 2));
  EXPECT_EQ(-7, result.int32(1, 1));
}

TEST_F(QueryResultTest, PositionsOutsideTheResultReadAsNull) {
  ncQueryResult result(db.get(), u"select count from t order by rowid");
  for (const auto& [row, column] : {std::pair{-1, 0}, {2, 0}, {0, -1}, {0, 1}}) {
    EXPECT_TRUE(result.isNull(row, column)) << row << "," << column;
    EXPECT_EQ(u"", result.text(row, column));
    EXPECT_EQ(0, result.int64(row, column));
  }
  EXPECT_EQ(u"", result.columnName(1));
  EXPECT_EQ(u"", result.columnName(-1));
}

TEST_F(QueryResultTest, AnEmptyResultOrNoDatabaseHasNoRows) {
  ncQueryResult none(db.get(), u"select name from t where count = 1000");
  EXPECT_EQ(0, none.rows());
  EXPECT_TRUE(none.isNull(0, 0));

  ncQueryResult skipped(nullptr, u"select name from t");
  EXPECT_EQ(0, skipped.rows());
  EXPECT_EQ(0, skipped.columns());
  EXPECT_EQ(u"", skipped.text(0, 0));
}

}  // namespace
