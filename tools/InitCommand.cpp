// init ROOT: open the local state of a sync root and show where it lives.
#include "CacheCliSupport.h"
#include "CliCommand.h"
#include "Translation.h"
#include "docmgr/ncIPathMgr.h"

namespace {

int Init(CliContext& context, const std::vector<std::string>& args) {
  if (args.size() != 1) UsageError("init");
  ncIDocMgr* docMgr = context.openRoot(CheckSyncRoot(args[0], false));
  nsCOMPtr<ncIPathMgr> pathMgr = nsCOMPtr<ncIPathMgr>::adopt(docMgr->GetPathMgr(u""));
  const std::string root = Narrow(pathMgr->GetRootPath());
  const std::string data = Narrow(pathMgr->GetDBPath());
  const std::string unsync = Narrow(pathMgr->GetUnsyncDocPath());
  if (context.json) {
    JsonWriter().beginObject().member("root", root).member("dataDirectory", data).member("unsyncDocuments", unsync)
        .endObject().print();
  } else {
    std::printf("%s  %s\n", Pad(Tr("root:"), 26).c_str(), Printable(root).c_str());
    std::printf("%s  %s\n", Pad(Tr("data directory:"), 26).c_str(), Printable(data).c_str());
    std::printf("%s  %s\n", Pad(Tr("unsynchronised documents:"), 26).c_str(), Printable(unsync).c_str());
  }
  return 0;
}

CLI_COMMAND("init", "ROOT", "open a sync root's local state; show its data directory", Init);

}  // namespace
