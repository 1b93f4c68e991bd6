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

  void MoveNoADS(const String& srcPath, const String& newPath, const String& docId) override;
  void Move(const String& srcPath, String& newPath) override;
  void Copy(const String& srcPath, String& newPath, bool failIfExists) override;
  void Rename(const String& oldPath, const String& newPath) override;
  void Delete(const String& path) override;
  void InternalCreate(const String& path, bool isDir) override;
  void InternalRename(const String& oldPath, const String& newPath, const String& docId) override;
  void InternalDelete(const String& path, const String& docId) override;
  String CreateDupDoc(const String& path, const String& docId) override;
  void CustomizeFolder(const String& path, int docType, const String& typeName) override;
  void CustomizeVrFolder(const String& path, int docType) override;

 protected:
  virtual ~ncFileMgr();

 private:
  // Clears the temporary name for an operation on source. A temporary name whose source
  // has gone is what an interrupted operation left: it holds the item and stays.
  void ClearTempPath(const String& source, const String& tmp);
  // Renames path to its temporary working name for docId (cleared first) and returns that
  // name. Renames, deletes and moves step through it, so an interrupted one leaves the item
  // under that name.
  String RenameToTempPath(const String& path, const String& docId);
  static void EnsureParentFolder(const String& path);
  static void RemoveStreams(const String& path, const char16_t* const* streams, size_t count);
  // The icon file of the folder customisation.
  static String IconFile();

  nsCOMPtr<ncIPathMgr> pathMgr_;
};
