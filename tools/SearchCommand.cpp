// search ROOT KEY: cached names that match a key, or whose initials do ("xm" finds 项目).
#include "CacheCliSupport.h"
#include "CliCommand.h"

namespace {

const uint32_t kMaxHits = 50;

int Search(CliContext& context, const std::vector<std::string>& args) {
  if (args.size() != 2) {
    std::fprintf(stderr, "usage: docmgr-cli search ROOT KEY\n");
    return 2;
  }
  const std::string root = CheckSyncRoot(args[0], true);
  nsCOMPtr<ncICacheMgr> cache = MainCacheMgr(context.openRoot(root));
  std::vector<ncCacheSearchInfo> hits;
  cache->Search(Wide(args[1]), u"[", u"]", hits, kMaxHits);

  if (context.json) {
    std::printf("[");
    for (size_t i = 0; i < hits.size(); ++i)
      std::printf("%s\n  {\"display\": %s, \"name\": %s, \"parentPath\": %s, \"isDir\": %s}", i ? "," : "",
                  JsonText(Narrow(hits[i].displayName)).c_str(), JsonText(Narrow(hits[i].name)).c_str(),
                  JsonText(ShownRelPath(hits[i].parentPath)).c_str(), hits[i].isDir ? "true" : "false");
    std::printf("%s]\n", hits.empty() ? "" : "\n");
    return 0;
  }
  std::printf("%s  %s\n", Pad("MATCH", 36).c_str(), "IN FOLDER");
  for (const ncCacheSearchInfo& hit : hits) {
    const std::string shown = Narrow(hit.displayName) + (hit.isDir ? "/" : "");
    std::printf("%s  %s\n", Pad(shown, 36).c_str(), hit.parentPath.empty() ? "." : ShownRelPath(hit.parentPath).c_str());
  }
  std::printf("%zu %s for \"%s\"%s\n", hits.size(), hits.size() == 1 ? "match" : "matches", args[1].c_str(),
              hits.size() == kMaxHits ? " (the first 50)" : "");
  return 0;
}

CLI_COMMAND("search", "ROOT KEY", "find cached names by text or initials; the matched part is shown in [ ]", Search);

}  // namespace
