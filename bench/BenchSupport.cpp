#include "BenchSupport.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <stdexcept>

namespace {

thread_local std::vector<std::string>* recording = nullptr;

}  // namespace

// The link wraps sqlite3_prepare_v2 (-Wl,--wrap): every statement of the stores passes through
// it, one statement per call, on its way to SQLite.
extern "C" {
int __real_sqlite3_prepare_v2(sqlite3*, const char*, int, sqlite3_stmt**, const char**);

int __wrap_sqlite3_prepare_v2(sqlite3* db, const char* sql, int bytes, sqlite3_stmt** statement, const char** tail) {
  if (recording && sql) recording->push_back(sql);
  return __real_sqlite3_prepare_v2(db, sql, bytes, statement, tail);
}
}

namespace bench {

void ExecRaw(sqlite3* db, const std::string& sql) {
  char* error = nullptr;
  if (sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &error) != SQLITE_OK) {
    const std::string message = error ? error : "unknown error";
    sqlite3_free(error);
    throw std::runtime_error(message + " in " + sql);
  }
}

int64_t QueryNumber(sqlite3* db, const std::string& sql) {
  sqlite3_stmt* statement = nullptr;
  int64_t value = -1;
  if (sqlite3_prepare_v2(db, sql.c_str(), -1, &statement, nullptr) == SQLITE_OK &&
      sqlite3_step(statement) == SQLITE_ROW)
    value = sqlite3_column_int64(statement, 0);
  sqlite3_finalize(statement);
  return value;
}

sqlite3* OpenRaw(const std::string& file, const char* synchronous) {
  sqlite3* db = nullptr;
  if (sqlite3_open(file.c_str(), &db) != SQLITE_OK) throw std::runtime_error("cannot open " + file);
  for (const char* pragma : {"PRAGMA busy_timeout=300000;", "PRAGMA cache_size=8000;", "PRAGMA journal_mode=WAL;",
                             "PRAGMA wal_autocheckpoint=10000;"})
    ExecRaw(db, pragma);
  ExecRaw(db, std::string("PRAGMA synchronous=") + synchronous + ";");
  return db;
}

void CopyFile(const std::string& from, const std::string& to) {
  std::ifstream source(from, std::ios::binary);
  std::ofstream target(to, std::ios::binary | std::ios::trunc);
  target << source.rdbuf();
  if (!source || !target) throw std::runtime_error("cannot copy " + from);
}

StatementRecorder::StatementRecorder() : previous_(recording) { recording = &statements_; }

StatementRecorder::~StatementRecorder() { recording = previous_; }

std::vector<std::string> StatementRecorder::take() { return std::move(statements_); }

void Replay(sqlite3* db, const std::vector<std::string>& statements) {
  for (const std::string& sql : statements) {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(db, sql.c_str(), static_cast<int>(sql.size()), &statement, nullptr) != SQLITE_OK)
      throw std::runtime_error(std::string(sqlite3_errmsg(db)) + " in " + sql);
    int rc;
    while ((rc = sqlite3_step(statement)) == SQLITE_ROW)
      for (int column = sqlite3_column_count(statement) - 1; column >= 0; --column)
        benchmark::DoNotOptimize(sqlite3_column_text(statement, column));
    sqlite3_finalize(statement);
    if (rc != SQLITE_DONE) throw std::runtime_error(std::string(sqlite3_errmsg(db)) + " in " + sql);
  }
}

namespace {

double Median(std::vector<double> values) {
  if (values.empty()) return 0;
  std::nth_element(values.begin(), values.begin() + values.size() / 2, values.end());
  return values[values.size() / 2];
}

}  // namespace

void RunPaired(benchmark::State& state, size_t variants, const std::function<void(size_t)>& ours,
               const std::function<void(size_t)>& raw, const std::function<void()>& reset) {
  using Clock = std::chrono::steady_clock;
  auto timed = [](const std::function<void(size_t)>& call, size_t variant) {
    const Clock::time_point start = Clock::now();
    call(variant);
    return std::chrono::duration<double>(Clock::now() - start).count();
  };
  std::vector<double> ratios, rawTimes;
  size_t iteration = 0;
  for (auto _ : state) {
    const size_t variant = iteration % variants;
    double ourTime, rawTime;
    if (iteration % 2 == 0) {
      ourTime = timed(ours, variant);
      rawTime = timed(raw, variant);
    } else {
      rawTime = timed(raw, variant);
      ourTime = timed(ours, variant);
    }
    state.SetIterationTime(ourTime);
    if (rawTime > 0) ratios.push_back(ourTime / rawTime);
    rawTimes.push_back(rawTime);
    if (reset) reset();
    ++iteration;
  }
  state.counters["ours/raw"] = Median(ratios);
  state.counters["raw_ms"] = Median(rawTimes) * 1e3;
}

namespace {

// Figures other than ratios that the summary repeats.
const char* const kSummaryCounters[] = {"ours/raw", "peak/result", "result_MB"};

// The run name without the run settings ("min_time:...", "iterations:...", "manual_time").
std::string ShortName(const std::string& name) {
  std::string shortName;
  size_t start = 0;
  while (start <= name.size()) {
    size_t end = name.find('/', start);
    if (end == std::string::npos) end = name.size();
    const std::string part = name.substr(start, end - start);
    if (part.rfind("min_time:", 0) != 0 && part.rfind("iterations:", 0) != 0 && part != "manual_time")
      shortName += (shortName.empty() ? "" : "/") + part;
    start = end + 1;
  }
  return shortName;
}

}  // namespace

void RatioReporter::ReportRuns(const std::vector<Run>& runs) {
  for (const Run& run : runs) {
    if (run.error_occurred || run.iterations == 0) continue;
    std::map<std::string, double> figures;
    for (const char* name : kSummaryCounters) {
      const auto counter = run.counters.find(name);
      if (counter != run.counters.end()) figures[name] = counter->second.value;
    }
    if (!figures.empty()) summary_.emplace_back(run.benchmark_name(), figures);
  }
  ConsoleReporter::ReportRuns(runs);
}

void RatioReporter::PrintRatios() {
  std::printf("\nMedian of the per-iteration ratios our call / raw SQLite running the same statements, "
              "same run (1.00 = as fast as raw):\n");
  for (const auto& entry : summary_) {
    std::printf("  %-45s", ShortName(entry.first).c_str());
    for (const auto& figure : entry.second) std::printf("  %s %.3f", figure.first.c_str(), figure.second);
    std::printf("\n");
  }
}

}  // namespace bench
