// ls ROOT [REL]: the cached children of a folder of a sync root.
#include "CacheCliSupport.h"
#include "CliCommand.h"

namespace {

int Ls(CliContext& context, const std::vector<std::string>& args) {
  if (args.empty() || args.size() > 2) {
    std::fprintf(stderr, "usage: docmgr-cli ls ROOT [REL]\n");
    return 2;
  }
  const std::string root = CheckSyncRoot(args[0], true);
  const base::String folder = args.size() == 2 ? StoredRelPath(args[1]) : base::String();
  nsCOMPtr<ncICacheMgr> cache = MainCacheMgr(context.openRoot(root));

  ncCacheInfo folderInfo;
  if (!folder.empty() && !cache->GetInfoByPath(folder, folderInfo)) {
    std::fprintf(stderr, "docmgr-cli: %s is not in the cache of %s\n", ShownRelPath(folder).c_str(), root.c_str());
    return 1;
  }
  std::map<base::String, ncCacheScanInfo> children;
  cache->GetScanSubInfos(folder, children);

  if (context.json) std::printf("[");
  else std::printf("%s  %s  %s  %s\n", Pad("NAME", 32).c_str(), Pad("SIZE", 10).c_str(), Pad("STATE", 9).c_str(), "ID");
  bool first = true;
  for (const auto& child : children) {
    ncCacheInfo info;
    cache->GetInfoByPath(folder.empty() ? child.first : folder + u"\\" + child.first, info);
    const std::string name = Narrow(child.first) + (child.second.isDir ? "/" : "");
    if (context.json) {
      std::printf("%s\n  {\"name\": %s, \"isDir\": %s, \"size\": %lld, \"state\": %d, \"id\": %s}", first ? "" : ",",
                  JsonText(Narrow(child.first)).c_str(), child.second.isDir ? "true" : "false",
                  static_cast<long long>(child.second.size), info.state, JsonText(Narrow(child.second.id)).c_str());
    } else {
      std::printf("%s  %s  %s  %s\n", Pad(name, 32).c_str(), Pad(child.second.isDir ? "-" : SizeText(child.second.size), 10).c_str(),
                  Pad(StateText(info.state), 9).c_str(), Narrow(child.second.id).c_str());
    }
    first = false;
  }
  if (context.json) std::printf("%s]\n", first ? "" : "\n");
  else std::printf("%zu items\n", children.size());
  return 0;
}

CLI_COMMAND("ls", "ROOT [REL]", "list the cached children of a folder (REL relative to ROOT)", Ls);

}  // namespace
