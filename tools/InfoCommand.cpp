// info PATH: the cache record of a file or folder, found through the sync root above it.
#include <ctime>

#include "CacheCliSupport.h"
#include "CliCommand.h"
#include "docmgr/public/ncIADSMgr.h"

namespace {

// Microseconds since 1970 as local time.
std::string TimeText(int64_t microseconds) {
  if (microseconds <= 0) return "-";
  const time_t seconds = static_cast<time_t>(microseconds / 1000000);
  char text[32];
  const struct tm* local = std::localtime(&seconds);  // the tool runs on one thread
  if (!local || !std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", local))
    return std::to_string(microseconds);
  return text;
}

// The tags a file or folder carries itself; absent ones are left out.
struct Tags {
  bool hasDocId = false, hasDelay = false, hasVrType = false, hasStatus = false, hasErrMark = false;
  base::String docId;
  int64_t delay = 0, vrType = 0, status = 0;
};

Tags ReadTags(ncIDocMgr* docMgr, const base::String& path) {
  nsCOMPtr<ncIADSMgr> ads = nsCOMPtr<ncIADSMgr>::adopt(docMgr->GetADSMgr());
  Tags tags;
  tags.hasDocId = ads->GetDocIdInfo(path, tags.docId);
  tags.hasDelay = ads->GetDelayInfo(path, tags.delay);
  tags.hasVrType = ads->GetVrTypeInfo(path, tags.vrType);
  tags.hasStatus = ads->GetStatusInfo(path, tags.status);
  tags.hasErrMark = ads->CheckErrMarkInfo(path);
  return tags;
}

std::string TagsJson(const Tags& tags) {
  std::string json = "{";
  auto add = [&json](const std::string& member) { json += (json.size() > 1 ? ", " : "") + member; };
  if (tags.hasDocId) add("\"docId\": " + JsonText(Narrow(tags.docId)));
  if (tags.hasDelay) add("\"isDelay\": " + std::to_string(tags.delay));
  if (tags.hasVrType) add("\"vrType\": " + std::to_string(tags.vrType));
  if (tags.hasStatus) add("\"status\": " + std::to_string(tags.status));
  if (tags.hasErrMark) add("\"errMark\": true");
  return json + "}";
}

void PrintTags(const Tags& tags) {
  const bool any = tags.hasDocId || tags.hasDelay || tags.hasVrType || tags.hasStatus || tags.hasErrMark;
  std::printf(any ? "tags:\n" : "tags:          none\n");
  if (tags.hasDocId) std::printf("  docId:       %s\n", Narrow(tags.docId).c_str());
  if (tags.hasDelay) std::printf("  isDelay:     %lld\n", static_cast<long long>(tags.delay));
  if (tags.hasVrType) std::printf("  vrType:      %lld\n", static_cast<long long>(tags.vrType));
  if (tags.hasStatus) std::printf("  status:      %lld\n", static_cast<long long>(tags.status));
  if (tags.hasErrMark) std::printf("  errMark:     set\n");
}

int Info(CliContext& context, const std::vector<std::string>& args) {
  if (args.size() != 1) {
    std::fprintf(stderr, "usage: docmgr-cli info PATH\n");
    return 2;
  }
  const std::string path = AbsolutePath(args[0]);
  const std::string root = FindSyncRoot(path);
  if (root.empty()) {
    std::fprintf(stderr, "docmgr-cli: %s is not inside a sync root (no %s above it)\n", path.c_str(),
                 kDataDirectoryName);
    return 1;
  }
  ncIDocMgr* docMgr = context.openRoot(root);
  const base::String relPath = MainPathMgr(docMgr)->GetRelativePath(Wide(path));
  nsCOMPtr<ncICacheMgr> cache = MainCacheMgr(docMgr);
  ncCacheInfo info;
  if (relPath.empty() || !cache->GetInfoByPath(relPath, info)) {
    std::fprintf(stderr, "docmgr-cli: no cache record for %s in %s\n", path.c_str(), root.c_str());
    return 1;
  }
  const std::string rel = ShownRelPath(relPath);
  const Tags tags = ReadTags(docMgr, Wide(path));
  if (context.json) {
    std::printf("{\"root\": %s, \"relPath\": %s, \"id\": %s, \"otag\": %s, \"isDir\": %s, \"state\": %d, "
                "\"type\": %d, \"typeName\": %s, \"viewType\": %d, \"viewName\": %s, \"serverMTime\": %lld, "
                "\"clientMTime\": %lld, \"size\": %lld, \"attr\": %d, \"errcode\": %d, \"execTask\": %d, "
                "\"watermark\": %d, \"tags\": %s}\n",
                JsonText(root).c_str(), JsonText(rel).c_str(), JsonText(Narrow(info.id)).c_str(),
                JsonText(Narrow(info.otag)).c_str(), info.isDir ? "true" : "false", info.state, info.type,
                JsonText(Narrow(info.typeName)).c_str(), info.viewType, JsonText(Narrow(info.viewName)).c_str(),
                static_cast<long long>(info.serverMTime), static_cast<long long>(info.clientMTime),
                static_cast<long long>(info.size), info.attr, info.errcode, info.execTask, info.watermark,
                TagsJson(tags).c_str());
    return 0;
  }
  std::printf("sync root:     %s\n", root.c_str());
  std::printf("relative path: %s\n", rel.c_str());
  std::printf("kind:          %s\n", info.isDir ? "folder" : "file");
  std::printf("document id:   %s\n", Narrow(info.id).c_str());
  std::printf("version tag:   %s\n", info.otag.empty() ? "-" : Narrow(info.otag).c_str());
  std::printf("state:         %s\n", StateText(info.state).c_str());
  if (!info.isDir) std::printf("size:          %s (%lld bytes)\n", SizeText(info.size).c_str(), static_cast<long long>(info.size));
  std::printf("local time:    %s\n", TimeText(info.clientMTime).c_str());
  std::printf("server time:   %s\n", TimeText(info.serverMTime).c_str());
  std::printf("type:          %d%s%s\n", info.type, info.typeName.empty() ? "" : " ", Narrow(info.typeName).c_str());
  if (!info.viewName.empty()) std::printf("view:          %s (%d)\n", Narrow(info.viewName).c_str(), info.viewType);
  std::printf("attributes:    0x%X%s\n", static_cast<unsigned>(info.attr), info.attr & NC_CACHE_ATTR_LOCKED ? " (locked)" : "");
  std::printf("error code:    %d\n", info.errcode);
  std::printf("task running:  %s\n", info.execTask ? "yes" : "no");
  PrintTags(tags);
  return 0;
}

CLI_COMMAND("info", "PATH", "show the cache record and the tags of a file or folder inside a sync root", Info);

}  // namespace
