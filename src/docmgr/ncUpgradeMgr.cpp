#include "docmgr/ncUpgradeMgr.h"

#include "base/Directory.h"
#include "base/File.h"
#include "base/SystemLog.h"
#include "docmgr/ncDocMgrLibrary.h"
#include "docmgr/ncModuleAllocator.h"
#include "platform/ncPlatform.h"

using base::String;

NC_IMPL_HEAP_ISUPPORTS1(ncUpgradeMgr, ncIUpgradeMgr)

ncUpgradeMgr::ncUpgradeMgr() { NC_TRACE(u"this: 0x%p", this); }

ncUpgradeMgr::~ncUpgradeMgr() {
  NC_TRACE(u"this: 0x%p", this);
  join();
}

void ncUpgradeMgr::CheckVersion(ncConfigDBInfo& config, int32_t version) {
  if (version >= NC_SCHEMA_VERSION_OLDEST && version <= NC_SCHEMA_VERSION_CURRENT) return;
  config.Close();
  NC_THROW(NC_ERR_DATABASE, ncDocMgrLibrary::loadString(u"IDS_VERSION_INCOMPATIBLE"));
}

int32_t ncUpgradeMgr::ReadOrRecordVersion(ncConfigDBInfo& config, int32_t primaryVersion) {
  if (config.GetDBMgr()->IsTableExists(u"tb_version")) return config.GetVersionNum();
  return config.UpdateVersionNum(primaryVersion);
}

void ncUpgradeMgr::MoveJournal(const String& fromDir, const String& toDir, const char16_t* name) {
  const String from = base::Path::combine(fromDir, name);
  const String to = base::Path::combine(toDir, name);
  if (!base::File::exists(from) || base::File::exists(to)) return;
  // Committed pages may still sit in the write-ahead log beside the file: fold them in
  // first, so the copy is the whole database. A file SQLite cannot read moves as it is.
  try {
    nsCOMPtr<ncDBMgr> db(NC_NEW(ncDBMgr));
    db->Open(from);
    db->ExecuteSql(u"PRAGMA wal_checkpoint(TRUNCATE);");
    db->Close();
  } catch (const base::Exception&) {
  }
  if (!platform::CopyFile(from, to, true)) throw BASE_SYSTEM_ERROR(platform::GetLastError(), from);
  base::File::remove(from);
  for (const char16_t* companion : {u"-wal", u"-shm"})
    if (base::File::exists(from + companion)) base::File::remove(from + companion);
}

void ncUpgradeMgr::Init(const String& primaryPath, const String& secondaryPath,
                        const std::vector<String>& localSyncPaths, int targetViewVer) {
  NC_TRACE(u"this: 0x%p", this);
  targetViewVer_ = targetViewVer;
  primaryConfig_.reset(new ncConfigDBInfo);
  const bool primaryExisted = primaryConfig_->Init(primaryPath, false);
  int32_t version, viewVersion;
  bool primaryIsNew = false;
  if (primaryConfig_->GetDBMgr()->IsTableExists(u"tb_version")) {
    version = primaryConfig_->GetVersionNum();
    viewVersion = primaryConfig_->GetDBMgr()->IsTableExists(u"tb_viewver") ? primaryConfig_->GetViewVer()
                                                                           : primaryConfig_->UpdateViewVer(1);
  } else {
    version = primaryConfig_->UpdateVersionNum(NC_SCHEMA_VERSION_CURRENT);
    viewVersion = primaryConfig_->UpdateViewVer(targetViewVer);
    primaryIsNew = true;
  }
  needData_ = version < 7;
  summary_ = ncUpgradeSummary();
  summary_.total = (NC_SCHEMA_VERSION_CURRENT - version) + (viewVersion != targetViewVer ? 1 : 0);
  CheckVersion(*primaryConfig_, version);

  const int32_t inherited = primaryIsNew ? NC_SCHEMA_VERSION_CURRENT : version;
  secondaryConfig_.reset(new ncConfigDBInfo);
  secondaryConfig_->Init(secondaryPath, false);
  const bool secondaryKnown = secondaryConfig_->GetDBMgr()->IsTableExists(u"tb_version");
  const int32_t secondaryVersion = ReadOrRecordVersion(*secondaryConfig_, inherited);
  if (!secondaryKnown && primaryExisted) {
    MoveJournal(primaryConfig_->GetDBPath(), secondaryConfig_->GetDBPath(), u"log.db");
    MoveJournal(primaryConfig_->GetDBPath(), secondaryConfig_->GetDBPath(), u"msg.db");
  }
  summary_.total += NC_SCHEMA_VERSION_CURRENT - secondaryVersion;
  CheckVersion(*secondaryConfig_, secondaryVersion);

  localSyncConfigs_.clear();
  for (const String& path : localSyncPaths) {
    std::unique_ptr<ncConfigDBInfo> config(new ncConfigDBInfo);
    config->Init(path, true);
    summary_.total += NC_SCHEMA_VERSION_CURRENT - ReadOrRecordVersion(*config, inherited);
    localSyncConfigs_.push_back(std::move(config));
  }
}

void ncUpgradeMgr::Close() {
  NC_TRACE(u"this: 0x%p", this);
  join();
  if (primaryConfig_) primaryConfig_->Close();
  if (secondaryConfig_) secondaryConfig_->Close();
  for (auto& config : localSyncConfigs_) config->Close();
}

bool ncUpgradeMgr::NeedUpgrade() {
  NC_TRACE(u"this: 0x%p", this);
  return summary_.total > 0.0;
}

bool ncUpgradeMgr::NeedData() {
  NC_TRACE(u"this: 0x%p", this);
  return needData_;
}

void ncUpgradeMgr::SetData(const ncUpgradeData& data) {
  NC_TRACE(u"this: 0x%p", this);
  data_ = data;
}

void ncUpgradeMgr::SetViews(const std::vector<ncUpgradeView>& views) {
  NC_TRACE(u"this: 0x%p", this);
  views_ = views;
}

void ncUpgradeMgr::DoUpgrade() {
  NC_TRACE(u"this: 0x%p", this);
  join();
  // A client polling right after a failed run must not read that run's outcome as this one's.
  SetOutcome(1, String());
  start();
}

void ncUpgradeMgr::GetSummary(ncUpgradeSummary& summary) {
  NC_TRACE(u"this: 0x%p", this);
  std::lock_guard<std::mutex> guard(summaryLock_);
  summary = summary_;
}

void ncUpgradeMgr::SetOutcome(int state, const String& message) {
  std::lock_guard<std::mutex> guard(summaryLock_);
  summary_.state = state;
  summary_.message = message;
}

ncUpgradeContext ncUpgradeMgr::ContextOf(ncConfigDBInfo& config) {
  ncUpgradeContext context;
  context.config = &config;
  context.summary = &summary_;
  context.summaryLock = &summaryLock_;
  context.data = &data_;
  context.views = &views_;
  return context;
}

// One step at a time, each version recorded as soon as its step is done, so that a run
// that stops resumes at the first step not recorded.
void ncUpgradeMgr::RunChain(ncConfigDBInfo& config) {
  for (int32_t version = config.GetVersionNum(); version < NC_SCHEMA_VERSION_CURRENT;) {
    nsCOMPtr<ncIVerUpgrader> step(GetUpgrader(version, ContextOf(config)));
    if (!step) return;
    step->Upgrade();
    version = config.UpdateVersionNum(version + 1);
  }
}

// Any pair of layouts but 1 and 2 has no step and keeps its version.
void ncUpgradeMgr::RunViewStep() {
  const int32_t viewVersion = primaryConfig_->GetViewVer();
  if (viewVersion == targetViewVer_) return;
  nsCOMPtr<ncIVerUpgrader> step(GetViewUpgrader(viewVersion, targetViewVer_, ContextOf(*primaryConfig_)));
  if (!step) return;
  step->Upgrade();
  primaryConfig_->UpdateViewVer(targetViewVer_);
}

void ncUpgradeMgr::run() {
  NC_TRACE(u"this: 0x%p, -begin", this);
  NC_TRACE(u"ncUpgradeMgr::run () TID:%d", base::Thread::currentId());
  SetOutcome(1, String());
  try {
    if (secondaryConfig_) RunChain(*secondaryConfig_);
    for (auto& config : localSyncConfigs_) RunChain(*config);
    if (primaryConfig_) {
      RunChain(*primaryConfig_);
      RunViewStep();
    }
    SetOutcome(2, String());
  } catch (const base::Exception& e) {
    base::SystemLog::log(2, base::Format(u"ncUpgradeMgr::run %s:%d %s", e.getFile(), e.getLine(), e.getMessage()));
    SetOutcome(3, e.getMessage());
  } catch (...) {
    base::SystemLog::log(2, base::Format(u"ncUpgradeMgr::run %s:%d Error: unknown.", base::FromUtf8(__FILE__),
                                         __LINE__));
    SetOutcome(3, u"Error: unknown.");
  }
  NC_TRACE(u"this: 0x%p, -end", this);
}
