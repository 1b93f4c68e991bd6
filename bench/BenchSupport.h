// Shared benchmark helpers: temporary folders, a raw SQLite connection with the wrapper's
// settings, and a reporter that prints each benchmark's time as a ratio to its baseline.
//
// Naming: a benchmark "X/..." named BM_Foo has its baseline in BM_Foo_Raw with the same
// arguments; the reporter pairs them by name.
#pragma once

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <map>
#include <string>

namespace bench {

class TempDir {
 public:
  TempDir();
  ~TempDir();
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

// A raw connection with the same settings as ncDBMgr::Open.
sqlite3* OpenRaw(const std::string& file);
void ExecRaw(sqlite3* db, const std::string& sql);

class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override;
  void PrintRatios();

 private:
  std::map<std::string, double> times_;  // run name -> real time per iteration (ns)
};

}  // namespace bench
