// The first scan of a fresh tree by `docmgr-cli scan` against the raw baseline program on an
// identical tree: wall time, items per second and peak resident memory of each process, and
// the ratio ours / raw of the median times.
//
// usage: docmgr-scan-ratio CLI BASELINE FILES...   (one run per tree size)
#include <fcntl.h>
#include <sqlite3.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

#include "BenchSupport.h"

namespace {

const int kFilesPerFolder = 100;
const int kFoldersPerTop = 10;

void MakeDir(const std::string& path) {
  if (::mkdir(path.c_str(), 0755) != 0) throw std::runtime_error("cannot create " + path);
}

// files files, 100 to a folder, folders ten to a top folder; small contents of varying size.
// Returns the number of items (files and folders).
int64_t MakeTree(const std::string& root, int64_t files) {
  MakeDir(root);
  const std::string content(512, 'x');
  int64_t folders = 0;
  for (int64_t file = 0; file < files; ++file) {
    const int64_t folder = file / kFilesPerFolder;
    const std::string top = root + "/Projects " + std::to_string(folder / kFoldersPerTop);
    const std::string sub = top + "/Quarter " + std::to_string(folder % kFoldersPerTop);
    if (file % kFilesPerFolder == 0) {
      if (folder % kFoldersPerTop == 0) {
        MakeDir(top);
        ++folders;
      }
      MakeDir(sub);
      ++folders;
    }
    const std::string path = sub + "/report " + std::to_string(file) + (file % 2 ? ".docx" : ".xlsx");
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (fd < 0 || ::write(fd, content.data(), static_cast<size_t>(file % 512)) < 0) throw std::runtime_error(path);
    ::close(fd);
  }
  return files + folders;
}

struct Measured {
  double seconds = 0;
  long peakKilobytes = 0;
};

Measured Run(const std::vector<std::string>& command) {
  std::vector<char*> argv;
  for (const std::string& argument : command) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  const auto start = std::chrono::steady_clock::now();
  const pid_t child = ::fork();
  if (child == 0) {
    const int devnull = ::open("/dev/null", O_WRONLY);
    ::dup2(devnull, STDOUT_FILENO);
    ::execv(argv[0], argv.data());
    ::_exit(127);
  }
  int status = 0;
  rusage usage{};
  if (child < 0 || ::wait4(child, &status, 0, &usage) != child || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
    throw std::runtime_error(command[0] + " failed");
  Measured measured;
  measured.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  measured.peakKilobytes = usage.ru_maxrss;
  return measured;
}

int64_t CachedRows(const std::string& root) {
  sqlite3* db = bench::OpenRaw(root + "/.kestrove.cache/cache.db", "NORMAL");
  const int64_t rows = bench::QueryNumber(db, "select count(*) from tb_cacheInfo");
  sqlite3_close(db);
  return rows;
}

const int kRounds = 3;

// The median time and the median peak of the rounds.
Measured Median(std::vector<Measured> rounds) {
  Measured median;
  std::sort(rounds.begin(), rounds.end(), [](const Measured& a, const Measured& b) { return a.seconds < b.seconds; });
  median.seconds = rounds[rounds.size() / 2].seconds;
  std::sort(rounds.begin(), rounds.end(),
            [](const Measured& a, const Measured& b) { return a.peakKilobytes < b.peakKilobytes; });
  median.peakKilobytes = rounds[rounds.size() / 2].peakKilobytes;
  return median;
}

void Print(const char* side, int64_t items, const Measured& measured) {
  std::printf("  %-4s %8.2f s  %9.0f items/s  peak RSS %6.1f MB\n", side, measured.seconds, items / measured.seconds,
              measured.peakKilobytes / 1024.0);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4) {
    std::fprintf(stderr, "usage: docmgr-scan-ratio CLI BASELINE FILES...\n");
    return 2;
  }
  try {
    for (int size = 3; size < argc; ++size) {
      const int64_t files = std::atoll(argv[size]);
      std::vector<Measured> ours, raw;
      int64_t items = 0;
      // Three rounds on fresh trees, the order flipped each round; the medians count, so a
      // neighbour's burst of I/O moves one round, not the figure.
      for (int round = 0; round < kRounds; ++round) {
        test::TempDir dir;
        const std::string ourRoot = dir.path() + "/ours", rawRoot = dir.path() + "/raw";
        items = MakeTree(ourRoot, files);
        MakeTree(rawRoot, files);
        const auto runOurs = [&] { ours.push_back(Run({argv[1], "--quiet", "scan", ourRoot})); };
        const auto runRaw = [&] { raw.push_back(Run({argv[2], rawRoot})); };
        if (round % 2) runOurs(), runRaw();
        else runRaw(), runOurs();
        if (CachedRows(ourRoot) != items || CachedRows(rawRoot) != items)
          throw std::runtime_error("a scan did not record every item");
      }
      std::printf("First scan of %lld files (%lld items), median of %d rounds:\n", static_cast<long long>(files),
                  static_cast<long long>(items), kRounds);
      const Measured ourMedian = Median(ours), rawMedian = Median(raw);
      Print("ours", items, ourMedian);
      Print("raw", items, rawMedian);
      std::printf("scan ratio: %.2f\n", ourMedian.seconds / rawMedian.seconds);
      std::fflush(stdout);
    }
  } catch (const std::exception& error) {
    std::fprintf(stderr, "docmgr-scan-ratio: %s\n", error.what());
    return 1;
  }
  return 0;
}
