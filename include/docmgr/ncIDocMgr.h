// The document manager: the component a client creates to open the local state of a sync
// root and obtain its managers.
//
// Ownership: the host creates the document manager (reference counted) and releases it.
// Every manager a getter returns carries a reference the caller releases (CreateDBMgr's
// wrapper excepted: the document manager keeps it). Close closes every store; managers
// still held by the caller stay valid objects but their stores are closed.
// Thread safety: Init, IniLocalSync, AddLocalSync, RemoveLocalSync and Close must not run
// concurrently with each other or with the getters and reports; the managers handed out may
// be used from any thread, each as its own header says.
#pragma once

#include <cstdint>
#include <vector>

#include "docmgr/String.h"
#include "docmgr/ncILogMgr.h"
#include "docmgr/nsISupports.h"

class ncIPathMgr;
class ncIFileMgr;
class ncIADSMgr;
class ncICacheMgr;
class ncILogMgr;
class ncIMsgMgr;
class ncIRelayMgr;
class ncIDBMgr;

// A top-level folder of the sync root, as the client knows it from the server.
struct ncTopFolderInfo {
  base::String name;      // the folder's name directly under the sync root
  base::String typeName;  // the server's type name, shown for organisation folders
  base::String docId;     // the server's document id of the folder
  int docType = 0;        // bit set of the folder kind (1 my documents, 2 shared group, 4 organisation, ...)
  int viewType = 0;       // the view (top-level server container) the folder belongs to
};

// Where an item that has not reached the server is (GetUnsyncDoc).
enum ncUnsyncDocKind : int32_t {
  // Recorded in a root's cache as unsynchronised, and no task of the engine works on it:
  // it waits for upload.
  NC_UNSYNC_DOC_WAITING = 1,
  // A file set aside into the root's unsynchronised-documents folder (ncIFileMgr::CreateDupDoc):
  // the engine gave up on it; the user decides what happens to it.
  NC_UNSYNC_DOC_SET_ASIDE = 2,
};

// One item of the unsynchronised-documents report.
struct ncUnsyncDocInfo {
  base::String root;     // the sync root it belongs to: the main root or a local sync root
  // Relative to that root with "\" separators, as the cache keys it: a local sync root's paths
  // begin with the root folder's name, a view-mode root's with the view folder. A set-aside
  // file's path lies inside the unsynchronised-documents folder.
  base::String relPath;
  int32_t kind = NC_UNSYNC_DOC_WAITING;  // ncUnsyncDocKind
  bool isDir = false;
  int64_t size = 0;      // bytes, as the cache holds it (waiting) or as the file is (set aside)
  int32_t errcode = 0;   // the engine's last error for the item; 0 for set-aside files
};

// The sync-log type of the entries the unsynchronised-log reports cover: events about items
// that could not reach the server (a refused or failed upload, a document set aside, an item
// recorded locally that waits for upload). Clients write such entries with this type.
const int NC_SYNCLOG_TYPE_UNSYNC = 3;

// The document manager, created by contract NC_DOCMGR_CONTRACTID (see the top of this file
// for ownership and threads).
class ncIDocMgr : public nsISupports {
 public:
  NS_DECLARE_STATIC_IID_ACCESSOR({0x3542FFA8, 0x555D, 0x4145, {0x8E, 0xE1, 0x30, 0x83, 0x98, 0xD1, 0xE1, 0xDE}})

  // Opens the stores of rootPath; the sync log and messages live under logRootPath.
  virtual void Init(const base::String& rootPath, const base::String& logRootPath,
                    const std::vector<ncTopFolderInfo>& topFolders, bool isNewView, const base::String& userName) = 0;
  // Stamps a new local sync root with the current schema version.
  virtual void IniLocalSync(const base::String& path) = 0;
  virtual void AddLocalSync(const base::String& path) = 0;
  virtual void RemoveLocalSync(const base::String& path) = 0;
  // The registered local sync root that contains localPath, or "".
  virtual void CheckLocalSync(const base::String& localPath, base::String& root) = 0;
  virtual void GetLocalSyncs(std::vector<base::String>& roots) = 0;
  virtual void Close() = 0;
  virtual bool IsNewView() = 0;

  // ---- reports (for the client's tray and support staff) --------------------------------
  // Everything that has not reached the server, for the main root and every local sync
  // root (in root order: main first, then the local sync roots by path): the items each
  // cache holds as unsynchronised with no task working on them, then the files set aside in
  // the root's unsynchronised-documents folder. docs is cleared first. A root whose stores
  // are not open (before Init) contributes nothing.
  virtual void GetUnsyncDoc(std::vector<ncUnsyncDocInfo>& docs) = 0;
  // A page of the visible sync-log entries of type NC_SYNCLOG_TYPE_UNSYNC, newest first:
  // entries begin to end (1 is the newest; both included). total receives the number of
  // such entries. entries is cleared first. begin > end, or begin > total, throws code 2.
  virtual void GetUnsyncLog(std::vector<ncSyncLogInfo>& entries, uint32_t begin, uint32_t end,
                            uint32_t& total) = 0;
  // The number of visible sync-log entries of type NC_SYNCLOG_TYPE_UNSYNC.
  virtual uint32_t GetUnsyncLogNum() = 0;

  // Managers of the main root ("") or of a registered local sync root; the caller releases
  // the reference it receives. A path with no entry gives null.
  virtual ncIPathMgr* GetPathMgr(const base::String& path) = 0;
  virtual ncIFileMgr* GetFileMgr(const base::String& path) = 0;
  // The tag manager, the sync log and the messages exist for the main root only.
  virtual ncIADSMgr* GetADSMgr() = 0;
  virtual ncICacheMgr* GetCacheMgr(const base::String& path) = 0;
  virtual ncILogMgr* GetLogMgr() = 0;
  virtual ncIMsgMgr* GetMsgMgr() = 0;
  virtual ncIRelayMgr* GetRelayMgr(const base::String& path) = 0;
  // A new database wrapper; the document manager keeps it alive until the next call.
  virtual ncIDBMgr* CreateDBMgr() = 0;

 protected:
  ~ncIDocMgr() = default;
};

#define NC_DOCMGR_CONTRACTID "@kestrove.org/kestrove3.5/docmgr;1"
#define NC_DOCMGR_CID {0xF93DE3A8, 0xAAED, 0x42A0, {0x95, 0x87, 0xED, 0x94, 0x83, 0x6C, 0x49, 0x8E}}
