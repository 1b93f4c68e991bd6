// One sync root: its hidden data directory, its folder of unsynchronised documents, and
// the conversion between absolute paths ("/") and the relative paths ("\") the stores key
// their records by.
//
// Ownership: owned by the document manager, one per sync root; the pointer from
// ncIDocMgr::GetPathMgr carries a reference the caller releases.
// Thread safety: read-only once the document manager has set it up; any thread.
#pragma once

#include "docmgr/String.h"
#include "docmgr/nsISupports.h"

// The name of a sync root's hidden data directory, which holds its databases. A plain
// literal, so that it serves as UTF-8 ("/" NC_DATA_DIRECTORY_NAME) and as UTF-16
// (u"" NC_DATA_DIRECTORY_NAME) alike.
#define NC_DATA_DIRECTORY_NAME ".kestrove.cache"

class ncIPathMgr : public nsISupports {
 public:
  NS_DECLARE_STATIC_IID_ACCESSOR({0x05761C84, 0x5BBD, 0x47EA, {0x93, 0xCB, 0x00, 0xCA, 0x5E, 0xF1, 0x2F, 0xE1}})

  virtual base::String GetRootPath() = 0;
  virtual void SetUserName(const base::String& name) = 0;
  virtual bool IsInRootPath(const base::String& path, bool includeSelf) = 0;
  // The root joined with NC_DATA_DIRECTORY_NAME.
  virtual base::String GetDBPath() = 0;
  virtual bool IsInDBPath(const base::String& path, bool includeSelf) = 0;
  virtual base::String GetUnsyncDocPath() = 0;
  virtual bool IsInUnsyncDoc(const base::String& path, bool includeSelf) = 0;
  // Relative paths of a local sync root begin with the root folder's own name.
  virtual base::String GetAbsolutePath(const base::String& relPath) = 0;
  // Throws code 2 with the "IDS_NOT_IN_ROOT_PATH" text for a path outside the root.
  virtual base::String GetRelativePath(const base::String& path) = 0;

  // Working names: each lives in the folder of its source, begins with "." and ends with
  // one of the hidden suffixes, so that no user file is taken for one.
  // A temporary name (".kestrove.temp"), also one of GetContainDocIdTempPathName and
  // GetGuidTempPathName.
  virtual bool IsTempPath(const base::String& path) = 0;
  virtual base::String GetBackupPathContainDocId(const base::String& path, const base::String& docId) = 0;
  virtual bool IsBackupPath(const base::String& path) = 0;
  virtual base::String GetCopyPath(const base::String& path) = 0;
  virtual bool IsCopyPath(const base::String& path) = 0;
  virtual base::String GetTransferUnsyncPath(const base::String& path) = 0;
  virtual bool IsTransferUnsyncPath(const base::String& path) = 0;
  // Carries the user name and the local time of day.
  virtual base::String GetConflictPath(const base::String& path) = 0;
  virtual bool IsConflictPath(const base::String& path) = 0;
  // True when the path must never be synchronised: editor, download and CAD temporaries,
  // the component's backups, folder customisation files, and names the file system of the
  // server cannot take.
  virtual bool IsIgnorePath(const base::String& path) = 0;
  virtual bool IsCadTempPath(const base::String& path) = 0;
  virtual bool IsTooLongPath(const base::String& path) = 0;
  // True when the two paths name different entries of the same folder.
  virtual bool IsSiblingPath(const base::String& path1, const base::String& path2) = 0;
  // Entries that the system holds at the root of a drive or mounted file system.
  virtual bool IsSysHoldPath(const base::String& path) = 0;
  // True when the item carries both the hidden and the system attribute.
  virtual bool IsSystemHiddenPath(const base::String& path) = 0;
  virtual base::String GetContainDocIdTempPathName(const base::String& path, const base::String& docId) = 0;
  // A fresh temporary name beside path, unique through a new GUID.
  virtual base::String GetGuidTempPathName(const base::String& path) = 0;

 protected:
  ~ncIPathMgr() = default;
};
