#include "docmgr/ncDocMgr.h"

#include <algorithm>

#include "base/Directory.h"
#include "docmgr/ncConfigDBInfo.h"
#include "docmgr/ncDocUtils.h"
#include "docmgr/ncModuleAllocator.h"
#include "docmgr/ncIUpgradeMgr.h"
#include "platform/ncPlatform.h"

using base::String;

namespace {

template <typename Interface, typename Manager>
Interface* AddRefed(Manager* manager) {
  if (manager) manager->AddRef();
  return manager;
}

}  // namespace

NC_IMPL_HEAP_ISUPPORTS1(ncDocMgr, ncIDocMgr)

ncDocMgr::ncDocMgr()
    : pathMgr_(NC_NEW(ncPathMgr)),
      fileMgr_(NC_NEW(ncFileMgr, pathMgr_.get())),
      adsMgr_(NC_NEW(ncADSMgr)),
      cacheMgr_(NC_NEW(ncCacheMgr)),
      logMgr_(NC_NEW(ncLogMgr)),
      msgMgr_(NC_NEW(ncMsgMgr)),
      relayMgr_(NC_NEW(ncRelayMgr)) {
  NC_TRACE(u"this: 0x%p", this);
}

ncDocMgr::~ncDocMgr() { NC_TRACE(u"this: 0x%p", this); }

void ncDocMgr::Init(const String& rootPath, const String& logRootPath, const std::vector<ncTopFolderInfo>& topFolders,
                    bool isNewView, const String& userName) {
  NC_TRACE(u"path: %s", rootPath);
  NC_CHECK_PATH(rootPath);
  NC_TRACE(u"path: %s", logRootPath);
  NC_CHECK_PATH(logRootPath);
  topFolders_ = topFolders;
  isNewView_ = isNewView;
  userName_ = userName;

  pathMgr_->Init(rootPath, false);
  pathMgr_->SetUserName(userName);
  pathMgr_->CreateDBPath();
  const String mainData = pathMgr_->GetDBPath();

  nsCOMPtr<ncPathMgr> logPathMgr(NC_NEW(ncPathMgr));
  logPathMgr->Init(logRootPath, false);
  logPathMgr->CreateDBPath();
  const String logData = logPathMgr->GetDBPath();

  cacheMgr_->Init(base::Path::combine(mainData, u"cache.db"), isNewView);
  logMgr_->Init(base::Path::combine(logData, u"log.db"));
  msgMgr_->Init(base::Path::combine(logData, u"msg.db"));
  relayMgr_->Init(base::Path::combine(mainData, u"nonius.db"));
  storesOpen_ = true;

  CustomizeTopFolders();
}

void ncDocMgr::CustomizeTopFolders() {
  const String root = pathMgr_->GetRootPath();
  for (const ncTopFolderInfo& folder : topFolders_) {
    if (folder.name.empty()) continue;
    const String path = base::Path::combine(root, folder.name);
    if (base::Directory::exists(path)) fileMgr_->CustomizeFolder(path, folder.docType, folder.typeName);
  }
}

void ncDocMgr::IniLocalSync(const String& path) {
  NC_TRACE(u"path: %s", path);
  NC_CHECK_PATH(path);
  ncConfigDBInfo config;
  config.Init(path, true);
  config.UpdateVersionNum(NC_SCHEMA_VERSION_CURRENT);  // a new local sync root starts current
  config.Close();
}

void ncDocMgr::AddLocalSync(const String& path) {
  NC_TRACE(u"path: %s", path);
  NC_CHECK_PATH(path);
  LocalSync entry;
  entry.pathMgr = NC_NEW(ncPathMgr);
  entry.fileMgr = NC_NEW(ncFileMgr, entry.pathMgr.get());
  entry.cacheMgr = NC_NEW(ncCacheMgr);
  entry.relayMgr = NC_NEW(ncRelayMgr);
  entry.pathMgr->Init(path, true);
  entry.pathMgr->SetUserName(userName_);
  entry.pathMgr->CreateDBPath();
  const String data = entry.pathMgr->GetDBPath();
  entry.cacheMgr->Init(base::Path::combine(data, u"cache.db"), false);
  entry.relayMgr->Init(base::Path::combine(data, u"nonius.db"));
  localSyncs_[path] = entry;
}

void ncDocMgr::CloseLocalSync(LocalSync& entry) {
  if (entry.cacheMgr) entry.cacheMgr->Close();
  if (entry.relayMgr) entry.relayMgr->Close();
}

void ncDocMgr::RemoveLocalSync(const String& path) {
  const auto entry = localSyncs_.find(path);
  if (entry == localSyncs_.end()) return;
  CloseLocalSync(entry->second);
  localSyncs_.erase(entry);
}

void ncDocMgr::CheckLocalSync(const String& localPath, String& root) {
  NC_TRACE(u"localPath: %s", localPath);
  root.clear();
  for (const auto& entry : localSyncs_) {
    if (ncDocUtils::IsParentPath(entry.first, localPath, true)) {
      root = entry.first;
      return;
    }
  }
}

void ncDocMgr::GetLocalSyncs(std::vector<String>& roots) {
  for (const auto& entry : localSyncs_) roots.push_back(entry.first);
}

void ncDocMgr::Close() {
  NC_TRACE(u"this: 0x%p", this);
  if (cacheMgr_) cacheMgr_->Close();
  if (logMgr_) logMgr_->Close();
  if (msgMgr_) msgMgr_->Close();
  if (relayMgr_) relayMgr_->Close();
  storesOpen_ = false;
  for (auto& entry : localSyncs_) CloseLocalSync(entry.second);
  localSyncs_.clear();
}

void ncDocMgr::GetUnsyncDoc(std::vector<ncUnsyncDocInfo>& docs) {
  NC_TRACE(u"this: 0x%p", this);
  docs.clear();
  if (storesOpen_) AppendUnsyncDocs(pathMgr_.get(), cacheMgr_.get(), docs);
  for (const auto& entry : localSyncs_) AppendUnsyncDocs(entry.second.pathMgr.get(), entry.second.cacheMgr.get(), docs);
}

void ncDocMgr::AppendUnsyncDocs(ncPathMgr* pathMgr, ncCacheMgr* cacheMgr, std::vector<ncUnsyncDocInfo>& docs) {
  std::vector<ncCacheUnexecInfo> waiting;
  cacheMgr->Unsync_GetUnexecInfoVec(u"", waiting, 0);
  const String root = pathMgr->GetRootPath();
  // The cache lists them in reverse order of its query; the report keeps the cache's order.
  for (auto item = waiting.rbegin(); item != waiting.rend(); ++item) {
    ncUnsyncDocInfo doc;
    doc.root = root;
    doc.relPath = item->relPath;
    doc.kind = NC_UNSYNC_DOC_WAITING;
    doc.isDir = item->isDir;
    doc.size = item->size;
    doc.errcode = item->errcode;
    docs.push_back(doc);
  }
  const String folder = pathMgr->GetUnsyncDocPath();
  if (base::Directory::exists(folder)) AppendSetAsideDocs(pathMgr, folder, docs);
}

// Every file below the folder, depth first in the order of the listing, but for what the
// ignore rules name (the folder's own shell customisation among them).
void ncDocMgr::AppendSetAsideDocs(ncPathMgr* pathMgr, const String& folder, std::vector<ncUnsyncDocInfo>& docs) {
  for (const String& path : base::Directory::list(folder)) {
    if (pathMgr->IsIgnorePath(path)) continue;
    if (base::Directory::exists(path)) {
      AppendSetAsideDocs(pathMgr, path, docs);
      continue;
    }
    ncUnsyncDocInfo doc;
    doc.root = pathMgr->GetRootPath();
    doc.relPath = pathMgr->GetRelativePath(path);
    doc.kind = NC_UNSYNC_DOC_SET_ASIDE;
    if (!platform::GetFileSize(path, doc.size)) continue;  // gone while we looked
    docs.push_back(doc);
  }
}

void ncDocMgr::GetUnsyncLog(std::vector<ncSyncLogInfo>& entries, uint32_t begin, uint32_t end, uint32_t& total) {
  NC_TRACE(u"begin: %u, end: %u", begin, end);
  entries.clear();
  total = 0;
  if (!storesOpen_) return;
  // The sync log numbers its pages from the newest entry but returns each page oldest first.
  logMgr_->GetSyncLog(NC_SYNCLOG_TYPE_UNSYNC, entries, begin, end, total);
  std::reverse(entries.begin(), entries.end());
}

uint32_t ncDocMgr::GetUnsyncLogNum() {
  NC_TRACE(u"this: 0x%p", this);
  std::vector<ncSyncLogInfo> none;
  uint32_t total = 0;
  if (!storesOpen_) return total;
  logMgr_->GetSyncLog(NC_SYNCLOG_TYPE_UNSYNC, none, 0, 0, total);  // an empty page: only the count
  return total;
}

bool ncDocMgr::IsNewView() {
  NC_TRACE(u"this: 0x%p", this);
  return isNewView_;
}

const ncDocMgr::LocalSync* ncDocMgr::FindLocalSync(const String& path) const {
  const auto entry = localSyncs_.find(path);
  return entry == localSyncs_.end() ? nullptr : &entry->second;
}

template <typename Interface, typename Manager>
Interface* ncDocMgr::ManagerFor(const String& path, const nsCOMPtr<Manager>& main,
                                nsCOMPtr<Manager> LocalSync::*ofLocalSync) const {
  if (path.empty()) return AddRefed<Interface>(main.get());
  const LocalSync* entry = FindLocalSync(path);
  return entry ? AddRefed<Interface>((entry->*ofLocalSync).get()) : nullptr;
}

ncIPathMgr* ncDocMgr::GetPathMgr(const String& path) {
  NC_TRACE(u"this: 0x%p", this);
  return ManagerFor<ncIPathMgr>(path, pathMgr_, &LocalSync::pathMgr);
}

ncIFileMgr* ncDocMgr::GetFileMgr(const String& path) {
  NC_TRACE(u"this: 0x%p", this);
  return ManagerFor<ncIFileMgr>(path, fileMgr_, &LocalSync::fileMgr);
}

ncIADSMgr* ncDocMgr::GetADSMgr() {
  NC_TRACE(u"this: 0x%p", this);
  return AddRefed<ncIADSMgr>(adsMgr_.get());
}

ncICacheMgr* ncDocMgr::GetCacheMgr(const String& path) {
  NC_TRACE(u"this: 0x%p", this);
  return ManagerFor<ncICacheMgr>(path, cacheMgr_, &LocalSync::cacheMgr);
}

ncILogMgr* ncDocMgr::GetLogMgr() {
  NC_TRACE(u"this: 0x%p", this);
  return AddRefed<ncILogMgr>(logMgr_.get());
}

ncIMsgMgr* ncDocMgr::GetMsgMgr() {
  NC_TRACE(u"this: 0x%p", this);
  return AddRefed<ncIMsgMgr>(msgMgr_.get());
}

ncIRelayMgr* ncDocMgr::GetRelayMgr(const String& path) {
  NC_TRACE(u"this: 0x%p", this);
  return ManagerFor<ncIRelayMgr>(path, relayMgr_, &LocalSync::relayMgr);
}

ncIDBMgr* ncDocMgr::CreateDBMgr() {
  dbMgr_ = NC_NEW(ncDBMgr);
  return dbMgr_.get();
}
