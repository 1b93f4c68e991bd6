// Shared benchmark helpers: raw SQLite connections, the recording of the statements a store
// hands to SQLite, their raw replay, and the paired run that every benchmark uses. The
// temporary folders are the tests' test::TempDir.
//
// One definition for every figure: a benchmark runs our call and the raw replay of the very
// statements that call ran, alternately in one loop (the order flips every iteration), each
// timed on its own. Its time is our call's; its counter "ours/raw" is the median of the
// per-iteration ratios our time / raw time, and the summary at the end prints exactly those
// counters. A busy neighbour process or a checkpoint that lands on one call moves one ratio,
// not the median.
#pragma once

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "TempDir.h"

namespace bench {

// A raw connection with the same settings as ncDBMgr::Open, and the synchronous mode the
// store sets ("NORMAL" or "OFF").
sqlite3* OpenRaw(const std::string& file, const char* synchronous);
void ExecRaw(sqlite3* db, const std::string& sql);
int64_t QueryNumber(sqlite3* db, const std::string& sql);
void CopyFile(const std::string& from, const std::string& to);

// Records, while it lives, the statement texts this thread hands to sqlite3_exec and
// sqlite3_get_table (the two calls through which every store reaches SQLite; the benchmark
// binary is linked with both wrapped).
class StatementRecorder {
 public:
  StatementRecorder();
  ~StatementRecorder();
  StatementRecorder(const StatementRecorder&) = delete;
  StatementRecorder& operator=(const StatementRecorder&) = delete;
  std::vector<std::string> take();

 private:
  std::vector<std::string> statements_;
  std::vector<std::string>* previous_;
};

// Runs the statements as a careful raw caller runs a statement text: prepared, stepped to
// the end with every column of every row read, finalized.
void Replay(sqlite3* db, const std::vector<std::string>& statements);

// The paired loop. ours(i) and raw(i) do the same work for variant i (iteration number
// modulo variants); reset(), when given, runs untimed after both sides of an iteration
// (e.g. puts back what a delete removed).
void RunPaired(benchmark::State& state, size_t variants, const std::function<void(size_t)>& ours,
               const std::function<void(size_t)>& raw, const std::function<void()>& reset = nullptr);

// Prints every run as the console does, then the summary: the "ours/raw" counter of every
// run that has one, and the other figures named in kSummaryCounters.
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override;
  void PrintRatios();

 private:
  std::vector<std::pair<std::string, std::map<std::string, double>>> summary_;
};

}  // namespace bench
