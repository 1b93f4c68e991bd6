// The SQLite wrapper on real database files: statements, errors with their exact texts,
// the loose column test, the protected schema and LIKE.
#include <gtest/gtest.h>

#include <chrono>
#include <future>

#include "TestSupport.h"
#include "docmgr/ncAutoGetTable.h"
#include "docmgr/ncDBMgr.h"
#include "docmgr/ncModuleAllocator.h"
#include "docmgr/nsCOMPtr.h"

using base::String;

namespace {

class DBMgrTest : public ::testing::Test {
 protected:
  void SetUp() override {
    db = NC_NEW(ncDBMgr);
    db->Open(dir.child("test.db"));
  }
  std::string Single(const std::string& sql) { return test::Query(db.get(), sql).at(0).at(0); }

  test::TempDir dir;
  nsCOMPtr<ncDBMgr> db;
  int rows = 0, columns = 0;
  char** result = nullptr;
};

// The second formatting pass of the messages has its own test; here the texts themselves.
TEST_F(DBMgrTest, FailuresCarryTheirTextsAndTheLongPathPrefixIsAccepted) {
  nsCOMPtr<ncDBMgr> other(NC_NEW(ncDBMgr));
  EXPECT_THROW_CODE_MESSAGE(other->Open(u""), 2, u"Path () is INVALID.");
  EXPECT_EQ(nullptr, other->GetHandle());
  other->Open(u"\\\\?\\" + dir.child("prefixed.db"));
  EXPECT_TRUE(test::Exists(dir.path() + "/prefixed.db"));
  other->Close();
  other->Close();  // the second close does nothing
  const String missing = dir.child("100%done/%s.db");
  EXPECT_THROW_CODE_MESSAGE(other->Open(missing), 1, u"Open database failed. Path: " + missing + u". Error: 14");

  EXPECT_THROW_CODE_MESSAGE(db->ExecuteSql(u"create tabel x"), 1,
                            u"Execute sql failed. Sql: create tabel x. Error: near \"tabel\": syntax error");
  EXPECT_THROW_CODE_MESSAGE(ncAutoGetTable(db.get(), u"select x% from t", rows, columns, result), 1,
                            u"Get table failed. Sql: select x% from t. Error: near \"from\": syntax error");
}

TEST_F(DBMgrTest, TableAndLooseColumnTests) {
  db->ExecuteSql(u"create table tb_Files (id text, filesize int)");
  db->ExecuteSql(u"create index tb_files_idx on tb_Files(id)");
  EXPECT_TRUE(db->IsTableExists(u"TB_FILES"));
  EXPECT_FALSE(db->IsTableExists(u"tb_files_idx"));  // an index is not a table
  EXPECT_TRUE(db->IsColumnExists(u"tb_files", u"filesize"));
  EXPECT_TRUE(db->IsColumnExists(u"tb_files", u"size"));  // contained in "filesize": counts as present
  EXPECT_TRUE(db->IsColumnExists(u"tb_files", u"INT"));   // a type word counts too
  EXPECT_FALSE(db->IsColumnExists(u"tb_files", u"otag"));
}

// Transactions: a second begin on the same thread is the store batch test's (a batch does
// not nest), threads that share the connection and keep every write the stress harness's.

// Whatever the text holds, one call runs one statement: a second one is refused whole,
// before the first runs.
TEST_F(DBMgrTest, OneStatementPerCall) {
  db->ExecuteSql(u"create table t (a text, b int);;  \n");  // blanks and semicolons may follow
  db->ExecuteSql(u"insert into t values('kept', 0)");
  EXPECT_THROW_CODE_MESSAGE(db->ExecuteSql(u"insert into t values('x', 1); drop table t"), 1,
                            u"Execute sql failed. Sql: insert into t values('x', 1); drop table t. "
                            u"Error: only one statement may run per call");
  EXPECT_THROW_CODE_MESSAGE(ncAutoGetTable(db.get(), u"select 1; delete from t", rows, columns, result), 1,
                            u"Get table failed. Sql: select 1; delete from t. "
                            u"Error: only one statement may run per call");
  EXPECT_EQ("1", Single("select count(*) from t"));
  db->ExecuteSql(u"");  // nothing to run is no failure

  db->ExecuteSql(u"insert into t values(NULL, 2)");
  // The same outputs as sqlite3_get_table, and an array sqlite3_free_table takes back.
  for (const char* sql : {"select * from t order by 2", "select * from t where 0", "select 1 as one;"}) {
    SCOPED_TRACE(sql);
    int rawRows = -1, rawColumns = -1;
    char** raw = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_get_table(db->GetHandle(), sql, &raw, &rawRows, &rawColumns, nullptr));
    ncAutoGetTable table(db.get(), base::FromUtf8(sql), rows, columns, result);
    ASSERT_EQ(rawRows, rows);
    ASSERT_EQ(rawColumns, columns);
    for (int cell = 0; cell < (rows + 1) * columns; ++cell) EXPECT_STREQ(raw[cell], result[cell]) << cell;
    sqlite3_free_table(raw);
  }
}

TEST_F(DBMgrTest, ProtectedSchemaChangesOnlyInsideAScope) {
  db->ExecuteSql(u"create table t (v int)");
  db->ProtectSchema();
  db->ExecuteSql(u"PRAGMA writable_schema=ON");  // only the protection stands in the way
  const std::string before = Single("select group_concat(sql, ';') from sqlite_master");
  for (const char16_t* change :
       {u"drop table t", u"alter table t add column w int", u"create table u (v int)", u"create index i on t(v)",
        u"create temp table tt (v int)", u"create trigger g after insert on t begin delete from t; end", u"detach database main",
        u"attach database ':memory:' as other", u"delete from sqlite_schema", u"update sqlite_master set sql = 'x' where name = 't'"})
    EXPECT_THROW_CODE_MESSAGE(db->ExecuteSql(change), 1,
                              u"Execute sql failed. Sql: " + String(change) + u". Error: not authorized");
  EXPECT_EQ(before, Single("select group_concat(sql, ';') from sqlite_master"));
  db->ExecuteSql(u"insert into t values(1)");  // rows may change
  // The scope holds the connection: another thread's statement waits until it ends.
  std::future<void> other;
  {
    ncDBMgr::SchemaChange repair(*db);
    ncDBMgr::SchemaChange nested(*db);
    db->ExecuteSql(u"create index i on t(v)");
    other = std::async(std::launch::async, [this] { db->ExecuteSql(u"insert into t values(2)"); });
    EXPECT_EQ(std::future_status::timeout, other.wait_for(std::chrono::milliseconds(50)));
  }
  other.get();
  EXPECT_EQ("2", Single("select count(*) from t"));
  EXPECT_THROW_CODE(db->ExecuteSql(u"drop index i"), 1);

  // A connection opened afresh is the client's again.
  db->Close();
  db->Open(dir.child("test.db"));
  db->ExecuteSql(u"drop index i");
}

// Stores select subtrees and search names with LIKE; the connection's own like() answers as
// SQLite's does, only without its cap on the pattern's length (the cache's long-path test).
TEST_F(DBMgrTest, LikeAnswersAsSqlitesOwn) {
  sqlite3* plain = nullptr;
  ASSERT_EQ(SQLITE_OK, sqlite3_open(":memory:", &plain));
  // Every text against every pattern, as one result of "text like pattern=answer" rows.
  const std::string sql =
      "with t(x) as (values (''), ('a'), ('abc'), ('ABC'), ('a\\b'), ('a\\b\\c'), ('ab\\c'), ('文档'), ('新文档.txt'), ('it''s'), ('x%y'), "
      "('a_c')), p(y) as (values (''), ('%'), ('_'), ('a'), ('A%'), ('%B%'), ('a\\%'), ('a_c'), ('%c'), ('a%c%'), ('%%'), ('_b_'), ('文%'), "
      "('%档%'), ('_档'), ('%文%档%'), ('it''s'), ('x%'), ('%\\%'), ('a__'), ('a%%b'), ('%_%_%'), ('新文档_txt')) select x || ' like ' || y || '=' || (x like y) from t, p";
  std::string expected;
  ASSERT_EQ(SQLITE_OK, sqlite3_exec(plain, sql.c_str(), [](void* out, int, char** cells, char**) {
    *static_cast<std::string*>(out) += std::string(cells[0]) + "\n";
    return 0;
  }, &expected, nullptr));
  sqlite3_close(plain);
  std::string actual;
  for (const auto& row : test::Query(db.get(), sql)) actual += row[0] + "\n";
  EXPECT_EQ(expected, actual);
}

}  // namespace
