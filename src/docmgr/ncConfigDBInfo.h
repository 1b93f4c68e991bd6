// config.db of a sync root's data directory: the schema version of the root's databases
// ("tb_version") and the layout version of the top-level view folders ("tb_viewver").
#pragma once

#include "docmgr/ncDBMgr.h"
#include "docmgr/ncPathMgr.h"
#include "docmgr/nsCOMPtr.h"

class ncConfigDBInfo {
 public:
  ncConfigDBInfo();
  ~ncConfigDBInfo();
  ncConfigDBInfo(const ncConfigDBInfo&) = delete;
  ncConfigDBInfo& operator=(const ncConfigDBInfo&) = delete;

  // Opens config.db in the data directory of path, creating the directory hidden when it
  // is missing. Returns whether the directory existed before.
  bool Init(const base::String& path, bool isLocalSync);
  void Close();

  // Throws code 1 "Failed to get versionId from %s." when no version is stored.
  int32_t GetVersionNum();
  int32_t UpdateVersionNum(int32_t newVerNum);
  int32_t GetViewVer();
  int32_t UpdateViewVer(int32_t newVerNum);

  const base::String& GetDBPath() const { return dbPath_; }
  ncDBMgr* GetDBMgr() const { return dbMgr_.get(); }
  ncPathMgr* GetPathMgr() const { return pathMgr_.get(); }

 private:
  int32_t ReadVersion(const char16_t* table);
  void WriteVersion(const char16_t* table, int32_t version);

  nsCOMPtr<ncPathMgr> pathMgr_;
  nsCOMPtr<ncDBMgr> dbMgr_;
  int32_t versionNum_ = 0;
  int32_t viewVerNum_ = 0;
  base::String dbPath_;
};
