#include "docmgr/ncVerUpgrader.h"

#include <algorithm>

#include "base/Directory.h"
#include "base/File.h"
#include "base/Path.h"
#include "docmgr/ncCacheMgr.h"
#include "docmgr/ncDocUtils.h"
#include "docmgr/ncFileMgr.h"
#include "docmgr/ncModuleAllocator.h"
#include "docmgr/ncQueryResult.h"
#include "docmgr/ncSchemaReconciler.h"

using base::String;

using base::Format;
using base::Path;

NC_IMPL_POOLED_ISUPPORTS1(ncVerUpgrader, ncIVerUpgrader)

ncIVerUpgrader* GetUpgrader(int32_t version, const ncUpgradeContext& context) {
  // clang-format off
  switch (version) {
    case 4: return NC_NEW(ncV4Upgrader, context);
    case 5: return NC_NEW(ncV5Upgrader, context);
    case 6: return NC_NEW(ncV6Upgrader, context);
    case 7: return NC_NEW(ncV7Upgrader, context);
    case 8: return NC_NEW(ncV8Upgrader, context);
    case 9: return NC_NEW(ncV9Upgrader, context);
    case 10: return NC_NEW(ncV10Upgrader, context);
    case 11: return NC_NEW(ncV11Upgrader, context);
    case 12: return NC_NEW(ncV12Upgrader, context);
    case 13: return NC_NEW(ncV13Upgrader, context);
    case 14: return NC_NEW(ncV14Upgrader, context);
    case 15: return NC_NEW(ncV15Upgrader, context);
    case 16: return NC_NEW(ncV16Upgrader, context);
    case 17: return NC_NEW(ncV17Upgrader, context);
    case 18: return NC_NEW(ncV18Upgrader, context);
    case 19: return NC_NEW(ncV19Upgrader, context);
    case 20: return NC_NEW(ncV20Upgrader, context);
    case 21: return NC_NEW(ncV21Upgrader, context);
    case 22: return NC_NEW(ncV22Upgrader, context);
    case 23: return NC_NEW(ncV23Upgrader, context);
    default: return nullptr;
  }
  // clang-format on
}

ncIVerUpgrader* GetViewUpgrader(int32_t viewVersion, int32_t targetViewVer, const ncUpgradeContext& context) {
  if (viewVersion == 1 && targetViewVer == 2) return NC_NEW(ncViewUpgrader_1to2, context);
  if (viewVersion == 2 && targetViewVer == 1) return NC_NEW(ncViewUpgrader_2to1, context);
  return nullptr;
}

namespace {

String DataFile(const ncUpgradeContext& context, const char16_t* name) {
  return Path::combine(context.config->GetDBPath(), name);
}

// The first column of every row of a query.
std::vector<String> Column(ncDBMgr* db, const String& sql) {
  ncQueryResult result(db, sql);
  std::vector<String> values;
  for (int row = 0; row < result.rows(); ++row) values.push_back(result.text(row, 0));
  return values;
}

// Type names for the rows of one table that have none.
void FillTypeNames(const String& path, const char16_t* table, const char16_t* typeColumn,
                   const std::map<int, String>& typeNames) {
  if (!base::File::exists(path)) return;
  nsCOMPtr<ncDBMgr> db(NC_NEW(ncDBMgr));
  db->Open(path);
  const String lacking = u"(typeName is null or typeName = '')";
  if (db->IsTableExists(table)) {
    const std::vector<String> types =
        Column(db.get(), Format(u"select distinct %s from %s where %s", typeColumn, table, lacking));
    if (!types.empty() && typeNames.empty())
      NC_THROW(NC_ERR_DATABASE, u"The names of the document types are needed to upgrade %s.", path);
    for (const auto& entry : typeNames)
      db->ExecuteSql(Format(u"update %s set typeName = '%s' where %s = %d and %s", table,
                            ncDocUtils::QuoteSql(entry.second), typeColumn, entry.first, lacking));
  }
  db->Close();
}

// The view a top-level folder belongs to: its cache row's, else the client's list.
bool FindView(ncCacheMgr* cache, const std::vector<ncUpgradeView>& views, const String& folder, ncUpgradeView& view) {
  ncCacheInfo info;
  if (cache->GetInfoByPath(folder, info) && !info.viewName.empty()) {
    view.name = info.viewName;
    view.viewType = info.viewType;
    return true;
  }
  for (const ncUpgradeView& listed : views)
    if (std::find(listed.topFolders.begin(), listed.topFolders.end(), folder) != listed.topFolders.end()) {
      view = listed;
      return true;
    }
  return false;
}

// The cache row of a top-level folder that did not know its view learns it, so that the
// cache in view mode finds the folder's view again.
void RecordView(ncCacheMgr* cache, const String& folder, const ncUpgradeView& view) {
  ncCacheInfo info;
  if (!cache->GetInfoByPath(folder, info) || info.viewName == view.name) return;
  info.viewName = view.name;
  info.viewType = view.viewType;
  cache->Update(folder, info);
}

// The folder customisation a view folder carries belongs to it and does not move out.
bool IsFolderCustomisation(const String& path) {
  const String name = Path::getFileName(path);
  return name == u".directory" || base::ToLower(name) == u"desktop.ini";
}

// What a view step works on: the primary root, its file manager, and its cache open
// without view mode (rows are keyed below the view folder, the same in both layouts).
class TopLevel {
 public:
  explicit TopLevel(const ncUpgradeContext& context)
      : paths(context.config->GetPathMgr()),
        root(paths->GetRootPath()),
        cache(NC_NEW(ncCacheMgr)),
        files_(NC_NEW(ncFileMgr, paths)) {
    cache->Init(DataFile(context, u"cache.db"), false);
  }
  ~TopLevel() { cache->Close(); }

  // Cache rows only follow a folder whose name changed on the way: a clash numbered it.
  void MoveFollowed(const String& from, const String& to) {
    String target = to;
    files_->Move(from, target);
    const String oldName = Path::getFileName(from);
    const String newName = Path::getFileName(target);
    if (newName != oldName) cache->Rename(oldName, newName);
  }

  ncPathMgr* const paths;
  const String root;
  const nsCOMPtr<ncCacheMgr> cache;

 private:
  nsCOMPtr<ncFileMgr> files_;
};

}  // namespace

void ncVerUpgrader::Upgrade() {
  NC_TRACE(u"this: 0x%p", this);
  ncSchemaReconciler(context_.config->GetDBPath()).Reconcile();
  UpgradeData();
  CountStepDone();
}

void ncVerUpgrader::CountStepDone() {
  std::lock_guard<std::mutex> guard(*context_.summaryLock);
  context_.summary->done += 1.0;
}

void ncV6Upgrader::UpgradeData() {
  const std::map<int, String>& typeNames = context_.data->typeNames;
  FillTypeNames(DataFile(context_, u"cache.db"), u"tb_cacheInfo", u"type", typeNames);
  FillTypeNames(DataFile(context_, u"nonius.db"), u"tb_download_nonius", u"docType", typeNames);
}

void ncViewUpgrader_1to2::Upgrade() {
  NC_TRACE(u"this: 0x%p", this);
  TopLevel top(context_);
  for (const String& path : base::Directory::list(top.root)) {
    if (!base::Directory::exists(path) || top.paths->IsInDBPath(path, true) || top.paths->IsInUnsyncDoc(path, true))
      continue;
    const String folder = Path::getFileName(path);
    ncUpgradeView view;
    // A folder named as its own view is that view's folder, already in place.
    if (!FindView(top.cache.get(), *context_.views, folder, view) || view.name == folder) continue;
    RecordView(top.cache.get(), folder, view);
    top.MoveFollowed(path, Path::combine(Path::combine(top.root, view.name), folder));
  }
  CountStepDone();
}

void ncViewUpgrader_2to1::Upgrade() {
  NC_TRACE(u"this: 0x%p", this);
  TopLevel top(context_);
  std::vector<String> viewNames;
  top.cache->GetViewNames(viewNames);
  for (const ncUpgradeView& view : *context_.views) viewNames.push_back(view.name);
  std::sort(viewNames.begin(), viewNames.end());
  viewNames.erase(std::unique(viewNames.begin(), viewNames.end()), viewNames.end());

  for (const String& viewName : viewNames) {
    const String viewFolder = Path::combine(top.root, viewName);
    if (viewName.empty() || !base::Directory::exists(viewFolder)) continue;
    // A folder already moved back whose name is that of another view is no view folder.
    ncUpgradeView owner;
    if (FindView(top.cache.get(), {}, viewName, owner) && owner.name != viewName) continue;
    for (const String& child : base::Directory::list(viewFolder))
      if (!IsFolderCustomisation(child)) top.MoveFollowed(child, Path::combine(top.root, Path::getFileName(child)));
    const std::vector<String> left = base::Directory::list(viewFolder);
    if (std::all_of(left.begin(), left.end(), IsFolderCustomisation)) base::Directory::removeTree(viewFolder);
  }
  CountStepDone();
}
