// unsync ROOT: the items of a sync root that have not reached the server and that no task
// is working on.
#include <algorithm>

#include "CacheCliSupport.h"
#include "CliCommand.h"

namespace {

int Unsync(CliContext& context, const std::vector<std::string>& args) {
  if (args.size() != 1) {
    std::fprintf(stderr, "usage: docmgr-cli unsync ROOT\n");
    return 2;
  }
  const std::string root = CheckSyncRoot(args[0], true);
  nsCOMPtr<ncICacheMgr> cache = MainCacheMgr(context.openRoot(root));
  std::vector<ncCacheUnexecInfo> items;
  cache->Unsync_GetUnexecInfoVec(u"", items, 0);
  std::reverse(items.begin(), items.end());  // the cache hands them newest first
  const int64_t count = cache->Unsync_CountUnexec(u"");

  if (context.json) {
    std::printf("{\"count\": %lld, \"items\": [", static_cast<long long>(count));
    for (size_t i = 0; i < items.size(); ++i)
      std::printf("%s\n  {\"relPath\": %s, \"isDir\": %s, \"size\": %lld, \"errcode\": %d}", i ? "," : "",
                  JsonText(ShownRelPath(items[i].relPath)).c_str(), items[i].isDir ? "true" : "false",
                  static_cast<long long>(items[i].size), items[i].errcode);
    std::printf("%s]}\n", items.empty() ? "" : "\n");
    return 0;
  }
  std::printf("%s  %s  %s\n", Pad("PATH", 40).c_str(), Pad("SIZE", 10).c_str(), "ERROR");
  for (auto item = items.begin(); item != items.end(); ++item) {
    const std::string path = ShownRelPath(item->relPath) + (item->isDir ? "/" : "");
    std::printf("%s  %s  %d\n", Pad(path, 40).c_str(), Pad(item->isDir ? "-" : SizeText(item->size), 10).c_str(),
                item->errcode);
  }
  std::printf("%lld unsynchronised items waiting for upload\n", static_cast<long long>(count));
  return 0;
}

CLI_COMMAND("unsync", "ROOT", "list the items that have not reached the server (state 4, no task running)", Unsync);

}  // namespace
