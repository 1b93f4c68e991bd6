// search ROOT KEY: cached names that match a key, or whose initials do ("xm" finds 项目).
#include "CacheCliSupport.h"
#include "CliCommand.h"
#include "Translation.h"

namespace {

const uint32_t kMaxHits = 50;

int Search(CliContext& context, const std::vector<std::string>& args) {
  if (args.size() != 2) UsageError("search");
  const std::string root = CheckSyncRoot(args[0], true);
  nsCOMPtr<ncICacheMgr> cache = MainCacheMgr(context.openRoot(root));
  std::vector<ncCacheSearchInfo> hits;
  cache->Search(base::FromNativeBytes(args[1]), u"[", u"]", hits, kMaxHits);

  if (context.json) {
    JsonWriter json;
    json.beginArray();
    for (const ncCacheSearchInfo& hit : hits)
      json.beginObject().member("display", Narrow(hit.displayName)).member("name", Narrow(hit.name))
          .member("parentPath", SlashedPath(hit.parentPath)).member("isDir", hit.isDir).endObject();
    json.endArray().print();
    return kExitOk;
  }
  std::printf("%s  %s\n", Pad(Tr("MATCH"), 36).c_str(), Tr("IN FOLDER"));
  for (const ncCacheSearchInfo& hit : hits) {
    const std::string shown = Printable(Narrow(hit.displayName)) + (hit.isDir ? "/" : "");
    std::printf("%s  %s\n", Pad(shown, 36).c_str(), hit.parentPath.empty() ? "." : ShownRelPath(hit.parentPath).c_str());
  }
  std::printf("%s %s \"%s\"%s\n", Counted(hits.size(), "match", "matches").c_str(), Tr("for"), Printable(args[1]).c_str(),
              hits.size() == kMaxHits ? Tr(" (the first 50)") : "");
  return kExitOk;
}

CLI_COMMAND("search", "ROOT KEY", "find cached names by text or initials; the matched part is shown in [ ]", Search);

}  // namespace
