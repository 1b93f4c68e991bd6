// The local file-system changes the sync engine asks for inside a sync root: move, copy,
// rename, create, delete, setting aside an unsynchronised duplicate, and the shell
// customisation of the top folders. Operations through a temporary name never lose the
// item: a failure leaves it at its old name, at the temporary name or at its new name.
//
// Ownership: owned by the document manager, one per sync root, over that root's path
// manager; the pointer from ncIDocMgr::GetFileMgr carries a reference the caller releases.
// Thread safety: no state of its own; any thread. Concurrent operations on the same paths
// race only in the file system.
#pragma once

#include "docmgr/String.h"
#include "docmgr/nsISupports.h"

class ncIFileMgr : public nsISupports {
 public:
  NS_DECLARE_STATIC_IID_ACCESSOR({0x824AFBA2, 0x8A6E, 0x4614, {0xB1, 0xC0, 0xC9, 0x41, 0xA9, 0x4D, 0xA1, 0x07}})

  // Moves a file or folder through a temporary name and strips its tags on the way.
  virtual void MoveNoADS(const base::String& srcPath, const base::String& newPath, const base::String& docId) = 0;
  // Never overwrites: on a name clash the item gets "name (2).ext", "name (3).ext", ... and
  // newPath is updated to the name used. A vanished source is quiet.
  virtual void Move(const base::String& srcPath, base::String& newPath) = 0;
  // Copies a file; with failIfExists a clash gives a numbered name, without it the target
  // is replaced.
  virtual void Copy(const base::String& srcPath, base::String& newPath, bool failIfExists) = 0;
  // A plain rename: no folder is created, no numbering; fails when newPath exists.
  virtual void Rename(const base::String& oldPath, const base::String& newPath) = 0;
  // Deletes a file or a folder tree for good, read-only content included.
  virtual void Delete(const base::String& path) = 0;
  virtual void InternalCreate(const base::String& path, bool isDir) = 0;
  virtual void InternalRename(const base::String& oldPath, const base::String& newPath,
                              const base::String& docId) = 0;
  virtual void InternalDelete(const base::String& path, const base::String& docId) = 0;
  // Sets an item aside into the unsynchronised-documents folder, repeating its place under
  // the sync root there; returns where it went.
  virtual base::String CreateDupDoc(const base::String& path, const base::String& docId) = 0;
  // Icon and display text of a top folder by its kind (bit set docType).
  virtual void CustomizeFolder(const base::String& path, int docType, const base::String& typeName) = 0;
  // Icon only, for the folders of a view.
  virtual void CustomizeVrFolder(const base::String& path, int docType) = 0;

 protected:
  ~ncIFileMgr() = default;
};
