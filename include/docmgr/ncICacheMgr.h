// The document cache of one sync root: one row per synchronised document or folder in
// tb_cacheInfo of the root's cache.db, keyed by its local place (name, parentPath) and by
// its server document id. Every call runs fresh SQL; nothing is kept in memory.
//
// Paths. relPath is relative to the sync root with "\" separators and no leading or
// trailing "\". In view mode (the main root of a client that shows the server's views as
// top-level folders) the first component of relPath is the view folder: it is dropped
// before the path is used and the view is kept in the viewName column instead. The
// update operations and the lookups throw code 2 "Path (%s) is INVALID." when nothing
// valid is left of the path.
//
// Matching. Names and parent paths are compared exactly (case kept), except by
// GetLegalInfoByPath. The subtree of a folder P is every row whose parentPath is P or begins
// with P followed by "\"; the second half is a LIKE pattern in which "%" and "_" in P act as
// wildcards and ASCII letter case is ignored, so a subtree operation on a\b_c also reaches
// the rows inside the sub-folders of a\bxc and of A\B_C. Folder names holding these
// characters are rare enough that the sync engine accepts this.
//
// Failures are thrown as base::Exception with the provider "docmgr": code 2 for an invalid
// argument, code 1 for a database failure. Lookups that find nothing return false and leave
// their outputs unchanged.
//
// Ownership: one cache manager per sync root, owned by the document manager; the pointer
// from ncIDocMgr::GetCacheMgr carries a reference the caller releases.
// Thread safety: any thread. The store's one connection runs one statement at a time; a
// statement waits while another thread holds a transaction on it (Rename, a batch of
// ncIStoreBatch). Results are built fresh for every call and belong to the caller.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "docmgr/String.h"
#include "docmgr/nsISupports.h"

// States of a row that this component interprets; other values are the sync engine's.
enum ncCacheState : int32_t {
  NC_CACHE_STATE_NORMAL = 0,  // synchronised; the file's content is on the local disk
  NC_CACHE_STATE_DELAY = 1,   // known from the server, content not downloaded yet (treated
                              // like a folder when version tags are cleared)
  NC_CACHE_STATE_UNSYNC = 4,  // exists locally and has not reached the server
};

// Bit of ncCacheInfo::attr that Unlock clears.
const int32_t NC_CACHE_ATTR_LOCKED = 2;

// Types from this value on are not ordinary documents: their parent cannot be derived from
// the id, so Update stores an empty parentId for them.
const int32_t NC_CACHE_SPECIAL_TYPE = 0x10000000;

// The record written by Update and read by GetInfoByPath. Name, parent path, initials and
// the parent's node name are derived from the relative path and the id when it is written.
struct ncCacheInfo {
  base::String id;         // server document id ("gns://..."); a local-only item may carry any text
  base::String otag;       // server version tag of the content last synchronised; "" = unknown
  int32_t type = 0;        // server object type
  base::String typeName;   // server type name, shown to the user
  int32_t viewType = 0;    // type of the view the item belongs to
  base::String viewName;   // name of that view
  int32_t isDir = 0;       // 1 folder, 0 file
  int32_t state = 0;       // ncCacheState or a state of the sync engine
  int64_t serverMTime = 0;
  int64_t clientMTime = 0;
  int64_t size = 0;
  int32_t attr = 0;        // bit flags; NC_CACHE_ATTR_LOCKED
  int32_t errcode = 0;     // last error of the sync engine for the item, 0 = none
  int32_t execTask = 0;    // 0 = no task of the engine is working on the item
  int32_t watermark = 0;   // download watermark; written as given, always read back as 0 or 1
};

// A record together with its place in the local tree, as stored (the view folder is not
// part of parentPath; see viewName).
struct ncCacheDocInfo : ncCacheInfo {
  base::String name;
  base::String parentPath;
};

// A child of a folder as the local scan compares it with the file system.
struct ncCacheScanInfo {
  base::String id;
  base::String name;
  bool isDir = false;
  int64_t clientMTime = 0;
  int64_t size = 0;
};

// A search hit.
struct ncCacheSearchInfo {
  bool isDir = false;
  base::String displayName;  // name with the matched part wrapped in the caller's markers
  base::String name;         // name as stored
  base::String parentPath;   // relative to the sync root (with the view folder in view mode)
};

// An unsynchronised item that no task is working on.
struct ncCacheUnexecInfo {
  base::String relPath;  // relative to the sync root (with the view folder in view mode)
  base::String name;
  bool isDir = false;
  int32_t errcode = 0;
  int64_t size = 0;
};

// The bookkeeping of one item as the unsynchronised-documents view shows it.
struct ncCacheUnsyncInfo {
  int32_t state = 0;
  bool isDir = false;
  int32_t errcode = 0;
  int64_t size = 0;
};

// A file whose content is on the local disk.
struct ncCacheFileInfo {
  base::String relPath;  // relative to the sync root (with the view folder in view mode)
  int64_t size = 0;
};

class ncICacheMgr : public nsISupports {
 public:
  NS_DECLARE_STATIC_IID_ACCESSOR({0x09466051, 0x468A, 0x4AD0, {0x8C, 0x5C, 0xED, 0x14, 0x39, 0xFD, 0xA5, 0xC4}})

  // ---- writing --------------------------------------------------------------------------
  // Inserts or replaces the row of relPath; an older row with the same id or the same local
  // place is replaced. info.id and info.otag are written as given: they must not contain "'".
  virtual void Update(const base::String& relPath, const ncCacheInfo& info) = 0;
  // Renames an item inside its folder and moves the parent paths of everything below it,
  // in one transaction. A new path in another folder throws code 2
  // ("IDS_RENAME_NOT_SAME_PARENT"). When a statement fails the rename is rolled back as a
  // whole before the exception reaches the caller; nothing of it stays.
  virtual void Rename(const base::String& relPath, const base::String& newRelPath) = 0;
  // Removes the item (unless onlyChild) and everything below it. In view mode a bare view
  // folder removes every row of that view.
  virtual void Delete(const base::String& relPath, bool onlyChild) = 0;
  // A non-empty otag is written to the item (as given, so it must not contain "'"). An empty
  // otag clears the tag of the item, of every ancestor, and of the folders and delayed items
  // below it, so that the next pass compares them with the server again. A bare view folder
  // changes nothing.
  virtual void UpdateOtag(const base::String& relPath, const base::String& otag) = 0;
  // UpdateOtag with relPath taken as stored, also in view mode.
  virtual void UpdateOtagNoView(const base::String& relPath, const base::String& otag) = 0;
  virtual void UpdateAttr(const base::String& relPath, int32_t attr) = 0;
  virtual void UpdateWatermark(const base::String& relPath, bool downloadWatermark) = 0;
  virtual void UpdateState(const base::String& relPath, int32_t state) = 0;
  virtual void UpdateExectask(const base::String& relPath, int32_t execTask) = 0;
  // Throws code 2 "Argument (typeName) is EMPTY." for an empty typeName. The type name is
  // written as given: it must not contain "'".
  virtual void UpdateTypeName(const base::String& relPath, const base::String& typeName) = 0;

  // ---- lookups and listings ------------------------------------------------------------
  // The record of relPath. "" gives false. In view mode a bare view folder yields only its
  // viewType (and viewName), from any row of that view.
  virtual bool GetInfoByPath(const base::String& relPath, ncCacheInfo& info) = 0;
  // The record of a document id (with its name and parent path). An id without the
  // "gns://" prefix throws code 2 "Gns (%s) is INVALID.".
  virtual bool GetInfoByDocId(const base::String& docId, ncCacheDocInfo& info) = 0;
  // The record of relPath found with the name's letter case ignored, and only when the row
  // is known to the server (its id has the "gns://" prefix); otherwise false and info is
  // left unchanged. A bare view folder gives false.
  virtual bool GetLegalInfoByPath(const base::String& relPath, ncCacheInfo& info) = 0;
  // Appends the distinct view names of the rows.
  virtual void GetViewNames(std::vector<base::String>& names) = 0;
  virtual bool HasInfoByView(const base::String& viewName) = 0;
  // Turns a path in the server's layout (no view folder) into the path below the sync
  // root. Outside view mode, or for "", viewRelPath = relPath and viewName is left alone.
  // In view mode the view of the top-level item named by relPath's first component is
  // looked up (else the view of a top-level object stored below a folder of that name):
  // viewName = that view, viewRelPath = view + "\" + relPath. False when no row names a view
  // (outputs unchanged).
  virtual bool GetViewRelPathByRelPath(const base::String& relPath, base::String& viewName,
                                       base::String& viewRelPath) = 0;
  // The children of a folder, as the local scan needs them: cleared, then keyed by name as
  // stored, so the scan looks up each directory entry by its name. In view mode only the
  // rows of relPath's view.
  virtual void GetScanSubInfos(const base::String& relPath, std::map<base::String, ncCacheScanInfo>& children) = 0;
  // What the cache holds for comparing a folder with the server's listing of it. Both
  // outputs are cleared first. A row "without a server parent" has an empty parentId: a
  // top-level server object (or one of a special type), or a local item that has not reached
  // the server yet.
  //  - docId names a server object (the "gns://" prefix and at least one level):
  //    children = the cached children of that object (found by parentId and id), keyed by
  //    id; their parentPath is set to relPath (after the view step, trimmed of "\"), the
  //    folder the caller compares. topPaths stays empty.
  //  - otherwise, at the sync root (relPath "" after the view step): children = the rows
  //    without a server parent directly under the root, keyed by id; topPaths = every
  //    parent path deeper down that holds such rows, each with the id of one of them, so the
  //    engine knows which local folders to descend into.
  //  - otherwise (a local folder that is not a server object): topPaths = the parent paths
  //    below relPath that hold rows without a server parent, each with one id; children
  //    stays empty (the rows directly in relPath come from GetScanSubInfos).
  // watermark reads back as 0 or 1; errcode and execTask are not read (0).
  virtual void GetDetectSubInfos(const base::String& relPath, const base::String& docId,
                                 std::map<base::String, ncCacheDocInfo>& children,
                                 std::map<base::String, base::String>& topPaths) = 0;
  // The files whose content is on the local disk (isDir 0, state NC_CACHE_STATE_NORMAL or
  // NC_CACHE_STATE_UNSYNC), e.g. to account for the space they take. Cleared first.
  virtual void GetNoDelayFileInfos(std::vector<ncCacheFileInfo>& files) = 0;
  // Clears the locked bit of the item's attr; no row, no change.
  virtual void Unlock(const base::String& relPath) = 0;

  // ---- name search ---------------------------------------------------------------------
  // Up to maxNum distinct items whose initials or name match key, strongest match first:
  // initials containing the key, names containing it, initials holding its characters in
  // order, names holding them in order (the initials tests only for a printable ASCII key).
  // Within one strategy the hits come in the order in which the rows were written (row
  // order); a strategy stops at its first row already shown. hits is cleared first.
  virtual void Search(const base::String& key, const base::String& prefix, const base::String& suffix,
                      std::vector<ncCacheSearchInfo>& hits, uint32_t maxNum) = 0;

  // ---- unsynchronised items (state NC_CACHE_STATE_UNSYNC) -------------------------------
  // Every unsynchronised row takes the given state / task marker.
  virtual void Unsync_UpdateAllState(int32_t state) = 0;
  virtual void Unsync_UpdateAllExecTask(int32_t execTask) = 0;
  // True when the item is unsynchronised and no task works on it. With withAncestors also
  // when one of its ancestor folders is (nearest first): an item inside a folder that has
  // not reached the server cannot be uploaded before that folder.
  virtual bool Unsync_IsPathUnsync(const base::String& relPath, bool withAncestors) = 0;
  // The state, kind, error and size of the item's row, whatever its state.
  virtual bool Unsync_GetInfo(const base::String& relPath, ncCacheUnsyncInfo& info) = 0;
  // Appends the unsynchronised items no task works on, for the whole cache (path "") or
  // below the folder path (relative, like relPath), in reverse order of the query. limit 0
  // means no limit; with a limit and a path, the match is a plain prefix of the parent path
  // (it also reaches sibling folders whose names begin with the folder's name, and not the
  // folder's own row).
  virtual void Unsync_GetUnexecInfoVec(const base::String& path, std::vector<ncCacheUnexecInfo>& infos,
                                       uint32_t limit) = 0;
  // The number of unsynchronised items no task works on, in the whole cache (path "") or
  // below the folder path (relative, like relPath; in view mode a bare view folder is not a
  // valid path here).
  virtual int64_t Unsync_CountUnexec(const base::String& path) = 0;
  // The number of rows in any of the states; a state listed twice counts twice.
  virtual int64_t GetCountByStates(const std::vector<int32_t>& states) = 0;
  // Every row below a folder (its whole subtree, not the folder's own row), full records,
  // parents before their children (ordered by parentPath, then name). "" (or a bare view
  // folder in view mode) lists the whole cache (the whole view). Cleared first.
  virtual void GetCacheSubInfos(const base::String& relPath, std::vector<ncCacheDocInfo>& infos) = 0;

 protected:
  ~ncICacheMgr() = default;
};
