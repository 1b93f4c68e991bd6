// init ROOT: open the local state of a sync root and show where it lives.
#include "CliCommand.h"
#include "docmgr/ncIPathMgr.h"

namespace {

int Init(CliContext& context, const std::vector<std::string>& args) {
  if (args.size() != 1) {
    std::fprintf(stderr, "usage: docmgr-cli init ROOT\n");
    return 2;
  }
  ncIDocMgr* docMgr = context.openRoot(args[0]);
  nsCOMPtr<ncIPathMgr> pathMgr = nsCOMPtr<ncIPathMgr>::adopt(docMgr->GetPathMgr(u""));
  const std::string root = Narrow(pathMgr->GetRootPath());
  const std::string data = Narrow(pathMgr->GetDBPath());
  const std::string unsync = Narrow(pathMgr->GetUnsyncDocPath());
  if (context.json) {
    std::printf("{\"root\": %s, \"dataDirectory\": %s, \"unsyncDocuments\": %s}\n", JsonText(root).c_str(),
                JsonText(data).c_str(), JsonText(unsync).c_str());
  } else {
    std::printf("root:                      %s\n", root.c_str());
    std::printf("data directory:            %s\n", data.c_str());
    std::printf("unsynchronised documents:  %s\n", unsync.c_str());
  }
  return 0;
}

CLI_COMMAND("init", "ROOT", "open a sync root's local state; show its data directory", Init);

}  // namespace
