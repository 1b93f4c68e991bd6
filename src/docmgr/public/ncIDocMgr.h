// The document manager: the component a client creates to open the local state of a sync
// root and obtain its managers.
#pragma once

#include <vector>

#include "base/String.h"
#include "xpcom/nsISupports.h"

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
