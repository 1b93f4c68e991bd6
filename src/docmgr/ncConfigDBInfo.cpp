#include "docmgr/ncConfigDBInfo.h"

#include "docmgr/ncDBTransaction.h"
#include "docmgr/ncModuleAllocator.h"
#include "docmgr/ncQueryResult.h"

using base::String;

namespace {

const char16_t kVersionTable[] = u"tb_version";
const char16_t kViewVersionTable[] = u"tb_viewver";

}  // namespace

ncConfigDBInfo::ncConfigDBInfo() : pathMgr_(NC_NEW(ncPathMgr)), dbMgr_(NC_NEW(ncDBMgr)) {
  NC_TRACE(u"this: 0x%p", this);
}

ncConfigDBInfo::~ncConfigDBInfo() { NC_TRACE(u"this: 0x%p", this); }

bool ncConfigDBInfo::Init(const String& path, bool isLocalSync) {
  NC_TRACE(u"path: %s", path);
  NC_CHECK_PATH(path);
  pathMgr_->Init(path, isLocalSync);
  dbPath_ = pathMgr_->GetDBPath();
  const bool existed = pathMgr_->CreateDBPath();
  dbMgr_->Open(base::Path::combine(dbPath_, u"config.db"));
  dbMgr_->ProtectSchema();
  return existed;
}

void ncConfigDBInfo::Close() {
  NC_TRACE(u"this: 0x%p", this);
  if (dbMgr_) dbMgr_->Close();
}

int32_t ncConfigDBInfo::GetVersionNum() {
  NC_TRACE(u"this: 0x%p", this);
  if (versionNum_ == 0) versionNum_ = ReadVersion(kVersionTable);
  return versionNum_;
}

int32_t ncConfigDBInfo::UpdateVersionNum(int32_t newVerNum) {
  NC_TRACE(u"newVerNum: %d", newVerNum);
  WriteVersion(kVersionTable, newVerNum);
  return versionNum_ = newVerNum;
}

int32_t ncConfigDBInfo::GetViewVer() {
  NC_TRACE(u"this: 0x%p", this);
  if (viewVerNum_ == 0) viewVerNum_ = ReadVersion(kViewVersionTable);
  return viewVerNum_;
}

int32_t ncConfigDBInfo::UpdateViewVer(int32_t newVerNum) {
  NC_TRACE(u"newVerNum: %d", newVerNum);
  WriteVersion(kViewVersionTable, newVerNum);
  return viewVerNum_ = newVerNum;
}

int32_t ncConfigDBInfo::ReadVersion(const char16_t* table) {
  // A missing table reads as no rows.
  ncQueryResult versions(dbMgr_->IsTableExists(table) ? dbMgr_.get() : nullptr,
                         base::Format(u"select versionId from %s", table));
  if (versions.rows() == 0) NC_THROW(NC_ERR_DATABASE, u"Failed to get versionId from %s.", table);
  return versions.int32(versions.rows() - 1, 0);
}

void ncConfigDBInfo::WriteVersion(const char16_t* table, int32_t version) {
  {
    ncDBMgr::SchemaChange firstWrite(*dbMgr_);
    dbMgr_->ExecuteSql(base::Format(u"create table if not exists %s (versionId int PRIMARY KEY)", table));
  }
  // The one row is replaced in one transaction: an interruption between the two statements
  // must not leave the store without a version.
  ncDBTransaction replace(*dbMgr_);
  dbMgr_->ExecuteSql(base::Format(u"delete from %s", table));
  dbMgr_->ExecuteSql(base::Format(u"insert into %s values('%d')", table, version));
  replace.Commit();
}
