// unsync ROOT [--page N] [--size N]: everything of a sync root that has not reached the
// server, from the document manager's three reports: the items waiting for upload and the
// documents set aside (every root the manager holds), and a page of the sync log's entries
// about them.
#include <algorithm>
#include <cstdlib>

#include "CacheCliSupport.h"
#include "CliCommand.h"
#include "Translation.h"

namespace {

struct UnsyncReport {
  std::vector<ncUnsyncDocInfo> docs;
  uint32_t logTotal = 0;
  std::vector<ncSyncLogInfo> logPage;  // newest first
};

uint32_t PageNumber(const std::vector<std::string>& args, size_t at, const std::string& option) {
  char* end = nullptr;
  const long value = at < args.size() ? std::strtol(args[at].c_str(), &end, 10) : 0;
  if (at >= args.size() || *end != 0 || value < 1 || value > 1000000)
    UsageError("unsync", option + " " + Tr("needs a positive number"));
  return static_cast<uint32_t>(value);
}

std::string KindName(int32_t kind) {
  return kind == NC_UNSYNC_DOC_SET_ASIDE ? Tr("set aside") : Tr("waiting for upload");
}

UnsyncReport ReadReport(ncIDocMgr* docMgr, uint32_t page, uint32_t size) {
  UnsyncReport report;
  docMgr->GetUnsyncDoc(report.docs);
  report.logTotal = docMgr->GetUnsyncLogNum();
  const uint64_t begin = static_cast<uint64_t>(page - 1) * size + 1;
  if (begin <= report.logTotal) {
    const uint32_t end = static_cast<uint32_t>(std::min<uint64_t>(begin + size - 1, report.logTotal));
    uint32_t total = 0;
    docMgr->GetUnsyncLog(report.logPage, static_cast<uint32_t>(begin), end, total);
    std::sort(report.logPage.begin(), report.logPage.end(),
              [](const ncSyncLogInfo& a, const ncSyncLogInfo& b) { return a.id > b.id; });
  }
  return report;
}

void PrintJson(const UnsyncReport& report, uint32_t page, uint32_t size) {
  JsonWriter json;
  json.beginObject().member("count", report.docs.size()).key("documents").beginArray();
  for (const ncUnsyncDocInfo& doc : report.docs)
    json.beginObject().member("root", Narrow(doc.root)).member("relPath", SlashedPath(doc.relPath))
        .member("kind", doc.kind).member("kindName", KindName(doc.kind)).member("isDir", doc.isDir)
        .member("size", doc.size).member("errcode", doc.errcode).endObject();
  json.endArray().key("log").beginObject().member("total", report.logTotal).member("page", page);
  json.member("pageSize", size).key("entries").beginArray();
  for (const ncSyncLogInfo& e : report.logPage)
    json.beginObject().member("id", e.id).member("taskType", e.taskType).member("taskName", TaskName(e.taskType))
        .member("relPath", SlashedPath(e.relPath)).member("size", e.size).member("time", e.time * 1000000)
        .member("remark", Narrow(e.remark)).endObject();
  json.endArray().endObject().endObject().print();
}

void PrintTables(const UnsyncReport& report) {
  std::printf("%s  %s  %s  %s  %s\n", Pad(Tr("PATH"), 40).c_str(), Pad(Tr("KIND"), 18).c_str(),
              Pad(Tr("SIZE"), 10).c_str(), Pad(Tr("ERROR"), 6).c_str(), Tr("ROOT"));
  for (const ncUnsyncDocInfo& doc : report.docs) {
    const std::string path = ShownRelPath(doc.relPath) + (doc.isDir ? "/" : "");
    std::printf("%s  %s  %s  %s  %s\n", Pad(path, 40).c_str(), Pad(KindName(doc.kind), 18).c_str(),
                Pad(doc.isDir ? "-" : SizeText(doc.size), 10).c_str(), Pad(std::to_string(doc.errcode), 6).c_str(),
                Printable(Narrow(doc.root)).c_str());
  }
  std::printf("%s %s\n", Counted(report.docs.size(), "item has", "items have").c_str(), Tr("not reached the server"));
  std::printf("\n%s: %s\n", LogTypeName(NC_SYNCLOG_TYPE_UNSYNC).c_str(),
              Counted(report.logTotal, "log entry", "log entries").c_str());
  for (const ncSyncLogInfo& e : report.logPage) {
    std::string path = ShownRelPath(e.relPath);
    if (!e.remark.empty()) path += "  (" + Printable(Narrow(e.remark)) + ")";
    std::printf("  %s  %s  %s\n", LocalTimeText(e.time).c_str(), Pad(TaskName(e.taskType), 14).c_str(), path.c_str());
  }
}

int Unsync(CliContext& context, const std::vector<std::string>& args) {
  std::string root;
  uint32_t page = 1, size = 20;
  for (size_t i = 0; i < args.size(); ++i) {
    if (args[i] == "--page") page = PageNumber(args, ++i, "--page");
    else if (args[i] == "--size") size = PageNumber(args, ++i, "--size");
    else if (root.empty() && !args[i].empty() && args[i][0] != '-') root = args[i];
    else UsageError("unsync", Tr("unexpected argument") + (" '" + args[i] + "'"));
  }
  if (root.empty()) UsageError("unsync");
  const UnsyncReport report = ReadReport(context.openRoot(CheckSyncRoot(root, true)), page, size);
  if (context.json) PrintJson(report, page, size);
  else PrintTables(report);
  return kExitOk;
}

CLI_COMMAND("unsync", "ROOT [--page N] [--size N]",
            "what has not reached the server: items waiting for upload, documents set aside, and their log entries",
            Unsync);

}  // namespace
