// Benchmarks of the component against raw SQLite running the same statements in the same
// process. Each pair reports our time and the baseline's; RatioReporter prints the ratios.
#include <benchmark/benchmark.h>

#include <cstdlib>

#include "BenchSupport.h"
#include "base/LibManager.h"

int main(int argc, char** argv) {
  ::setenv("KESTROVE_LANG", "en", 1);
  base::LibManager::getInstance()->initLibs(base::AppSettings::getCFLAppSettings(), base::AppContext::getInstance(),
                                            nullptr);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  bench::RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.PrintRatios();
  benchmark::Shutdown();
  return 0;
}
