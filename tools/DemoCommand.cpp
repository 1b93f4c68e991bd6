// demo DIR: build a sample sync root with Latin and Chinese names and walk through the
// tool's commands on it.
#include <filesystem>
#include <fstream>

#include "CacheDemo.h"
#include "CliCommand.h"
#include "JournalDemo.h"

namespace {

void MakeSampleTree(const std::string& root) {
  const char* folders[] = {"", "/Projects", "/Projects/Reports", "/项目", "/项目/设计文档"};
  std::error_code ignored;  // an existing folder is fine
  for (const char* folder : folders) std::filesystem::create_directory(std::filesystem::u8path(root + folder), ignored);
  const char* files[] = {"/readme.txt", "/Projects/plan.docx", "/Projects/Reports/summary 2026.xlsx",
                         "/项目/会议纪要.docx", "/项目/设计文档/产品设计.pdf"};
  for (const char* file : files)
    std::ofstream(std::filesystem::u8path(root + file)) << "sample content of " << file << "\n";
}

void Step(const std::string& title) { std::printf("\n== %s\n", title.c_str()); }

int Demo(CliContext& context, const std::vector<std::string>& args) {
  if (args.size() != 1) {
    std::fprintf(stderr, "usage: docmgr-cli demo DIR\n");
    return 2;
  }
  const std::string root = AbsolutePath(args[0]);
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
