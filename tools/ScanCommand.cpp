// scan ROOT: record every file and folder under a sync root in its document cache, as the
// sync engine's local scan does, with generated document ids that follow the folders.
// Four steps: collect (walk the tree), record (cache rows, tags, log), prune (rows of what
// is gone), report.
#include <algorithm>
#include <cstdio>
#include <ctime>
#include <map>
#include <memory>
#include <random>
#include <set>

#include "CacheCliSupport.h"
#include "CliCommand.h"
#include "FolderListings.h"
#include "ProgressBar.h"
#include "ScanCollector.h"
#include "ScratchState.h"
#include "StoreBatches.h"
#include "Translation.h"
#include "docmgr/ncIADSMgr.h"
#include "docmgr/ncICacheBulkWriter.h"
#include "docmgr/ncILogBulkWriter.h"
#include "platform/ncPlatform.h"

namespace {

// The sync log the scan writes its events to, and its task codes.
const int kScanLogType = 0;
const int32_t kTaskRecorded = kTaskRecordedLocally;
const int32_t kTaskRemoved = kTaskRecordRemoved;

// Kept in the data directory once a first scan has recorded the whole tree. Until it exists
// every scan is a first scan, so an interrupted or partly failed first scan does not leave
// the items it never reached to be taken for new, unsynchronised ones.
const char kFirstScanMarker[] = "first-scan.done";

struct ScanOptions {
  std::string root;
  bool dryRun = false;
  bool verbose = false;
};

struct ScanFailure {
  std::string path;
  std::string what;  // "tag" or "record"
  OsError error;
};

struct ScanTally {
  bool baseline = false;
  size_t folders = 0, files = 0, added = 0, unsynced = 0, tagged = 0, removed = 0, removedTops = 0;
  std::vector<ScanFailure> failures;
};

// The stores a scan works with; rows and log entries go through their bulk writers (one
// statement parsed per store instead of one per item).
struct ScanStores {
  ncICacheMgr* cache = nullptr;
  ncICacheBulkWriter* rows = nullptr;
  ncIADSMgr* tags = nullptr;
  ncILogMgr* log = nullptr;
  ncILogBulkWriter* events = nullptr;
};

bool FileExists(const std::string& path) {
  return platform::GetFileAttributes(Wide(path)) != platform::kInvalidAttributes;
}

// A node name as the server makes them: 32 upper-case hex digits.
base::String NewNodeName(std::mt19937_64& random) {
  char text[33];
  std::snprintf(text, sizeof text, "%016llX%016llX", static_cast<unsigned long long>(random()),
                static_cast<unsigned long long>(random()));
  return Wide(text);
}

// One sync-log entry of the scan (log type 0); times in seconds, as the other log entries.
void RecordEvent(ncILogBulkWriter* log, int32_t task, const base::String& relPath, bool isDir, int64_t size,
                 int64_t seconds) {
  ncSyncLogInfo event;
  event.taskType = task;
  event.relPath = relPath;
  event.size = size;
  event.time = seconds;
  event.remark = isDir ? u"folder" : u"file";
  log->RecordSyncLogBulk(kScanLogType, event);
}

base::String ParentOf(const base::String& relPath) {
  const size_t last = relPath.rfind(u'\\');
  return last == base::String::npos ? base::String() : relPath.substr(0, last);
}

base::String ChildPath(const base::String& folder, const base::String& name) {
  return folder.empty() ? name : folder + u"\\" + name;
}

std::string NameOf(const std::string& path) { return path.substr(path.rfind('/') + 1); }

// The cache's key for a path below the root (a dry run may work without the root's path
// manager, so the tool derives it itself).
base::String RelativeTo(const std::string& root, const std::string& path) {
  if (path.size() <= root.size()) return base::String();
  base::String relPath = Wide(path.substr(root.size() + 1));
  for (auto& unit : relPath)
    if (unit == u'/') unit = u'\\';
  return relPath;
}

struct RecordContext {
  const ScanStores& stores;
  const ScanOptions& options;
  FolderListings listings;
  StoreBatches batches;
  std::map<base::String, base::String> folderIds;  // relPath -> id
  std::mt19937_64 random{std::random_device{}()};
};

// A new row for an item the cache does not know yet.
ncCacheInfo NewRecord(RecordContext& record, const base::String& parent, const ScanEntry& entry, bool baseline) {
  ncCacheInfo info;
  const auto parentId = record.folderIds.find(parent);
  info.id = (parentId == record.folderIds.end() ? base::String(u"gns:/") : parentId->second) + u"/" +
            NewNodeName(record.random);
  info.isDir = entry.isDir;
  info.state = baseline ? NC_CACHE_STATE_NORMAL : NC_CACHE_STATE_UNSYNC;
  if (baseline) {
    info.otag = NewNodeName(record.random);
    info.serverMTime = entry.mtime;
  }
  info.clientMTime = entry.mtime;
  info.size = entry.size;
  return info;
}

// Writes the row of one item when it is new or changed; returns its document id.
base::String WriteRow(RecordContext& record, const base::String& relPath, const ScanEntry& entry, bool known,
                      const ncCacheScanInfo& row, ScanTally& tally) {
  if (known && row.clientMTime == entry.mtime && row.size == entry.size) return row.id;
  ncCacheInfo info;
  if (known) {
    record.stores.cache->GetInfoByPath(relPath, info);
    info.clientMTime = entry.mtime;
    info.size = entry.size;
  } else {
    info = NewRecord(record, ParentOf(relPath), entry, tally.baseline);
  }
  if (record.options.dryRun) return info.id;
  record.stores.rows->UpdateBulk(relPath, info);
  if (!known) RecordEvent(record.stores.events, kTaskRecorded, relPath, entry.isDir, entry.size, entry.mtime / 1000000);
  record.batches.wrote();
  return info.id;
}

// The cache record of one item found on disk, and the tag of a file; writes nothing on a
// dry run.
void RecordEntry(RecordContext& record, const ScanEntry& entry, ScanTally& tally) {
  const base::String relPath = RelativeTo(record.options.root, entry.path);
  const base::String parent = ParentOf(relPath);
  ncCacheScanInfo row;
  const bool known = record.listings.take(parent, parent.empty() ? relPath : relPath.substr(parent.size() + 1), row);
  if (!known) {
    ++tally.added;
    if (!tally.baseline) ++tally.unsynced;
  }
  base::String id;
  try {
    id = WriteRow(record, relPath, entry, known, row, tally);
  } catch (const base::Exception& e) {
    tally.failures.push_back({entry.path, "record", FindOsError(e)});
    return;
  }
  entry.isDir ? ++tally.folders : ++tally.files;
  if (entry.isDir) {
    record.folderIds[relPath] = id;
    return;
  }
  if (record.options.dryRun) {
    ++tally.tagged;
    return;
  }
  // The file carries its document id, so a rename or move outside the client keeps it.
  try {
    record.stores.tags->SetDocIdInfo(Wide(entry.path), id);
    ++tally.tagged;
  } catch (const base::Exception& e) {
    tally.failures.push_back({entry.path, "tag", FindOsError(e)});
  }
}

void RecordAll(const ScanStores& stores, const ScanCollection& found, const ScanOptions& options, bool quiet,
               ScanTally& tally) {
  RecordContext record{stores, options, FolderListings(stores.cache),
                       StoreBatches(stores.cache, stores.log, !options.dryRun), {}};
  ProgressBar progress(options.dryRun ? Tr("checking") : Tr("scanning"), found.entries.size(), quiet);
  for (const ScanEntry& entry : found.entries) {
    const size_t failuresBefore = tally.failures.size();
    RecordEntry(record, entry, tally);
    for (size_t i = failuresBefore; i < tally.failures.size(); ++i) {
      const ScanFailure& failure = tally.failures[i];
      std::fprintf(stderr, "%sdocmgr-cli: scan: %s %s: %s\n", quiet ? "" : "\n",
                   failure.what == "tag" ? Tr("could not tag") : Tr("could not record"), Printable(failure.path).c_str(),
                   failure.error.text.c_str());
    }
    progress.advance();
  }
  record.batches.commit();
}

// Rows below relPath, counted down the whole subtree.
size_t CountSubtree(ncICacheMgr* cache, const base::String& relPath) {
  std::map<base::String, ncCacheScanInfo> children;
  cache->GetScanSubInfos(relPath, children);
  size_t count = children.size();
  for (const auto& child : children)
    if (child.second.isDir) count += CountSubtree(cache, ChildPath(relPath, child.first));
  return count;
}

// Rows of items that are gone from the disk go with everything below them. Only folders
// that were listed whole are compared: what lies in an unreadable folder keeps its rows.
void PruneVanished(const ScanStores& stores, const ScanCollection& found, const ScanOptions& options,
                   ScanTally& tally) {
  const int64_t now = static_cast<int64_t>(std::time(nullptr));
  for (const auto& folder : found.listed) {
    const base::String folderRel = RelativeTo(options.root, folder.first);
    std::map<base::String, ncCacheScanInfo> cached;
    stores.cache->GetScanSubInfos(folderRel, cached);
    LockWatch::touch();  // comparing is progress too: only a blocked statement is a wait
    for (const auto& child : cached) {
      if (folder.second.count(Narrow(child.first))) continue;
      const base::String relPath = ChildPath(folderRel, child.first);
      const size_t rows = 1 + (child.second.isDir ? CountSubtree(stores.cache, relPath) : 0);
      if (!options.dryRun) {
        stores.cache->Delete(relPath, false);
        RecordEvent(stores.events, kTaskRemoved, relPath, child.second.isDir, child.second.size, now);
      }
      if (options.verbose)
        std::printf("%s %s (%s)\n", Tr("removed:"), ShownRelPath(relPath).c_str(), Counted(rows, "record", "records").c_str());
      tally.removed += rows;
      ++tally.removedTops;
    }
  }
}

void ReportJson(const ScanOptions& options, const ScanCollection& found, const ScanTally& tally) {
  JsonWriter json;
  json.beginObject().member("root", options.root).member("dryRun", options.dryRun).member("firstScan", tally.baseline);
  json.member("recorded", tally.folders + tally.files).member("folders", tally.folders).member("files", tally.files);
  json.member("tagged", tally.tagged).member("new", tally.added).member("unsynchronised", tally.unsynced);
  json.member("removed", tally.removed).member("skippedCount", found.skipped.size());
  json.key("skipped").beginArray();
  for (const ScanSkipped& item : found.skipped)
    json.beginObject().member("path", item.path).member("reason", item.reason).endObject();
  json.endArray().key("unreadable").beginArray();
  for (const ScanUnreadable& item : found.unreadable)
    json.beginObject().member("path", item.path).member("error", item.error.text).member("code", item.error.win32Code).endObject();
  json.endArray().key("failed").beginArray();
  for (const ScanFailure& item : tally.failures)
    json.beginObject().member("path", item.path).member("step", item.what).member("error", item.error.text)
        .member("code", item.error.win32Code).endObject();
  json.endArray().endObject().print();
}

void ReportText(const ScanOptions& options, const ScanCollection& found, const ScanTally& tally) {
  if (options.verbose) {
    for (const ScanSkipped& item : found.skipped)
      std::printf("%s %s (%s)\n", Tr("skipped:"), Printable(item.path).c_str(), item.reason.c_str());
    for (const ScanUnreadable& item : found.unreadable)
      std::printf("%s %s (%s; %s)\n", Tr("unreadable:"), Printable(item.path).c_str(), item.error.text.c_str(),
                  Tr("its records are kept"));
  }
  const size_t recorded = tally.folders + tally.files;
  std::printf("%s %s (%s, %s) %s %s.\n", options.dryRun ? Tr("Would record") : Tr("Recorded"),
              Counted(recorded, "item", "items").c_str(), Counted(tally.folders, "folder", "folders").c_str(),
              Counted(tally.files, "file", "files").c_str(), Tr("in the cache of"), Printable(options.root).c_str());
  std::printf("%s %s %s; %s %s%s.\n", options.dryRun ? Tr("Would tag") : Tr("Tagged"),
              Counted(tally.tagged, "file", "files").c_str(), Tr("with document ids"), Tr("skipped"),
              Counted(found.skipped.size(), "item", "items").c_str(),
              options.verbose || found.skipped.empty() ? "" : Tr(" (-v lists them)"));
  if (tally.baseline) {
    std::printf("%s\n", Tr("First scan: every item is recorded as synchronised."));
  } else {
    std::printf("%s %s; %s %s.\n", Counted(tally.unsynced, "new item", "new items").c_str(),
                Tr("recorded as unsynchronised"), Counted(tally.removed, "record", "records").c_str(),
                Tr("removed for vanished items"));
  }
  if (!found.unreadable.empty())
    std::printf("%s %s\n", Counted(found.unreadable.size(), "item", "items").c_str(),
                Tr("could not be read; the records below them were kept."));
  if (!tally.failures.empty())
    std::printf("%s %s\n", Counted(tally.failures.size(), "item", "items").c_str(), Tr("failed (listed above)."));
}

bool ParseScanArgs(const std::vector<std::string>& args, ScanOptions& options) {
  for (const std::string& arg : args) {
    if (arg == "--dry-run") options.dryRun = true;
    else if (arg == "-v" || arg == "--verbose") options.verbose = true;
    else if (!arg.empty() && arg[0] == '-') return false;
    else if (options.root.empty()) options.root = arg;
    else return false;
  }
  return !options.root.empty();
}

int Scan(CliContext& context, const std::vector<std::string>& args) {
  ScanOptions options;
  if (!ParseScanArgs(args, options)) UsageError("scan");
  options.root = CheckSyncRoot(options.root, false);
  const bool hasState = FileExists(options.root + "/" + kDataDirectoryName);
  std::unique_ptr<ScratchState> scratch(options.dryRun && !hasState ? new ScratchState : nullptr);
  ncIDocMgr* docMgr = context.openRoot(scratch ? scratch->path() : options.root);
  nsCOMPtr<ncIPathMgr> pathMgr = MainPathMgr(docMgr);
  nsCOMPtr<ncICacheMgr> cache = MainCacheMgr(docMgr);
  nsCOMPtr<ncIADSMgr> tags = nsCOMPtr<ncIADSMgr>::adopt(docMgr->GetADSMgr());
  nsCOMPtr<ncILogMgr> log = nsCOMPtr<ncILogMgr>::adopt(docMgr->GetLogMgr());
  nsCOMPtr<ncICacheBulkWriter> rows = do_QueryInterface<ncICacheBulkWriter>(cache.get());
  nsCOMPtr<ncILogBulkWriter> events = do_QueryInterface<ncILogBulkWriter>(log.get());
  ScanStores stores{cache.get(), rows.get(), tags.get(), log.get(), events.get()};
  const std::string marker = Narrow(pathMgr->GetDBPath()) + "/" + kFirstScanMarker;

  ScanCollector collector(options.root, NameOf(Narrow(pathMgr->GetUnsyncDocPath())),
                          [&pathMgr](const std::string& path) { return pathMgr->IsIgnorePath(Wide(path)); });
  const ScanCollection found = collector.collect();
  for (const ScanUnreadable& item : found.unreadable)
    std::fprintf(stderr, "docmgr-cli: scan: %s %s: %s; %s\n", Tr("cannot read"), Printable(item.path).c_str(),
                 item.error.text.c_str(), Tr("its records are kept"));

  ScanTally tally;
  tally.baseline = !FileExists(marker);
  RecordAll(stores, found, options, context.quiet, tally);
  if (!scratch) PruneVanished(stores, found, options, tally);
  const bool complete = found.unreadable.empty() &&
                        std::none_of(tally.failures.begin(), tally.failures.end(),
                                     [](const ScanFailure& f) { return f.what == "record"; });
  if (tally.baseline && complete && !options.dryRun) platform::WriteWholeFile(Wide(marker), "the first scan recorded the whole tree\n");

  if (context.json) ReportJson(options, found, tally);
  else ReportText(options, found, tally);
  if (scratch) context.closeRoot();  // Windows removes no file that is still open
  return found.unreadable.empty() && tally.failures.empty() ? 0 : 1;
}

CLI_COMMAND("scan", "ROOT [--dry-run] [-v]",
            "record files and folders in the cache, tag files with their ids, log what changed "
            "(first scan: synchronised; later: new items unsynchronised); --dry-run writes nothing, "
            "-v lists what is skipped and removed",
            Scan);

}  // namespace
