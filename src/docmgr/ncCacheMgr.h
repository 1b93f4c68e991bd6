// The document cache of one sync root over tb_cacheInfo in cache.db (see ncICacheMgr).
#pragma once

#include "docmgr/ncDBMgr.h"
#include "docmgr/ncDocMgrDefs.h"
#include "docmgr/ncICacheMgr.h"
#include "docmgr/ncIStoreBatch.h"
#include "docmgr/nsCOMPtr.h"

class ncCacheMgr : public ncICacheMgr, public ncIStoreBatch {
  NC_DECL_ISUPPORTS
 public:
  ncCacheMgr();

  // Called by the document manager: opens the database file at path (the full path of
  // cache.db) and creates the table and its indexes when missing.
  void Init(const String& path, bool viewMode);
  void Close();

  // What a row written by Update derives from its values: the initials of its name and the
  // node name of its parent document.
  static String AcronymOf(const String& name);
  static String ParentIdOf(const String& id, int32_t type);

  void Update(const String& relPath, const ncCacheInfo& info) override;
  void Rename(const String& relPath, const String& newRelPath) override;
  void Delete(const String& relPath, bool onlyChild) override;
  void UpdateOtag(const String& relPath, const String& otag) override;
  void UpdateOtagNoView(const String& relPath, const String& otag) override;
  void UpdateAttr(const String& relPath, int32_t attr) override;
  void UpdateWatermark(const String& relPath, bool downloadWatermark) override;
  void UpdateState(const String& relPath, int32_t state) override;
  void UpdateExectask(const String& relPath, int32_t execTask) override;
  void UpdateTypeName(const String& relPath, const String& typeName) override;
  bool GetInfoByPath(const String& relPath, ncCacheInfo& info) override;
  bool GetInfoByDocId(const String& docId, ncCacheDocInfo& info) override;
  bool GetLegalInfoByPath(const String& relPath, ncCacheInfo& info) override;
  void GetViewNames(std::vector<String>& names) override;
  bool HasInfoByView(const String& viewName) override;
  bool GetViewRelPathByRelPath(const String& relPath, String& viewName, String& viewRelPath) override;
  void GetScanSubInfos(const String& relPath, std::map<String, ncCacheScanInfo>& children) override;
  void GetDetectSubInfos(const String& relPath, const String& docId, std::map<String, ncCacheDocInfo>& children,
                         std::map<String, String>& topPaths) override;
  void GetNoDelayFileInfos(std::vector<ncCacheFileInfo>& files) override;
  void Unlock(const String& relPath) override;
  void Search(const String& key, const String& prefix, const String& suffix, std::vector<ncCacheSearchInfo>& hits,
              uint32_t maxNum) override;
  void Unsync_UpdateAllState(int32_t state) override;
  void Unsync_UpdateAllExecTask(int32_t execTask) override;
  bool Unsync_IsPathUnsync(const String& relPath, bool withAncestors) override;
  bool Unsync_GetInfo(const String& relPath, ncCacheUnsyncInfo& info) override;
  void Unsync_GetUnexecInfoVec(const String& path, std::vector<ncCacheUnexecInfo>& infos, uint32_t limit) override;
  int64_t Unsync_CountUnexec(const String& path) override;
  int64_t GetCountByStates(const std::vector<int32_t>& states) override;
  void GetCacheSubInfos(const String& relPath, std::vector<ncCacheDocInfo>& infos) override;

  // Runs one search statement and appends its hits until maxNum are held. A row with the
  // name and parent path of a hit already held is skipped, and so is every later row of the
  // same statement: the statements are ordered by match strength and bounded with room for
  // duplicates, so the rest of a statement that repeats earlier hits is not worth showing.
  void SearchInfo(bool byAcronym, bool contiguous, const String& sql, const String& key, const String& prefix,
                  const String& suffix, std::vector<ncCacheSearchInfo>& hits, uint32_t maxNum);

  // Splits a relative path (trimmed of "\") at its last "\".
  static void SplitPath(const String& relPath, String& name, String& parentPath);
  // The statement Update runs for the row at (name, parentPath).
  static String UpdateStatement(const String& name, const String& parentPath, const ncCacheInfo& info);

  // The cache's database connection.
  ncDBMgr* GetDBMgr() const { return db_.get(); }

  // ncIStoreBatch: one transaction on this store's connection.
  void BeginBatch() override;
  void CommitBatch() override;
  void RollbackBatch() override;

 protected:
  virtual ~ncCacheMgr();

 private:
  // The tables and indexes of a new cache; all that a protected connection may not do.
  void CreateSchema();
  // The path without its view folder in view mode (everything after the first "\").
  String WithoutView(const String& relPath) const;
  // The view step, the path check and the split shared by the update operations.
  String WorkingPath(const String& relPath, String& name, String& parentPath) const;
  void UpdateOtagOf(const String& workingPath, const String& otag);
  void UpdateColumn(const char16_t* format, const String& relPath, int32_t value);
  bool ReadInfo(const String& sql, ncCacheInfo& info);
  bool IsUnsyncRow(const String& name, const String& parentPath);

  nsCOMPtr<ncDBMgr> db_;
  bool viewMode_ = false;
};
