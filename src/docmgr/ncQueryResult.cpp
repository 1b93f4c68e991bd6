#include "docmgr/ncQueryResult.h"

using base::String;

ncQueryResult::ncQueryResult(ncDBMgr* db, const String& sql) : table_(db, sql, rows_, columns_, result_) {}

const char* ncQueryResult::cell(int row, int column) const {
  if (!result_ || row < 0 || row >= rows_ || column < 0 || column >= columns_) return nullptr;
  return result_[(row + 1) * columns_ + column];
}

String ncQueryResult::columnName(int column) const {
  if (!result_ || column < 0 || column >= columns_ || !result_[column]) return String();
  return base::FromUtf8(result_[column]);
}

String ncQueryResult::text(int row, int column) const {
  const char* value = cell(row, column);
  return value ? base::FromUtf8(value) : String();
}

int32_t ncQueryResult::int32(int row, int column) const { return base::ToInt32(cell(row, column)); }

int64_t ncQueryResult::int64(int row, int column) const { return base::ToInt64(cell(row, column)); }
