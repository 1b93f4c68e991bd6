// log ROOT [--type N] [--page N] [--size N]: the sync log of a sync root, newest first, one
// page per log type.
#include <algorithm>
#include <cstdlib>

#include "CacheCliSupport.h"
#include "CliCommand.h"
#include "Translation.h"
#include "docmgr/ncILogMgr.h"

namespace {

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
  JsonWriter json;
  json.beginObject().member("page", page).member("pageSize", size).key("logs").beginArray();
  for (const Page& p : pages) {
    json.beginObject().member("type", p.logType).member("typeName", LogTypeName(p.logType)).member("total", p.total);
    json.key("entries").beginArray();
    for (const ncSyncLogInfo& e : p.entries) {
      json.beginObject().member("id", e.id).member("taskType", e.taskType).member("taskName", TaskName(e.taskType));
      json.member("relPath", SlashedPath(e.relPath)).member("newName", Narrow(e.newName)).member("size", e.size);
      json.member("time", e.time * 1000000).member("remark", Narrow(e.remark)).endObject();
    }
    json.endArray().endObject();
  }
  json.endArray().endObject().print();
}

void PrintTable(const Page& p, uint32_t page, uint32_t size) {
  if (p.total == 0) {
    std::printf("%s: %s\n", LogTypeName(p.logType).c_str(), Tr("no entries"));
    return;
  }
  const uint32_t pages = (p.total + size - 1) / size;
  std::printf("%s: %s, %s %u / %u, %s\n", LogTypeName(p.logType).c_str(), Counted(p.total, "entry", "entries").c_str(),
              Tr("page"), page, pages, Tr("newest first"));
  if (p.entries.empty()) return;
  std::printf("  %8s  %s  %s  %12s  %s\n", "ID", Pad(Tr("TASK"), 14).c_str(), Pad(Tr("TIME"), 19).c_str(), Tr("SIZE"),
              Tr("PATH"));
  for (const ncSyncLogInfo& e : p.entries) {
    std::string path = ShownRelPath(e.relPath);
    if (!e.newName.empty()) path += " -> " + Printable(Narrow(e.newName));
    if (!e.remark.empty()) path += "  (" + Printable(Narrow(e.remark)) + ")";
    std::printf("  %8lld  %s  %s  %12s  %s\n", static_cast<long long>(e.id), Pad(TaskName(e.taskType), 14).c_str(),
                Pad(LocalTimeText(e.time), 19).c_str(), SizeText(e.size).c_str(), path.c_str());
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
      if (i + 1 >= args.size() || !ReadNumber(args[i + 1], minimum, *target))
        UsageError("log", arg + " " + (minimum == 1 ? Tr("needs a positive number") : Tr("needs a number")));
      oneType = oneType || arg == "--type";
      ++i;
    } else if ((!arg.empty() && arg[0] == '-') || !root.empty()) {
      UsageError("log", Tr("unexpected argument") + (" '" + arg + "'"));
    } else {
      root = arg;
    }
  }
  if (root.empty()) UsageError("log");

  nsCOMPtr<ncILogMgr> log = nsCOMPtr<ncILogMgr>::adopt(context.openRoot(CheckSyncRoot(root, true))->GetLogMgr());
  std::vector<Page> pages;
  if (oneType) {
    pages.push_back(ReadPage(log.get(), static_cast<int>(logType), page, size));
    if (pages.back().total > 0 && pages.back().entries.empty())
      throw CliError(Tr("log: the page is past the end:") + (" " + Counted(pages.back().total, "entry", "entries")));
  } else {
    // Without --type every counted type is shown.
    for (int type = 0; type < NC_SYNCLOG_COUNTED_TYPES; ++type) pages.push_back(ReadPage(log.get(), type, page, size));
  }
  if (context.json) {
    PrintJson(pages, page, size);
  } else {
    for (const Page& p : pages) PrintTable(p, page, size);
  }
  return kExitOk;
}

CLI_COMMAND("log", "ROOT [--type N] [--page N] [--size N]", "the sync log, newest first, with names for log types and tasks", Log);

}  // namespace
