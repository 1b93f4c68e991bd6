// log ROOT [--type N] [--page N] [--size N]: the sync log of a sync root, newest first, one
// page per log type.
#include <algorithm>
#include <cstdlib>

#include "CliCommand.h"
#include "base/Directory.h"
#include "docmgr/public/ncILogMgr.h"

namespace {

const char kUsage[] = "usage: docmgr-cli log ROOT [--type N] [--page N] [--size N]\n";

// The log types that carry a counter; without --type each of them is shown.
const int kCountedLogTypes = 4;

bool ReadNumber(const std::string& text, long minimum, long& value) {
  char* end = nullptr;
  value = std::strtol(text.c_str(), &end, 10);
  return !text.empty() && *end == 0 && value >= minimum && value <= 0x7FFFFFFF;
}

struct Page {
  int logType = 0;
  uint32_t total = 0;
  uint32_t begin = 0;
  std::vector<ncSyncLogInfo> entries;  // newest first
};

// The entries begin..end counted back from the newest, for page number (from 1) of size.
Page ReadPage(ncILogMgr* log, int logType, uint32_t page, uint32_t size) {
  Page result;
  result.logType = logType;
  log->GetSyncLog(logType, result.entries, 0, 0, result.total);  // only the total
  const uint64_t first = static_cast<uint64_t>(page - 1) * size + 1;
  if (first > result.total) return result;
  result.begin = static_cast<uint32_t>(first);
  // The store counts a page that reaches past the oldest entry from the oldest one, so the
  // last page is cut to what is left.
  const uint32_t end = static_cast<uint32_t>(std::min<uint64_t>(first + size - 1, result.total));
  log->GetSyncLog(logType, result.entries, result.begin, end, result.total);
  std::sort(result.entries.begin(), result.entries.end(),
            [](const ncSyncLogInfo& a, const ncSyncLogInfo& b) { return a.id > b.id; });
  return result;
}

void PrintJson(const std::vector<Page>& pages, uint32_t page, uint32_t size) {
  std::printf("{\"page\": %u, \"pageSize\": %u, \"logs\": [", page, size);
  for (size_t i = 0; i < pages.size(); ++i) {
    const Page& p = pages[i];
    std::printf("%s\n  {\"type\": %d, \"total\": %u, \"entries\": [", i ? "," : "", p.logType, p.total);
    for (size_t j = 0; j < p.entries.size(); ++j) {
      const ncSyncLogInfo& e = p.entries[j];
      std::printf("%s\n    {\"id\": %lld, \"taskType\": %d, \"relPath\": %s, \"newName\": %s, \"size\": %lld, "
                  "\"time\": %lld, \"remark\": %s}",
                  j ? "," : "", static_cast<long long>(e.id), e.taskType, JsonText(Narrow(e.relPath)).c_str(),
                  JsonText(Narrow(e.newName)).c_str(), static_cast<long long>(e.size),
                  static_cast<long long>(e.time), JsonText(Narrow(e.remark)).c_str());
    }
    std::printf("]}");
  }
  std::printf("]}\n");
}

void PrintTable(const Page& p, uint32_t page, uint32_t size) {
  if (p.total == 0) {
    std::printf("log type %d: no entries\n", p.logType);
    return;
  }
  const uint32_t pages = (p.total + size - 1) / size;
  std::printf("log type %d: %u entries, page %u of %u, newest first\n", p.logType, p.total, page, pages);
  if (p.entries.empty()) return;
  std::printf("  %8s  %4s  %14s  %12s  %s\n", "ID", "TASK", "TIME", "SIZE", "PATH");
  for (const ncSyncLogInfo& e : p.entries) {
    std::string path = Narrow(e.relPath);
    if (!e.newName.empty()) path += " -> " + Narrow(e.newName);
    if (!e.remark.empty()) path += "  (" + Narrow(e.remark) + ")";
    std::printf("  %8lld  %4d  %14lld  %12lld  %s\n", static_cast<long long>(e.id), e.taskType,
                static_cast<long long>(e.time), static_cast<long long>(e.size), path.c_str());
  }
}

int Log(CliContext& context, const std::vector<std::string>& args) {
  std::string root;
  long logType = 0, page = 1, size = 20;
  bool oneType = false;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    if (arg == "--type" || arg == "--page" || arg == "--size") {
      long* target = arg == "--type" ? &logType : arg == "--page" ? &page : &size;
      const long minimum = arg == "--type" ? -0x7FFFFFFF : 1;
      if (i + 1 >= args.size() || !ReadNumber(args[i + 1], minimum, *target)) {
        std::fprintf(stderr, "docmgr-cli: log: %s needs a %snumber\n", arg.c_str(), minimum == 1 ? "positive " : "");
        return 2;
      }
      oneType = oneType || arg == "--type";
      ++i;
    } else if (!arg.empty() && arg[0] == '-') {
      std::fprintf(stderr, "docmgr-cli: log: unknown option '%s'\n%s", arg.c_str(), kUsage);
      return 2;
    } else if (root.empty()) {
      root = arg;
    } else {
      std::fprintf(stderr, "%s", kUsage);
      return 2;
    }
  }
  if (root.empty()) {
    std::fprintf(stderr, "%s", kUsage);
    return 2;
  }
  if (!base::Directory::exists(Wide(root))) {
    std::fprintf(stderr, "docmgr-cli: log: no such folder: %s\n", root.c_str());
    return 1;
  }

  nsCOMPtr<ncILogMgr> log = nsCOMPtr<ncILogMgr>::adopt(context.openRoot(root)->GetLogMgr());
  std::vector<Page> pages;
  if (oneType) {
    pages.push_back(ReadPage(log.get(), static_cast<int>(logType), page, size));
    if (pages.back().total > 0 && pages.back().entries.empty()) {
      std::fprintf(stderr, "docmgr-cli: log: page %ld is past the end (%u entries of type %ld)\n", page,
                   pages.back().total, logType);
      return 1;
    }
  } else {
    for (int type = 0; type < kCountedLogTypes; ++type) pages.push_back(ReadPage(log.get(), type, page, size));
  }
  if (context.json) {
    PrintJson(pages, page, size);
  } else {
    for (const Page& p : pages) PrintTable(p, page, size);
  }
  return 0;
}

CLI_COMMAND("log", "ROOT [--type N]", "the sync log, newest first (--page N, --size N)", Log);

}  // namespace
