// Brings the stores of one data directory to the schema the current release creates, without
// losing a row: what the stores' own set-up would create in a new database is read from a
// scratch database made by that same set-up, and compared with each existing store.
#pragma once

#include <vector>

#include "docmgr/ncDBMgr.h"
#include "docmgr/ncDocMgrDefs.h"

class ncSchemaReconciler {
 public:
  explicit ncSchemaReconciler(const base::String& dataDir) : dataDir_(dataDir) {}

  // Every store file present in the data directory: missing columns are added (with the
  // values a fresh row would have, derived values computed from the row), columns out of
  // order are put in order by rebuilding the table, and the store's own set-up then creates
  // the missing tables, indexes and triggers. Running it again changes nothing.
  void Reconcile();

  struct Column {
    base::String name;
    base::String type;
  };
  struct Table {
    base::String name;
    base::String createSql;
    std::vector<Column> columns;
  };
  // The tables of a database in creation order, each with its columns in order.
  static std::vector<Table> ReadTables(ncDBMgr* db);

 private:
  struct Store;
  void ReconcileStore(const Store& store);
  static const std::vector<Table>& FreshTables(const Store& store, const base::String& scratchPath);
  static std::vector<Table> CreateFreshTables(const Store& store, const base::String& scratchPath);
  struct AddedColumn {
    base::String table;
    Column column;
  };
  static void ReconcileColumns(ncDBMgr* db, const std::vector<Table>& fresh, void (*derive)(ncDBMgr*));
  static void AddMissingColumns(ncDBMgr* db, const Table& fresh, const Table& existing,
                                std::vector<AddedColumn>& added);
  static void FillFreshValues(ncDBMgr* db, const std::vector<AddedColumn>& added);
  static void RebuildInOrder(ncDBMgr* db, const Table& fresh);

  base::String dataDir_;
};
