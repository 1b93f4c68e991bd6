// The upgrade manager. Init reads the schema version of the primary, the secondary and each
// local sync root from its config.db (a root with none records the primary's, and a
// secondary that had none takes the journals log.db and msg.db over from the primary's data
// directory) and counts the steps to run. DoUpgrade then runs on a worker thread one chain
// of version steps per root, secondary first, then the local sync roots, the primary last,
// and ends with the primary's view step; the client polls the summary meanwhile.
#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "base/Thread.h"
#include "docmgr/ncConfigDBInfo.h"
#include "docmgr/ncDocMgrDefs.h"
#include "docmgr/ncVerUpgrader.h"
#include "docmgr/ncIUpgradeMgr.h"

class ncUpgradeMgr : public ncIUpgradeMgr, private base::Thread {
  NC_DECL_ISUPPORTS
 public:
  ncUpgradeMgr();

  void Init(const base::String& primaryPath, const base::String& secondaryPath, const std::vector<base::String>& localSyncPaths,
            int targetViewVer) override;
  void Close() override;
  bool NeedUpgrade() override;
  bool NeedData() override;
  void SetData(const ncUpgradeData& data) override;
  void SetViews(const std::vector<ncUpgradeView>& views) override;
  void DoUpgrade() override;
  void GetSummary(ncUpgradeSummary& summary) override;

 protected:
  virtual ~ncUpgradeMgr();

 private:
  void run() override;
  // Reads the stored version, or records primaryVersion (the current version for a new primary) when none is stored.
  int32_t ReadOrRecordVersion(ncConfigDBInfo& config, int32_t primaryVersion);
  void CheckVersion(ncConfigDBInfo& config, int32_t version);
  static void MoveJournal(const base::String& fromDir, const base::String& toDir, const char16_t* name);
  ncUpgradeContext ContextOf(ncConfigDBInfo& config);
  void RunChain(ncConfigDBInfo& config);
  void RunViewStep();
  void SetOutcome(int state, const base::String& message);

  std::unique_ptr<ncConfigDBInfo> primaryConfig_;
  std::unique_ptr<ncConfigDBInfo> secondaryConfig_;
  std::vector<std::unique_ptr<ncConfigDBInfo>> localSyncConfigs_;
  int32_t targetViewVer_ = 0;
  bool needData_ = false;
  // Written by the worker, read by the caller's polling.
  std::mutex summaryLock_;
  ncUpgradeSummary summary_;
  ncUpgradeData data_;
  std::vector<ncUpgradeView> views_;
};
