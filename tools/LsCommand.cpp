// ls ROOT [REL]: the cached children of a folder of a sync root.
#include "CacheCliSupport.h"
#include "CliCommand.h"
#include "Translation.h"

namespace {

int Ls(CliContext& context, const std::vector<std::string>& args) {
  if (args.empty() || args.size() > 2) UsageError("ls");
  const std::string root = CheckSyncRoot(args[0], true);
  const base::String folder = args.size() == 2 ? StoredRelPath(args[1]) : base::String();
  nsCOMPtr<ncICacheMgr> cache = MainCacheMgr(context.openRoot(root));

  ncCacheInfo folderInfo;
  if (!folder.empty() && !cache->GetInfoByPath(folder, folderInfo))
    throw CliError(ShownRelPath(folder) + " " + Tr("is not in the cache of") + " " + Printable(root));
  std::map<base::String, ncCacheScanInfo> children;
  cache->GetScanSubInfos(folder, children);

  JsonWriter json;
  json.beginArray();
  if (!context.json)
    std::printf("%s  %s  %s  %s\n", Pad(Tr("NAME"), 32).c_str(), Pad(Tr("SIZE"), 10).c_str(), Pad(Tr("STATE"), 9).c_str(),
                Tr("ID"));
  for (const auto& child : children) {
    ncCacheInfo info;
    cache->GetInfoByPath(folder.empty() ? child.first : folder + u"\\" + child.first, info);
    if (context.json) {
      json.beginObject().member("name", Narrow(child.first)).member("isDir", child.second.isDir)
          .member("size", child.second.size).member("state", info.state).member("stateName", StateText(info.state))
          .member("id", Narrow(child.second.id)).endObject();
      continue;
    }
    const std::string name = Printable(Narrow(child.first)) + (child.second.isDir ? "/" : "");
    std::printf("%s  %s  %s  %s\n", Pad(name, 32).c_str(),
                Pad(child.second.isDir ? "-" : SizeText(child.second.size), 10).c_str(),
                Pad(StateText(info.state), 9).c_str(), Printable(Narrow(child.second.id)).c_str());
  }
  if (context.json) json.endArray().print();
  else std::printf("%s\n", Counted(children.size(), "item", "items").c_str());
  return kExitOk;
}

CLI_COMMAND("ls", "ROOT [REL]", "list the cached children of a folder (REL relative to ROOT)", Ls);

}  // namespace
