// The document cache of one sync root over tb_cacheInfo in cache.db (see ncICacheMgr).
#pragma once

#include "docmgr/ncDBMgr.h"
#include "docmgr/ncDocMgrDefs.h"
#include "docmgr/ncICacheBulkWriter.h"
#include "docmgr/ncICacheMgr.h"
#include "docmgr/ncIStoreBatch.h"
#include "docmgr/nsCOMPtr.h"

class ncCacheMgr : public ncICacheMgr, public ncIStoreBatch, public ncICacheBulkWriter {
  NC_DECL_ISUPPORTS
 public:
  ncCacheMgr();

  // Called by the document manager: opens the database file at path (the full path of
  // cache.db) and creates the table and its indexes when missing.
  void Init(const base::String& path, bool viewMode);
  void Close();

  // What a row written by Update derives from its values: the initials of its name and the
  // node name of its parent document.
  static base::String AcronymOf(const base::String& name);
  static base::String ParentIdOf(const base::String& id, int32_t type);

  void Update(const base::String& relPath, const ncCacheInfo& info) override;
  void Rename(const base::String& relPath, const base::String& newRelPath) override;
  void Delete(const base::String& relPath, bool onlyChild) override;
  void UpdateOtag(const base::String& relPath, const base::String& otag) override;
  void UpdateOtagNoView(const base::String& relPath, const base::String& otag) override;
  void UpdateAttr(const base::String& relPath, int32_t attr) override;
  void UpdateWatermark(const base::String& relPath, bool downloadWatermark) override;
  void UpdateState(const base::String& relPath, int32_t state) override;
  void UpdateExectask(const base::String& relPath, int32_t execTask) override;
  void UpdateTypeName(const base::String& relPath, const base::String& typeName) override;
  bool GetInfoByPath(const base::String& relPath, ncCacheInfo& info) override;
  bool GetInfoByDocId(const base::String& docId, ncCacheDocInfo& info) override;
  bool GetLegalInfoByPath(const base::String& relPath, ncCacheInfo& info) override;
  void GetViewNames(std::vector<base::String>& names) override;
  bool HasInfoByView(const base::String& viewName) override;
  bool GetViewRelPathByRelPath(const base::String& relPath, base::String& viewName, base::String& viewRelPath) override;
  void GetScanSubInfos(const base::String& relPath, std::map<base::String, ncCacheScanInfo>& children) override;
  void GetDetectSubInfos(const base::String& relPath, const base::String& docId, std::map<base::String, ncCacheDocInfo>& children,
                         std::map<base::String, base::String>& topPaths) override;
  void GetNoDelayFileInfos(std::vector<ncCacheFileInfo>& files) override;
  void Unlock(const base::String& relPath) override;
  void Search(const base::String& key, const base::String& prefix, const base::String& suffix, std::vector<ncCacheSearchInfo>& hits,
              uint32_t maxNum) override;
  void Unsync_UpdateAllState(int32_t state) override;
  void Unsync_UpdateAllExecTask(int32_t execTask) override;
  bool Unsync_IsPathUnsync(const base::String& relPath, bool withAncestors) override;
  bool Unsync_GetInfo(const base::String& relPath, ncCacheUnsyncInfo& info) override;
  void Unsync_GetUnexecInfoVec(const base::String& path, std::vector<ncCacheUnexecInfo>& infos, uint32_t limit) override;
  int64_t Unsync_CountUnexec(const base::String& path) override;
  int64_t GetCountByStates(const std::vector<int32_t>& states) override;
  void GetCacheSubInfos(const base::String& relPath, std::vector<ncCacheDocInfo>& infos) override;

  // Runs one search statement and appends its hits until maxNum are held. A row with the
  // name and parent path of a hit already held is skipped, and so is every later row of the
  // same statement: the statements are ordered by match strength and bounded with room for
  // duplicates, so the rest of a statement that repeats earlier hits is not worth showing.
  void SearchInfo(bool byAcronym, bool contiguous, const base::String& sql, const base::String& key, const base::String& prefix,
                  const base::String& suffix, std::vector<ncCacheSearchInfo>& hits, uint32_t maxNum);

  // Splits a relative path (trimmed of "\") at its last "\".
  static void SplitPath(const base::String& relPath, base::String& name, base::String& parentPath);
  // The statement Update runs for the row at (name, parentPath).
  static base::String UpdateStatement(const base::String& name, const base::String& parentPath, const ncCacheInfo& info);

  // The cache's database connection.
  ncDBMgr* GetDBMgr() const { return db_.get(); }

  // ncIStoreBatch: one transaction on this store's connection.
  void BeginBatch() override;
  void CommitBatch() override;
  void RollbackBatch() override;

  // ncICacheBulkWriter: Update's row through a kept statement with bound values.
  void UpdateBulk(const base::String& relPath, const ncCacheInfo& info) override;

 protected:
  virtual ~ncCacheMgr();

 private:
  // The tables and indexes of a new cache; all that a protected connection may not do.
  void CreateSchema();
  // The path without its view folder in view mode (everything after the first "\").
  base::String WithoutView(const base::String& relPath) const;
  // The view step, the path check and the split shared by the update operations.
  base::String WorkingPath(const base::String& relPath, base::String& name, base::String& parentPath) const;
  void UpdateOtagOf(const base::String& workingPath, const base::String& otag);
  void UpdateColumn(const char16_t* format, const base::String& relPath, int32_t value);
  bool ReadInfo(const base::String& sql, ncCacheInfo& info);
  bool IsUnsyncRow(const base::String& name, const base::String& parentPath);

  nsCOMPtr<ncDBMgr> db_;
  bool viewMode_ = false;
};
