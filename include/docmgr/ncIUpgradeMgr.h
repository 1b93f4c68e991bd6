// The upgrade manager: carries the databases of the sync roots from their stored schema
// version to the current one on a worker thread, before the document manager opens them.
//
// Ownership: created by the host (reference counted) and released by it.
// Thread safety: Init, NeedUpgrade, NeedData, SetData, SetViews and DoUpgrade are called from
// one thread, in that order; GetSummary may be called from any thread while the worker
// runs; Close only once the summary says the run has ended.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "docmgr/String.h"
#include "docmgr/nsISupports.h"

// The schema version new databases are created at, and the oldest one an upgrade can start
// from; a root recorded outside this range is refused.
const int32_t NC_SCHEMA_VERSION_CURRENT = 24;
const int32_t NC_SCHEMA_VERSION_OLDEST = 4;

struct ncUpgradeSummary {
  int state = 0;       // 0 not started, 1 running, 2 finished, 3 failed
  double done = 0.0;   // steps done
  double total = 0.0;  // steps to run
  base::String message;  // empty unless failed
};

// What databases older than version 7 cannot tell about themselves, asked of the client
// (NeedData) before such a root is upgraded: those releases kept only the number of a
// document's type in the cache, and the upgrade writes the name shown for it. The step
// from version 6 fills the type name of every cache row (and download record) that has
// none from this table; a root that has such rows cannot pass that step without it.
struct ncUpgradeData {
  std::map<int, base::String> typeNames;  // server object type -> type name shown to the user
};

// One view of the client, for the move between the two layouts of the top-level folders:
// layout 1 keeps them directly under the root, layout 2 groups them under one folder per
// view, named as the view. A folder whose cache row names its view needs no entry; the
// others are found here by name.
struct ncUpgradeView {
  base::String name;                     // the view's name, and the name of its folder
  int viewType = 0;
  std::vector<base::String> topFolders;  // names of the top-level folders in this view
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
