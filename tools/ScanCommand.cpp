// scan ROOT: record every file and folder under a sync root in its document cache, as the
// sync engine's local scan does, with generated document ids that follow the folders.
#include <algorithm>
#include <functional>
#include <map>
#include <random>
#include <set>

#include "CacheCliSupport.h"
#include "CliCommand.h"
#include "ProgressBar.h"
#include "docmgr/public/ncIADSMgr.h"
#include "docmgr/public/ncILogMgr.h"
#include "base/Path.h"
#include "platform/ncPlatform.h"

namespace {

// The sync log the scan writes its events to, and its task codes.
const int kScanLogType = 0;
const int32_t kTaskRecorded = 1;
const int32_t kTaskRemoved = 2;

struct Entry {
  std::string path;  // absolute
  bool isDir;
  int64_t mtime;     // microseconds since 1970
  int64_t size;
};

// Every file and folder below folder, parents before their children, names in byte order.
// Symbolic links and special files are not synchronised and are left out, and so is what
// the ignore rules name (a folder with everything in it); ignored counts those.
void Collect(const std::string& folder, const std::set<std::string>& skipped,
             const std::function<bool(const std::string&)>& isIgnored, std::vector<Entry>& entries, size_t& ignored) {
  std::vector<base::String> wideNames;
  if (!platform::ListDirectory(Wide(folder), wideNames)) return;
  std::vector<std::string> names;
  for (const base::String& name : wideNames) names.push_back(Narrow(name));
  std::sort(names.begin(), names.end());
  for (const std::string& name : names) {
    const std::string path = Narrow(base::Path::combine(Wide(folder), Wide(name)));
    platform::FileInfo info;
    if (skipped.count(path) || !platform::GetFileInfo(Wide(path), info)) continue;
    if (!info.isDirectory && !info.isRegularFile) continue;
    if (isIgnored(path)) {
      ++ignored;
      continue;
    }
    entries.push_back({path, info.isDirectory, info.modifiedMicros, info.size});
    if (info.isDirectory) Collect(path, skipped, isIgnored, entries, ignored);
  }
}

// A node name as the server makes them: 32 upper-case hex digits.
base::String NewNodeName(std::mt19937_64& random) {
  char text[33];
  std::snprintf(text, sizeof text, "%016llX%016llX", static_cast<unsigned long long>(random()),
                static_cast<unsigned long long>(random()));
  return Wide(text);
}

// One sync-log entry of the scan (log type 0).
void RecordEvent(ncILogMgr* log, int32_t task, const base::String& relPath, const Entry& entry) {
  ncSyncLogInfo event;
  event.taskType = task;
  event.relPath = relPath;
  event.size = entry.size;
  event.time = entry.mtime / 1000000;  // seconds, as the other log entries
  event.remark = entry.isDir ? u"folder" : u"file";
  log->RecordSyncLog(kScanLogType, event);
}

base::String ParentOf(const base::String& relPath) {
  const size_t last = relPath.rfind(u'\\');
  return last == base::String::npos ? base::String() : relPath.substr(0, last);
}

int Scan(CliContext& context, const std::vector<std::string>& args) {
  if (args.size() != 1) {
    std::fprintf(stderr, "usage: docmgr-cli scan ROOT\n");
    return 2;
  }
  const std::string root = CheckSyncRoot(args[0], false);
  ncIDocMgr* docMgr = context.openRoot(root);
  nsCOMPtr<ncIPathMgr> pathMgr = MainPathMgr(docMgr);
  nsCOMPtr<ncICacheMgr> cache = MainCacheMgr(docMgr);
  nsCOMPtr<ncIADSMgr> tags = nsCOMPtr<ncIADSMgr>::adopt(docMgr->GetADSMgr());
  nsCOMPtr<ncILogMgr> log = nsCOMPtr<ncILogMgr>::adopt(docMgr->GetLogMgr());

  std::vector<Entry> entries;
  size_t ignored = 0;
  Collect(root, {Narrow(pathMgr->GetDBPath()), Narrow(pathMgr->GetUnsyncDocPath())},
          [&pathMgr](const std::string& path) { return pathMgr->IsIgnorePath(Wide(path)); }, entries, ignored);

  // The first scan adopts the tree as synchronised; what appears later has not reached the
  // server yet.
  std::map<base::String, ncCacheScanInfo> rootChildren;
  cache->GetScanSubInfos(u"", rootChildren);
  const bool baseline = rootChildren.empty();

  std::mt19937_64 random(std::random_device{}());
  std::map<base::String, base::String> folderIds;               // relPath -> id
  std::map<base::String, std::set<base::String>> onDisk{{u"", {}}};  // folder relPath -> child names
  size_t folders = 0, files = 0, added = 0, unsynced = 0, removed = 0;
  {
    ProgressBar progress("scanning", entries.size(), context.quiet);
    for (const Entry& entry : entries) {
      const base::String relPath = pathMgr->GetRelativePath(Wide(entry.path));
      const base::String parent = ParentOf(relPath);
      onDisk[parent].insert(relPath.substr(parent.empty() ? 0 : parent.size() + 1));
      ncCacheInfo info;
      if (!cache->GetInfoByPath(relPath, info)) {
        const auto parentId = folderIds.find(parent);
        info.id = (parent.empty() || parentId == folderIds.end() ? base::String(u"gns:/") : parentId->second) + u"/" +
                  NewNodeName(random);
        info.isDir = entry.isDir;
        info.state = baseline ? NC_CACHE_STATE_NORMAL : NC_CACHE_STATE_UNSYNC;
        if (baseline) {
          info.otag = NewNodeName(random);
          info.serverMTime = entry.mtime;
        }
        ++added;
        if (!baseline) ++unsynced;
        RecordEvent(log.get(), kTaskRecorded, relPath, entry);
      }
      info.clientMTime = entry.mtime;
      info.size = entry.size;
      cache->Update(relPath, info);
      // The file carries its document id, so a rename or move outside the client keeps it.
      if (!entry.isDir) tags->SetDocIdInfo(Wide(entry.path), info.id);
      if (entry.isDir) {
        folderIds[relPath] = info.id;
        onDisk[relPath];
        ++folders;
      } else {
        ++files;
      }
      progress.advance();
    }
  }

  // Rows of items that are gone from the disk go with everything below them.
  for (const auto& folder : onDisk) {
    std::map<base::String, ncCacheScanInfo> cached;
    cache->GetScanSubInfos(folder.first, cached);
    for (const auto& child : cached) {
      if (folder.second.count(child.first)) continue;
      const base::String relPath = folder.first.empty() ? child.first : folder.first + u"\\" + child.first;
      cache->Delete(relPath, false);
      RecordEvent(log.get(), kTaskRemoved, relPath, Entry{std::string(), child.second.isDir, 0, child.second.size});
      ++removed;
    }
  }

  if (context.json) {
    std::printf("{\"root\": %s, \"recorded\": %zu, \"folders\": %zu, \"files\": %zu, \"new\": %zu, "
                "\"unsynchronised\": %zu, \"removed\": %zu, \"ignored\": %zu}\n",
                JsonText(root).c_str(), folders + files, folders, files, added, unsynced, removed, ignored);
  } else {
    std::printf("Recorded %zu items (%zu folders, %zu files) in the cache of %s.\n", folders + files, folders, files,
                root.c_str());
    std::printf("Tagged %zu files with their document ids; skipped %zu ignored items.\n", files, ignored);
    if (baseline) std::printf("First scan: every item is recorded as synchronised.\n");
    else std::printf("%zu new items recorded as unsynchronised; %zu vanished items removed.\n", unsynced, removed);
  }
  return 0;
}

CLI_COMMAND("scan", "ROOT",
            "record files and folders in the cache, tag files with their ids, log what changed "
            "(first scan: synchronised; later: new items unsynchronised)",
            Scan);

}  // namespace
