// The document manager: owns the managers of the main sync root and of every local sync
// root, opens each store in the right data directory, and hands the managers out.
#pragma once

#include <map>
#include <vector>

#include "docmgr/ncADSMgr.h"
#include "docmgr/ncCacheMgr.h"
#include "docmgr/ncDBMgr.h"
#include "docmgr/ncDocMgrDefs.h"
#include "docmgr/ncFileMgr.h"
#include "docmgr/ncLogMgr.h"
#include "docmgr/ncMsgMgr.h"
#include "docmgr/ncPathMgr.h"
#include "docmgr/ncRelayMgr.h"
#include "docmgr/ncIDocMgr.h"
#include "docmgr/nsCOMPtr.h"

class ncDocMgr : public ncIDocMgr {
  NC_DECL_ISUPPORTS
 public:
  ncDocMgr();

  void Init(const base::String& rootPath, const base::String& logRootPath, const std::vector<ncTopFolderInfo>& topFolders,
            bool isNewView, const base::String& userName) override;
  void IniLocalSync(const base::String& path) override;
  void AddLocalSync(const base::String& path) override;
  void RemoveLocalSync(const base::String& path) override;
  void CheckLocalSync(const base::String& localPath, base::String& root) override;
  void GetLocalSyncs(std::vector<base::String>& roots) override;
  void Close() override;
  bool IsNewView() override;
  void GetUnsyncDoc(std::vector<ncUnsyncDocInfo>& docs) override;
  void GetUnsyncLog(std::vector<ncSyncLogInfo>& entries, uint32_t begin, uint32_t end, uint32_t& total) override;
  uint32_t GetUnsyncLogNum() override;
  ncIPathMgr* GetPathMgr(const base::String& path) override;
  ncIFileMgr* GetFileMgr(const base::String& path) override;
  ncIADSMgr* GetADSMgr() override;
  ncICacheMgr* GetCacheMgr(const base::String& path) override;
  ncILogMgr* GetLogMgr() override;
  ncIMsgMgr* GetMsgMgr() override;
  ncIRelayMgr* GetRelayMgr(const base::String& path) override;
  ncIDBMgr* CreateDBMgr() override;

 protected:
  virtual ~ncDocMgr();

 private:
  // The managers of one additional local sync root.
  struct LocalSync {
    nsCOMPtr<ncPathMgr> pathMgr;
    nsCOMPtr<ncFileMgr> fileMgr;
    nsCOMPtr<ncCacheMgr> cacheMgr;
    nsCOMPtr<ncRelayMgr> relayMgr;
  };

  // The entry of a local sync root, or null; "" selects none.
  const LocalSync* FindLocalSync(const base::String& path) const;
  // A manager handed out for a root: main for "", the local sync root's own for its path,
  // null for a path that is no local sync root.
  template <typename Interface, typename Manager>
  Interface* ManagerFor(const base::String& path, const nsCOMPtr<Manager>& main,
                        nsCOMPtr<Manager> LocalSync::*ofLocalSync) const;
  void CloseLocalSync(LocalSync& entry);
  // The unsynchronised items of one root: waiting in its cache, then set aside.
  static void AppendUnsyncDocs(ncPathMgr* pathMgr, ncCacheMgr* cacheMgr, std::vector<ncUnsyncDocInfo>& docs);
  static void AppendSetAsideDocs(ncPathMgr* pathMgr, const base::String& folder, std::vector<ncUnsyncDocInfo>& docs);
  // Gives each top folder that exists under the root its icon and display text.
  void CustomizeTopFolders();

  nsCOMPtr<ncPathMgr> pathMgr_;
  nsCOMPtr<ncFileMgr> fileMgr_;
  nsCOMPtr<ncADSMgr> adsMgr_;
  nsCOMPtr<ncCacheMgr> cacheMgr_;
  nsCOMPtr<ncLogMgr> logMgr_;
  nsCOMPtr<ncMsgMgr> msgMgr_;
  nsCOMPtr<ncRelayMgr> relayMgr_;
  std::vector<ncTopFolderInfo> topFolders_;
  bool isNewView_ = false;
  bool storesOpen_ = false;  // the main root's stores, between Init and Close
  std::map<base::String, LocalSync> localSyncs_;
  base::String userName_;
  nsCOMPtr<ncDBMgr> dbMgr_;
};
