// demo DIR: build a sample sync root with Latin and Chinese names and walk through the
// tool's commands on it.

#include "CacheDemo.h"
#include "CliCommand.h"
#include "Display.h"
#include "JournalDemo.h"
#include "OsError.h"
#include "Translation.h"
#include "platform/ncPlatform.h"

namespace {

void MakeSampleTree(const std::string& root) {
  const char* folders[] = {"", "/Projects", "/Projects/Reports", "/项目", "/项目/设计文档"};
  for (const char* folder : folders) platform::CreateDirectory(Wide(root + folder));  // the root itself may exist, empty
  const char* files[] = {"/readme.txt", "/Projects/plan.docx", "/Projects/Reports/summary 2026.xlsx",
                         "/项目/会议纪要.docx", "/项目/设计文档/产品设计.pdf"};
  for (const char* file : files)
    platform::WriteWholeFile(Wide(root + file), std::string("sample content of ") + file + "\n");
}

// Why the demo may not build its sample root in dir, or "" when dir is new or empty: the
// demo writes sample files and tags, and must never touch what a user keeps there.
std::string WhyNotHere(const std::string& dir) {
  platform::FileInfo info;
  if (!platform::GetFileInfo(Wide(dir), info))
    return platform::GetLastError() == platform::kErrorFileNotFound ? "" : OsErrorFromLastError().text;
  if (info.kind != platform::FileKind::kDirectory) return Tr("it exists and is not a folder");
  std::vector<base::String> names;
  if (!platform::ListDirectory(Wide(dir), names)) return OsErrorFromLastError().text;
  return names.empty() ? "" : Tr("the folder is not empty");
}

void Step(const std::string& title) { std::printf("\n== %s\n", title.c_str()); }

int Demo(CliContext& context, const std::vector<std::string>& args) {
  if (args.size() != 1) UsageError("demo");
  const std::string root = AbsolutePath(args[0]);
  const std::string refusal = WhyNotHere(root);
  if (!refusal.empty())
    throw CliError(Tr("demo: will not build a sample root in") + (" " + Printable(root)) + ": " + refusal + " (" +
                   Tr("give a new or empty folder") + ")");
  std::printf("Building a sample sync root in %s\n", root.c_str());
  MakeSampleTree(root);
  Step("docmgr-cli init " + root);
  if (int status = RunCommand(context, "init", {root})) return status;
  if (int status = DemoCache(context, root)) return status;
  if (int status = DemoJournals(context, root)) return status;
  return 0;
}

CLI_COMMAND("demo", "DIR", "build a sample sync root and walk through the commands", Demo);

}  // namespace
