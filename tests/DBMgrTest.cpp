// The SQLite wrapper on real database files: settings, statements, errors with their exact
// texts, the loose column test, and transactions across threads.
#include <gtest/gtest.h>

#include <thread>

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
};

TEST_F(DBMgrTest, OpenAppliesTheSettingsAndFailuresCarryTheirTexts) {
  EXPECT_EQ("300000", Single("PRAGMA busy_timeout;"));
  EXPECT_EQ("8000", Single("PRAGMA cache_size;"));
  EXPECT_EQ("wal", Single("PRAGMA journal_mode;"));
  EXPECT_EQ("10000", Single("PRAGMA wal_autocheckpoint;"));

  nsCOMPtr<ncDBMgr> other(NC_NEW(ncDBMgr));
  EXPECT_THROW_CODE_MESSAGE(other->Open(u""), 2, u"Path () is INVALID.");
  EXPECT_EQ(nullptr, other->GetHandle());
  other->Open(u"\\\\?\\" + dir.child("prefixed.db"));  // the long-path prefix is accepted
  EXPECT_TRUE(test::Exists(dir.path() + "/prefixed.db"));
  other->Close();
  other->Close();  // the second close does nothing
  const String missing = dir.child("no/such/folder/x.db");
  EXPECT_THROW_CODE_MESSAGE(other->Open(missing), 1, u"Open database failed. Path: " + missing + u". Error: 14");
  // A path with "%" in it survives the message's second formatting pass.
  const String percent = dir.child("100%done/%s.db");
  EXPECT_THROW_CODE_MESSAGE(other->Open(percent), 1, u"Open database failed. Path: " + percent + u". Error: 14");

  // Statement errors carry the SQL and SQLite's text.
  EXPECT_THROW_CODE_MESSAGE(db->ExecuteSql(u"create tabel x"), 1,
                            u"Execute sql failed. Sql: create tabel x. Error: near \"tabel\": syntax error");
  db->ExecuteSql(u"create table t (name text)");
  // "%%" in the statement becomes "%" on the second pass; other "%" stay.
  EXPECT_THROW_CODE_MESSAGE(db->ExecuteSql(u"select * from t where name like '100%%' and nope"), 1,
                            u"Execute sql failed. Sql: select * from t where name like '100%' and nope. "
                            u"Error: no such column: nope");
  EXPECT_THROW_CODE_MESSAGE(db->ExecuteSql(u"insert into t values('%s', '%d')"), 1,
                            u"Execute sql failed. Sql: insert into t values('%s', '%d'). "
                            u"Error: table t has 1 columns but 2 values were supplied");
  int rows = 0, columns = 0;
  char** result = nullptr;
  EXPECT_THROW_CODE_MESSAGE(ncAutoGetTable(db.get(), u"select x% from t", rows, columns, result), 1,
                            u"Get table failed. Sql: select x% from t. Error: near \"from\": syntax error");
}

TEST_F(DBMgrTest, TableAndLooseColumnTestsAndNoDatabase) {
  db->ExecuteSql(u"create table tb_Files (id text, filesize int)");
  db->ExecuteSql(u"create index tb_files_idx on tb_Files(id)");
  EXPECT_TRUE(db->IsTableExists(u"TB_FILES"));
  EXPECT_FALSE(db->IsTableExists(u"tb_files_idx"));  // an index is not a table
  EXPECT_FALSE(db->IsTableExists(u"tb_missing"));
  EXPECT_TRUE(db->IsColumnExists(u"tb_files", u"filesize"));
  EXPECT_TRUE(db->IsColumnExists(u"tb_files", u"size"));  // contained in "filesize": counts as present
  EXPECT_TRUE(db->IsColumnExists(u"tb_files", u"INT"));   // a type word counts too
  EXPECT_FALSE(db->IsColumnExists(u"tb_files", u"otag"));

  // Without a database the table reader runs nothing.
  int rows = 7, columns = 8;
  char** result = nullptr;
  { ncAutoGetTable table(nullptr, u"select 1", rows, columns, result); }
  EXPECT_EQ(7, rows);
  EXPECT_EQ(8, columns);
  EXPECT_EQ(nullptr, result);
}

TEST_F(DBMgrTest, FailedStatementLeavesTheTransactionToTheCallerAndTwoThreadsKeepEveryRow) {
  db->ExecuteSql(u"create table t (v int unique)");
  db->BeginTransaction();
  db->ExecuteSql(u"insert into t values(1)");
  EXPECT_THROW_CODE(db->ExecuteSql(u"insert into t values(1)"), 1);
  db->RollbackTransaction();
  EXPECT_EQ("0", Single("select count(*) from t"));
  // A second begin on the same thread gets SQLite's error, not a deadlock.
  db->BeginTransaction();
  EXPECT_THROW_CODE(db->BeginTransaction(), 1);
  db->CommitTransaction();
  std::thread other([this] {
    db->BeginTransaction();
    db->CommitTransaction();
  });
  other.join();

  // Transactions of two threads keep every row.
  db->ExecuteSql(u"create table rows (thread int, n int)");
  const int perThread = 300;
  auto writer = [this](int thread) {
    for (int n = 0; n < perThread; ++n) {
      db->BeginTransaction();
      db->ExecuteSql(base::Format(u"insert into rows values(%d, %d)", thread, n));
      db->CommitTransaction();
    }
  };
  std::thread first(writer, 1), second(writer, 2);
  first.join();
  second.join();
  EXPECT_EQ(std::to_string(2 * perThread), Single("select count(*) from rows"));
  EXPECT_EQ("300", Single("select count(distinct n) from rows where thread = 2"));
}

}  // namespace
