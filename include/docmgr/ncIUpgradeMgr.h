// The upgrade manager: carries the databases of the sync roots from their stored schema
// version to the current one on a worker thread, before the document manager opens them.
//
// Ownership: created by the host (reference counted) and released by it.
// Thread safety: Init, NeedUpgrade, NeedData, SetData, SetViews and DoUpgrade are called from
// one thread, in that order; GetSummary may be called from any thread while the worker
// runs; Close only once the summary says the run has ended.
#pragma once

#include <vector>

#include "docmgr/String.h"
#include "docmgr/nsISupports.h"

struct ncUpgradeSummary {
  int state = 0;       // 0 not started, 1 running, 2 finished, 3 failed
  double done = 0.0;   // steps done
  double total = 0.0;  // steps to run
  base::String message;  // empty unless failed
};

// Data some version steps need from the client (the primary root below version 7).
struct ncUpgradeData {
  base::String userId;
  std::vector<base::String> values;
};

struct ncUpgradeView {
  base::String name;
  int viewType = 0;
};

class ncIUpgradeMgr : public nsISupports {
 public:
  NS_DECLARE_STATIC_IID_ACCESSOR({0x0ECE697F, 0x872F, 0x4CD6, {0xA7, 0x0F, 0x59, 0x17, 0xC4, 0xBF, 0xAE, 0x8B}})

  virtual void Init(const base::String& primaryPath, const base::String& secondaryPath,
                    const std::vector<base::String>& localSyncPaths, int targetViewVer) = 0;
  virtual void Close() = 0;
  virtual bool NeedUpgrade() = 0;
  virtual bool NeedData() = 0;
  virtual void SetData(const ncUpgradeData& data) = 0;
  virtual void SetViews(const std::vector<ncUpgradeView>& views) = 0;
  virtual void DoUpgrade() = 0;
  virtual void GetSummary(ncUpgradeSummary& summary) = 0;

 protected:
  ~ncIUpgradeMgr() = default;
};

#define NC_UPGRADEMGR_CONTRACTID "@kestrove.org/kestrove3.5/upgrademgr;1"
#define NC_UPGRADEMGR_CID {0x8AAB4F36, 0x76A4, 0x4396, {0x8F, 0x47, 0x25, 0x86, 0x44, 0xFB, 0x8F, 0x53}}
