#include "docmgr/ncSchemaReconciler.h"

#include <algorithm>
#include <map>
#include <mutex>

#include "base/File.h"
#include "base/Path.h"
#include "docmgr/ncCacheMgr.h"
#include "docmgr/ncDocUtils.h"
#include "docmgr/ncLogMgr.h"
#include "docmgr/ncModuleAllocator.h"
#include "docmgr/ncMsgMgr.h"
#include "docmgr/ncQueryResult.h"
#include "docmgr/ncRelayMgr.h"
#include "docmgr/nsCOMPtr.h"

using base::String;

using base::Format;

namespace {

using Rows = std::vector<std::vector<String>>;

Rows Select(ncDBMgr* db, const String& sql) {
  ncQueryResult result(db, sql);
  Rows rows(result.rows());
  for (int row = 0; row < result.rows(); ++row)
    for (int column = 0; column < result.columns(); ++column) rows[row].push_back(result.text(row, column));
  return rows;
}

void RemoveDatabaseFiles(const String& path) {
  for (const char16_t* suffix : {u"", u"-wal", u"-shm", u"-journal"})
    if (base::File::exists(path + suffix)) base::File::remove(path + suffix);
}

// Each store made by its own set-up, so a reconciled table is the table that store creates.
void CreateCache(const String& path) {
  nsCOMPtr<ncCacheMgr> store(NC_NEW(ncCacheMgr));
  store->Init(path, false);
  store->Close();
}

void CreateRelay(const String& path) {
  nsCOMPtr<ncRelayMgr> store(NC_NEW(ncRelayMgr));
  store->Init(path);
  store->Close();
}

void CreateLog(const String& path) {
  nsCOMPtr<ncLogMgr> store(NC_NEW(ncLogMgr));
  store->Init(path);
  store->Close();
}

void CreateMsg(const String& path) {
  nsCOMPtr<ncMsgMgr> store(NC_NEW(ncMsgMgr));
  store->Init(path);
  store->Close();
}

// Rows written before the cache kept a name's initials or the parent's node name get
// them as Update would have written them.
void DeriveCacheValues(ncDBMgr* db) {
  if (!db->IsTableExists(u"tb_cacheInfo")) return;
  const Rows rows = Select(db,
                           u"select rowid, id, type, name from tb_cacheInfo where acronym is null or "
                           u"(acronym = '' and name <> '') or parentId is null");
  for (const auto& row : rows) {
    const String parentId = ncCacheMgr::ParentIdOf(row[1], static_cast<int32_t>(base::ToInt64(row[2])));
    db->ExecuteSql(Format(
        u"update tb_cacheInfo set acronym = coalesce(nullif(acronym, ''), '%s'), parentId = coalesce(parentId, '%s') "
        u"where rowid = %s",
        ncDocUtils::QuoteSql(ncCacheMgr::AcronymOf(row[3])), ncDocUtils::QuoteSql(parentId), row[0]));
  }
}

// The counters follow the entries whatever an earlier trigger did to them.
void RecountLogTypes(ncDBMgr* db) {
  const String count = u"(select count(*) from tb_synclog where tb_synclog.logType = tb_logstat.logType)";
  db->ExecuteSql(Format(u"update tb_logstat set logCount = %s where logCount is not %s", count, count));
}

// The value a column of a fresh row holds when the writer has nothing better: zero for
// numbers, an empty text otherwise, and a log entry is visible.
String FreshValue(const String& table, const ncSchemaReconciler::Column& column) {
  if (table == u"tb_synclog" && column.name == u"visible") return u"1";
  const String type = base::ToLower(column.type);
  return type.find(u"int") != String::npos || type == u"bool" ? String(u"0") : String(u"''");
}

const ncSchemaReconciler::Table* FindTable(const std::vector<ncSchemaReconciler::Table>& tables, const String& name) {
  for (const auto& table : tables)
    if (base::ToLower(table.name) == base::ToLower(name)) return &table;
  return nullptr;
}

bool HasColumn(const ncSchemaReconciler::Table& table, const String& name) {
  return std::any_of(table.columns.begin(), table.columns.end(), [&](const ncSchemaReconciler::Column& column) {
    return base::ToLower(column.name) == base::ToLower(name);
  });
}

bool SameColumnOrder(const ncSchemaReconciler::Table& a, const ncSchemaReconciler::Table& b) {
  if (a.columns.size() != b.columns.size()) return false;
  for (size_t i = 0; i < a.columns.size(); ++i)
    if (base::ToLower(a.columns[i].name) != base::ToLower(b.columns[i].name)) return false;
  return true;
}

}  // namespace

struct ncSchemaReconciler::Store {
  const char16_t* file;
  void (*create)(const String& path);
  void (*derive)(ncDBMgr* db);  // after columns are added, before the fresh values fill the rest
  void (*finish)(ncDBMgr* db);  // after the store's set-up has created what was missing
};

std::vector<ncSchemaReconciler::Table> ncSchemaReconciler::ReadTables(ncDBMgr* db) {
  std::vector<Table> tables;
  for (const auto& row : Select(
           db,
           u"select name, sql from sqlite_master where type = 'table' and name not like 'sqlite_%' order by rowid")) {
    Table table{row[0], row[1], {}};
    for (const auto& column : Select(db, Format(u"PRAGMA table_info(%s)", table.name)))
      table.columns.push_back(Column{column[1], column[2]});
    tables.push_back(std::move(table));
  }
  return tables;
}

void ncSchemaReconciler::Reconcile() {
  static const Store kStores[] = {
      {u"cache.db", CreateCache, DeriveCacheValues, nullptr},
      {u"nonius.db", CreateRelay, nullptr, nullptr},
      {u"log.db", CreateLog, nullptr, RecountLogTypes},
      {u"msg.db", CreateMsg, nullptr, nullptr},
  };
  for (const Store& store : kStores) ReconcileStore(store);
}

// The stores' set-up is the same for every root, so what it creates is read once.
const std::vector<ncSchemaReconciler::Table>& ncSchemaReconciler::FreshTables(const Store& store,
                                                                              const String& scratchPath) {
  static std::mutex lock;
  static std::map<String, std::vector<Table>> known;
  std::lock_guard<std::mutex> guard(lock);
  auto found = known.find(store.file);
  if (found == known.end()) found = known.emplace(store.file, CreateFreshTables(store, scratchPath)).first;
  return found->second;
}

std::vector<ncSchemaReconciler::Table> ncSchemaReconciler::CreateFreshTables(const Store& store,
                                                                             const String& scratchPath) {
  RemoveDatabaseFiles(scratchPath);
  std::vector<Table> tables;
  try {
    store.create(scratchPath);
    nsCOMPtr<ncDBMgr> scratch(NC_NEW(ncDBMgr));
    scratch->Open(scratchPath);
    tables = ReadTables(scratch.get());
    scratch->Close();
  } catch (...) {
    RemoveDatabaseFiles(scratchPath);
    throw;
  }
  RemoveDatabaseFiles(scratchPath);
  return tables;
}

void ncSchemaReconciler::ReconcileStore(const Store& store) {
  const String path = base::Path::combine(dataDir_, store.file);
  // A store the root never had is created by the document manager when it opens it.
  if (!base::File::exists(path)) return;
  const std::vector<Table> fresh = FreshTables(store, path + u".fresh");

  nsCOMPtr<ncDBMgr> db(NC_NEW(ncDBMgr));
  db->Open(path);
  db->ProtectSchema();
  {
    ncDBMgr::SchemaChange change(*db);
    db->BeginTransaction();
    try {
      ReconcileColumns(db.get(), fresh, store.derive);
      db->CommitTransaction();
    } catch (...) {
      db->RollbackTransaction();
      throw;
    }
  }
  db->Close();

  store.create(path);
  if (store.finish) {
    db->Open(path);
    store.finish(db.get());
    db->Close();
  }
}

void ncSchemaReconciler::AddMissingColumns(ncDBMgr* db, const Table& fresh, const Table& existing,
                                           std::vector<AddedColumn>& added) {
  for (const Column& column : fresh.columns) {
    if (HasColumn(existing, column.name)) continue;
    db->ExecuteSql(Format(u"alter table %s add column %s %s", fresh.name, column.name, column.type));
    added.push_back(AddedColumn{fresh.name, column});
  }
}

// Missing columns first, then the values the rows derive, then the fresh values for the
// rest; a table whose columns are then out of order is rebuilt.
void ncSchemaReconciler::ReconcileColumns(ncDBMgr* db, const std::vector<Table>& fresh, void (*derive)(ncDBMgr*)) {
  const std::vector<Table> existing = ReadTables(db);
  std::vector<AddedColumn> added;
  for (const Table& table : fresh)
    if (const Table* old = FindTable(existing, table.name)) AddMissingColumns(db, table, *old, added);
  if (derive) derive(db);
  FillFreshValues(db, added);
  const std::vector<Table> widened = ReadTables(db);
  for (const Table& table : fresh) {
    const Table* old = FindTable(widened, table.name);
    if (old && !SameColumnOrder(table, *old)) RebuildInOrder(db, table);
  }
}

// Derived columns are filled by the store's derive before this runs: only what is still
// empty takes the value of a fresh row.
void ncSchemaReconciler::FillFreshValues(ncDBMgr* db, const std::vector<AddedColumn>& added) {
  for (const AddedColumn& entry : added)
    db->ExecuteSql(Format(u"update %s set %s = %s where %s is null", entry.table, entry.column.name,
                          FreshValue(entry.table, entry.column), entry.column.name));
}

// Statements that write whole rows by position need the columns in the order the store
// creates them; a column added at the end is in the wrong place when it sits in the middle
// of a fresh table. The rows move to a table made by the store's own statement.
void ncSchemaReconciler::RebuildInOrder(ncDBMgr* db, const Table& fresh) {
  const String rebuilt = fresh.name + u"_rebuild";
  String createSql = fresh.createSql;
  createSql.replace(createSql.find(fresh.name), fresh.name.size(), rebuilt);
  String columns;
  for (const Column& column : fresh.columns) columns += (columns.empty() ? u"" : u", ") + column.name;
  db->ExecuteSql(Format(u"drop table if exists %s", rebuilt));
  db->ExecuteSql(createSql);
  db->ExecuteSql(Format(u"insert into %s (%s) select %s from %s", rebuilt, columns, columns, fresh.name));
  // Triggers of other tables may name this one (the log's counters); while it is gone,
  // current SQLite would refuse the rename for them, the legacy rename does not look.
  db->ExecuteSql(u"PRAGMA legacy_alter_table=ON");
  db->ExecuteSql(Format(u"drop table %s", fresh.name));
  db->ExecuteSql(Format(u"alter table %s rename to %s", rebuilt, fresh.name));
  db->ExecuteSql(u"PRAGMA legacy_alter_table=OFF");
}
