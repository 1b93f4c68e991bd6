#include "docmgr/ncAutoGetTable.h"

using base::String;

ncAutoGetTable::ncAutoGetTable(ncDBMgr* db, const String& sql, int& rowCount, int& columnCount, char**& result) {
  if (!db) return;
  db->GetTable(sql, rowCount, columnCount, result);
  result_ = result;
}

ncAutoGetTable::~ncAutoGetTable() {
  if (result_) sqlite3_free_table(result_);
}
