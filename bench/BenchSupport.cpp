#include "BenchSupport.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include "base/Directory.h"
#include "text/String.h"

namespace bench {

TempDir::TempDir() {
  const char* base = std::getenv("TMPDIR");
  std::string pattern = std::string(base && *base ? base : "/tmp") + "/docmgr-bench-XXXXXX";
  if (!::mkdtemp(&pattern[0])) std::abort();
  path_ = pattern;
}

TempDir::~TempDir() { base::Directory::removeTree(base::FromUtf8(path_)); }

void ExecRaw(sqlite3* db, const std::string& sql) {
  char* error = nullptr;
  if (sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &error) != SQLITE_OK) {
    const std::string message = error ? error : "unknown error";
    sqlite3_free(error);
    throw std::runtime_error(message + " in " + sql);
  }
}

sqlite3* OpenRaw(const std::string& file) {
  sqlite3* db = nullptr;
  if (sqlite3_open(file.c_str(), &db) != SQLITE_OK) throw std::runtime_error("cannot open " + file);
  for (const char* pragma : {"PRAGMA busy_timeout=300000;", "PRAGMA cache_size=8000;", "PRAGMA journal_mode=WAL;",
                             "PRAGMA wal_autocheckpoint=10000;"})
    ExecRaw(db, pragma);
  return db;
}

void RatioReporter::ReportRuns(const std::vector<Run>& runs) {
  for (const Run& run : runs)
    if (!run.error_occurred && run.iterations > 0)
      times_[run.benchmark_name()] = run.GetAdjustedRealTime();
  ConsoleReporter::ReportRuns(runs);
}

void RatioReporter::PrintRatios() {
  std::printf("\nRatio to the raw-SQLite baseline of the same run (1.00 = as fast as raw):\n");
  for (const auto& entry : times_) {
    const std::string& name = entry.first;
    const size_t slash = name.find('/');
    const std::string function = name.substr(0, slash);
    const std::string arguments = slash == std::string::npos ? "" : name.substr(slash);
    if (function.size() > 4 && function.compare(function.size() - 4, 4, "_Raw") == 0) continue;
    const auto baseline = times_.find(function + "_Raw" + arguments);
    if (baseline == times_.end() || baseline->second <= 0) continue;
    std::printf("  %-50s %6.3f\n", name.c_str(), entry.second / baseline->second);
  }
}

}  // namespace bench
