// The path manager of one sync root (main or local sync root).
#pragma once

#include "docmgr/ncDocMgrDefs.h"
#include "docmgr/ncIPathMgr.h"

class ncPathMgr : public ncIPathMgr {
  NC_DECL_ISUPPORTS
 public:
  ncPathMgr();

  // Not part of the interface: the document manager calls it right after creation.
  void Init(const String& path, bool isLocalSync);

  String GetRootPath() override;
  void SetUserName(const String& name) override;
  bool IsInRootPath(const String& path, bool includeSelf) override;
  String GetDBPath() override;
  bool IsInDBPath(const String& path, bool includeSelf) override;
  String GetUnsyncDocPath() override;
  bool IsInUnsyncDoc(const String& path, bool includeSelf) override;
  String GetAbsolutePath(const String& relPath) override;
  String GetRelativePath(const String& path) override;

  bool IsTempPath(const String& path) override;
  String GetBackupPathContainDocId(const String& path, const String& docId) override;
  bool IsBackupPath(const String& path) override;
  String GetCopyPath(const String& path) override;
  bool IsCopyPath(const String& path) override;
  String GetTransferUnsyncPath(const String& path) override;
  bool IsTransferUnsyncPath(const String& path) override;
  String GetConflictPath(const String& path) override;
  bool IsConflictPath(const String& path) override;
  bool IsIgnorePath(const String& path) override;
  bool IsCadTempPath(const String& path) override;
  bool IsTooLongPath(const String& path) override;
  bool IsSiblingPath(const String& path1, const String& path2) override;
  bool IsSysHoldPath(const String& path) override;
  bool IsSystemHiddenPath(const String& path) override;
  String GetContainDocIdTempPathName(const String& path, const String& docId) override;
  String GetGuidTempPathName(const String& path) override;

  // Creates the data directory, hidden, unless it exists; true when it existed.
  bool CreateDBPath();
  bool IsDriveRoot() const { return isDriveRoot_; }
  const String& GetUserName() const { return userName_; }

 protected:
  virtual ~ncPathMgr();

 private:
  bool isLocalSync_ = false;
  bool isDriveRoot_ = false;
  String rootPath_;
  String parentPath_;
  String dbPath_;
  String unsyncDocPath_;
  String userName_;
};
