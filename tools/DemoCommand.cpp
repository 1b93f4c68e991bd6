// demo DIR: build a sample sync root with Latin and Chinese names and walk through the
// tool's commands on it.
#include <dirent.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <memory>

#include "CacheDemo.h"
#include "CliCommand.h"
#include "Display.h"
#include "JournalDemo.h"
#include "Translation.h"

namespace {

void MakeSampleTree(const std::string& root) {
  const char* folders[] = {"", "/Projects", "/Projects/Reports", "/项目", "/项目/设计文档"};
  for (const char* folder : folders) ::mkdir((root + folder).c_str(), 0777);  // the root itself may exist, empty
  const char* files[] = {"/readme.txt", "/Projects/plan.docx", "/Projects/Reports/summary 2026.xlsx",
                         "/项目/会议纪要.docx", "/项目/设计文档/产品设计.pdf"};
  for (const char* file : files) std::ofstream(root + file) << "sample content of " << file << "\n";
}

// Why the demo may not build its sample root in dir, or "" when dir is new or empty: the
// demo writes sample files and tags, and must never touch what a user keeps there.
std::string WhyNotHere(const std::string& dir) {
  struct stat info;
  if (::lstat(dir.c_str(), &info) != 0) return errno == ENOENT ? "" : std::strerror(errno);
  if (!S_ISDIR(info.st_mode)) return Tr("it exists and is not a folder");
  std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir(dir.c_str()), ::closedir);
  if (!folder) return std::strerror(errno);
  while (const dirent* entry = ::readdir(folder.get())) {
    const std::string name = entry->d_name;
    if (name != "." && name != "..") return Tr("the folder is not empty");
  }
  return "";
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
