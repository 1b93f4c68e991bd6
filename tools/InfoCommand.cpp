// info PATH: the cache record of a file or folder, found through the sync root above it.
#include "CacheCliSupport.h"
#include "CliCommand.h"
#include "Translation.h"
#include "docmgr/ncIADSMgr.h"

namespace {

// Microseconds since 1970 as local time.
std::string TimeText(int64_t microseconds) { return LocalTimeText(microseconds / 1000000); }

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

void TagsJson(JsonWriter& json, const Tags& tags) {
  json.beginObject();
  if (tags.hasDocId) json.member("docId", Narrow(tags.docId));
  if (tags.hasDelay) json.member("isDelay", tags.delay);
  if (tags.hasVrType) json.member("vrType", tags.vrType);
  if (tags.hasStatus) json.member("status", tags.status);
  if (tags.hasErrMark) json.member("errMark", true);
  json.endObject();
}

void PrintTags(const Tags& tags) {
  const bool any = tags.hasDocId || tags.hasDelay || tags.hasVrType || tags.hasStatus || tags.hasErrMark;
  std::printf(any ? "tags:\n" : "tags:          none\n");
  if (tags.hasDocId) std::printf("  docId:       %s\n", Printable(Narrow(tags.docId)).c_str());
  if (tags.hasDelay) std::printf("  isDelay:     %lld\n", static_cast<long long>(tags.delay));
  if (tags.hasVrType) std::printf("  vrType:      %lld\n", static_cast<long long>(tags.vrType));
  if (tags.hasStatus) std::printf("  status:      %lld\n", static_cast<long long>(tags.status));
  if (tags.hasErrMark) std::printf("  errMark:     set\n");
}

void PrintJson(const std::string& root, const base::String& relPath, const ncCacheInfo& info, const Tags& tags) {
  JsonWriter json;
  json.beginObject().member("root", root).member("relPath", SlashedPath(relPath)).member("id", Narrow(info.id));
  json.member("otag", Narrow(info.otag)).member("isDir", info.isDir).member("state", info.state);
  json.member("stateName", StateText(info.state)).member("type", info.type).member("typeName", Narrow(info.typeName));
  json.member("viewType", info.viewType).member("viewName", Narrow(info.viewName));
  json.member("serverMTime", info.serverMTime).member("clientMTime", info.clientMTime).member("size", info.size);
  json.member("attr", info.attr).member("errcode", info.errcode).member("execTask", info.execTask);
  json.member("watermark", info.watermark).key("tags");
  TagsJson(json, tags);
  json.endObject().print();
}

int Info(CliContext& context, const std::vector<std::string>& args) {
  if (args.size() != 1) UsageError("info");
  const std::string path = AbsolutePath(args[0]);
  const std::string root = FindSyncRoot(path);
  if (root.empty())
    throw CliError(Printable(path) + ": " + Tr("not inside a sync root (no .kestrove.cache above it)"));
  ncIDocMgr* docMgr = context.openRoot(root);
  const base::String relPath = path == root ? base::String() : MainPathMgr(docMgr)->GetRelativePath(Wide(path));
  nsCOMPtr<ncICacheMgr> cache = MainCacheMgr(docMgr);
  ncCacheInfo info;
  if (relPath.empty() || !cache->GetInfoByPath(relPath, info))
    throw CliError(Printable(path) + ": " + Tr("no cache record in") + " " + Printable(root));
  const std::string rel = ShownRelPath(relPath);
  const Tags tags = ReadTags(docMgr, Wide(path));
  if (context.json) {
    PrintJson(root, relPath, info, tags);
    return kExitOk;
  }
  std::printf("sync root:     %s\n", Printable(root).c_str());
  std::printf("relative path: %s\n", rel.c_str());
  std::printf("kind:          %s\n", info.isDir ? "folder" : "file");
  std::printf("document id:   %s\n", Printable(Narrow(info.id)).c_str());
  std::printf("version tag:   %s\n", info.otag.empty() ? "-" : Printable(Narrow(info.otag)).c_str());
  std::printf("state:         %s\n", StateText(info.state).c_str());
  if (!info.isDir) std::printf("size:          %s (%lld bytes)\n", SizeText(info.size).c_str(), static_cast<long long>(info.size));
  std::printf("local time:    %s\n", TimeText(info.clientMTime).c_str());
  std::printf("server time:   %s\n", TimeText(info.serverMTime).c_str());
  std::printf("type:          %d%s%s\n", info.type, info.typeName.empty() ? "" : " ", Printable(Narrow(info.typeName)).c_str());
  if (!info.viewName.empty()) std::printf("view:          %s (%d)\n", Printable(Narrow(info.viewName)).c_str(), info.viewType);
  std::printf("attributes:    0x%X%s\n", static_cast<unsigned>(info.attr), info.attr & NC_CACHE_ATTR_LOCKED ? " (locked)" : "");
  std::printf("error code:    %d\n", info.errcode);
  std::printf("task running:  %s\n", info.execTask ? "yes" : "no");
  PrintTags(tags);
  return kExitOk;
}

CLI_COMMAND("info", "PATH", "show the cache record and the tags of a file or folder inside a sync root", Info);

}  // namespace
