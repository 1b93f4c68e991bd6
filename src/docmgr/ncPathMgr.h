// The path manager of one sync root (main or local sync root).
#pragma once

#include "docmgr/ncDocMgrDefs.h"
#include "docmgr/ncIPathMgr.h"

class ncPathMgr : public ncIPathMgr {
  NC_DECL_ISUPPORTS
 public:
  ncPathMgr();

  // Not part of the interface: the document manager calls it right after creation.
  void Init(const base::String& path, bool isLocalSync);

  base::String GetRootPath() override;
  void SetUserName(const base::String& name) override;
  bool IsInRootPath(const base::String& path, bool includeSelf) override;
  base::String GetDBPath() override;
  bool IsInDBPath(const base::String& path, bool includeSelf) override;
  base::String GetUnsyncDocPath() override;
  bool IsInUnsyncDoc(const base::String& path, bool includeSelf) override;
  base::String GetAbsolutePath(const base::String& relPath) override;
  base::String GetRelativePath(const base::String& path) override;

  bool IsTempPath(const base::String& path) override;
  base::String GetBackupPathContainDocId(const base::String& path, const base::String& docId) override;
  bool IsBackupPath(const base::String& path) override;
  base::String GetCopyPath(const base::String& path) override;
  bool IsCopyPath(const base::String& path) override;
  base::String GetTransferUnsyncPath(const base::String& path) override;
  bool IsTransferUnsyncPath(const base::String& path) override;
  base::String GetConflictPath(const base::String& path) override;
  bool IsConflictPath(const base::String& path) override;
  bool IsIgnorePath(const base::String& path) override;
  bool IsCadTempPath(const base::String& path) override;
  bool IsTooLongPath(const base::String& path) override;
  bool IsSiblingPath(const base::String& path1, const base::String& path2) override;
  bool IsSysHoldPath(const base::String& path) override;
  bool IsSystemHiddenPath(const base::String& path) override;
  base::String GetContainDocIdTempPathName(const base::String& path, const base::String& docId) override;
  base::String GetGuidTempPathName(const base::String& path) override;

  // Creates the data directory, hidden, unless it exists; true when it existed.
  bool CreateDBPath();
  bool IsDriveRoot() const { return isDriveRoot_; }
  const base::String& GetUserName() const { return userName_; }

 protected:
  virtual ~ncPathMgr();

 private:
  bool isLocalSync_ = false;
  bool isDriveRoot_ = false;
  base::String rootPath_;
  base::String parentPath_;
  base::String dbPath_;
  base::String unsyncDocPath_;
  base::String userName_;
};
