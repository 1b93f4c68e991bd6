// Scoped owner of one result table read through ncDBMgr::GetTable.
#pragma once

#include "docmgr/ncDBMgr.h"

class ncAutoGetTable {
 public:
  // With a null database nothing runs and the outputs keep the caller's initial values.
  ncAutoGetTable(ncDBMgr* db, const base::String& sql, int& rowCount, int& columnCount, char**& result);
  virtual ~ncAutoGetTable();
  ncAutoGetTable(const ncAutoGetTable&) = delete;
  ncAutoGetTable& operator=(const ncAutoGetTable&) = delete;

 private:
  char** result_ = nullptr;
};
