// The file manager of one sync root, over that root's path manager.
#pragma once

#include "docmgr/ncDocMgrDefs.h"
#include "docmgr/ncIFileMgr.h"
#include "docmgr/ncIPathMgr.h"
#include "docmgr/nsCOMPtr.h"

class ncFileMgr : public ncIFileMgr {
  NC_DECL_ISUPPORTS
 public:
  // pathMgr must not be null.
  explicit ncFileMgr(ncIPathMgr* pathMgr);

  void MoveNoADS(const base::String& srcPath, const base::String& newPath, const base::String& docId) override;
  void Move(const base::String& srcPath, base::String& newPath) override;
  void Copy(const base::String& srcPath, base::String& newPath, bool failIfExists) override;
  void Rename(const base::String& oldPath, const base::String& newPath) override;
  void Delete(const base::String& path) override;
  void InternalCreate(const base::String& path, bool isDir) override;
  void InternalRename(const base::String& oldPath, const base::String& newPath, const base::String& docId) override;
  void InternalDelete(const base::String& path, const base::String& docId) override;
  base::String CreateDupDoc(const base::String& path, const base::String& docId) override;
  void CustomizeFolder(const base::String& path, int docType, const base::String& typeName) override;
  void CustomizeVrFolder(const base::String& path, int docType) override;

 protected:
  virtual ~ncFileMgr();

 private:
  // Clears the temporary name for an operation on source. A temporary name whose source
  // has gone is what an interrupted operation left: it holds the item and stays.
  void ClearTempPath(const base::String& source, const base::String& tmp);
  // Renames path to its temporary working name for docId (cleared first) and returns that
  // name. Renames, deletes and moves step through it, so an interrupted one leaves the item
  // under that name.
  base::String RenameToTempPath(const base::String& path, const base::String& docId);
  static void EnsureParentFolder(const base::String& path);
  static void RemoveStreams(const base::String& path, const char16_t* const* streams, size_t count);
  // The icon file of the folder customisation.
  static base::String IconFile();

  nsCOMPtr<ncIPathMgr> pathMgr_;
};
