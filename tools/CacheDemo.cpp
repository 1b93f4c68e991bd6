#include "CacheDemo.h"

#include "CliCommand.h"
#include "platform/ncPlatform.h"

namespace {

void Step(const std::string& title) { std::printf("\n== %s\n", title.c_str()); }

}  // namespace

int DemoCache(CliContext& context, const std::string& root) {
  // A first scan adopts the tree as synchronised; files created afterwards are found by the
  // next scan as not yet uploaded.
  const std::vector<std::vector<std::string>> steps = {
      {"scan", root}, {"ls", root}, {"ls", root, "项目"}, {"new files"}, {"scan", root},
      {"log", root}, {"info", root + "/项目/设计文档/产品设计.pdf"}, {"search", root, "xm"}, {"search", root, "sj"},
      {"search", root, "plan"}, {"unsync", root}};
  for (const auto& step : steps) {
    if (step[0] == "new files") {
      Step("new local files: 项目/设计文档/草图.txt, Projects/draft.md, and an editor's lock file "
           "Projects/~$plan.docx and a partial download Projects/setup.crdownload, which the ignore rules skip");
      platform::WriteWholeFile(Wide(root + "/项目/设计文档/草图.txt"), "sketch\n");
      platform::WriteWholeFile(Wide(root + "/Projects/draft.md"), "# draft\n");
      platform::WriteWholeFile(Wide(root + "/Projects/~$plan.docx"), "lock\n");
      platform::WriteWholeFile(Wide(root + "/Projects/setup.crdownload"), "partial\n");
      continue;
    }
    std::string line = "docmgr-cli";
    for (const std::string& arg : step) line += " " + arg;
    Step(line);
    if (int status = RunCommand(context, step[0], std::vector<std::string>(step.begin() + 1, step.end()))) return status;
  }
  return 0;
}
