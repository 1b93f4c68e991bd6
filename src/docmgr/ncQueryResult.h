// One query result read through ncDBMgr::GetTable, with typed getters by row
// and column. Rows count from 0 and exclude the header row of column names. A
// NULL cell, and any row or column outside the result, reads as an empty text
// and as 0: a caller that must tell them apart asks isNull. The table is freed
// when the reader goes out of scope; a reader belongs to one thread.
#pragma once

#include <cstdint>

#include "docmgr/ncAutoGetTable.h"

class ncQueryResult {
 public:
  // Runs sql on db; with a null db nothing runs and the result has no rows.
  ncQueryResult(ncDBMgr* db, const base::String& sql);
  ncQueryResult(const ncQueryResult&) = delete;
  ncQueryResult& operator=(const ncQueryResult&) = delete;

  int rows() const { return rows_; }
  int columns() const { return columns_; }
  // The name of a column as SQLite reports it; empty outside the result.
  base::String columnName(int column) const;

  bool isNull(int row, int column) const { return cell(row, column) == nullptr; }
  base::String text(int row, int column) const;
  int32_t int32(int row, int column) const;
  int64_t int64(int row, int column) const;
  // Any non-zero number.
  bool flag(int row, int column) const { return int64(row, column) != 0; }

 private:
  // Null for a NULL cell or a position outside the result.
  const char* cell(int row, int column) const;

  int rows_ = 0;
  int columns_ = 0;
  char** result_ = nullptr;
  ncAutoGetTable table_;
};
