// Small helpers the harnesses share.
#pragma once

#include <sqlite3.h>

#include <cstdio>
#include <set>
#include <string>

namespace harness {

// Every value of the first column of the query; nothing when it cannot run.
inline std::set<std::string> Column(sqlite3* db, const char* sql) {
  std::set<std::string> values;
  sqlite3_stmt* stmt = nullptr;
  if (sqlite3_prepare_v2(db, sql, -1, &stmt, nullptr) == SQLITE_OK)
    while (sqlite3_step(stmt) == SQLITE_ROW) {
      const unsigned char* text = sqlite3_column_text(stmt, 0);
      values.insert(text ? reinterpret_cast<const char*>(text) : "");
    }
  sqlite3_finalize(stmt);
  return values;
}

// The keys of reported that stored lacks, each printed with its place.
inline int CountMissing(const char* where, const std::set<std::string>& reported, const std::set<std::string>& stored) {
  int missing = 0;
  for (const std::string& key : reported)
    if (!stored.count(key)) {
      std::fprintf(stderr, "%s: lost %s\n", where, key.c_str());
      ++missing;
    }
  return missing;
}

}  // namespace harness
