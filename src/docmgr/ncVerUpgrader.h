// The steps of the upgrade chain. A version step takes the databases of one root from the
// version in its name to the next; a view step moves the top-level folders of the primary
// root between the two layouts. Steps are made by GetUpgrader and GetViewUpgrader.
#pragma once

#include <mutex>
#include <vector>

#include "docmgr/ncConfigDBInfo.h"
#include "docmgr/ncDocMgrDefs.h"
#include "docmgr/ncIUpgradeMgr.h"
#include "docmgr/ncIVerUpgrader.h"

// What a step works with: the root (its config.db and path manager), the summary it counts
// its work in, and the client's data and views.
struct ncUpgradeContext {
  ncConfigDBInfo* config = nullptr;
  ncUpgradeSummary* summary = nullptr;
  std::mutex* summaryLock = nullptr;  // the summary is read by the client's polling
  const ncUpgradeData* data = nullptr;
  const std::vector<ncUpgradeView>* views = nullptr;
};

// A new step for stored versions 4 to 23, null for any other version.
ncIVerUpgrader* GetUpgrader(int32_t version, const ncUpgradeContext& context);
// The step from the current view layout to the target one: 1 to 2 or 2 to 1; null otherwise.
ncIVerUpgrader* GetViewUpgrader(int32_t viewVersion, int32_t targetViewVer, const ncUpgradeContext& context);

// We know the schema of the current version and nothing of what each earlier version
// changed, so every version step reconciles: it brings each store of its root to the current
// schema without losing a row. The first step that runs does the whole work and the later
// ones find nothing to do; each counts one step done.
class ncVerUpgrader : public ncIVerUpgrader {
  NC_DECL_ISUPPORTS
 public:
  explicit ncVerUpgrader(const ncUpgradeContext& context) : context_(context) {}
  void Upgrade() override;

 protected:
  virtual ~ncVerUpgrader() = default;
  // What the version needs beyond the schema; run after the reconciliation.
  virtual void UpgradeData() {}
  void CountStepDone();

  const ncUpgradeContext context_;
};

#define NC_DECLARE_VERSION_STEP(Class)                          \
  class Class : public ncVerUpgrader {                          \
   public:                                                      \
    explicit Class(const ncUpgradeContext& context) : ncVerUpgrader(context) {} \
  }

NC_DECLARE_VERSION_STEP(ncV4Upgrader);
NC_DECLARE_VERSION_STEP(ncV5Upgrader);
NC_DECLARE_VERSION_STEP(ncV7Upgrader);
NC_DECLARE_VERSION_STEP(ncV8Upgrader);
NC_DECLARE_VERSION_STEP(ncV9Upgrader);
NC_DECLARE_VERSION_STEP(ncV10Upgrader);
NC_DECLARE_VERSION_STEP(ncV11Upgrader);
NC_DECLARE_VERSION_STEP(ncV12Upgrader);
NC_DECLARE_VERSION_STEP(ncV13Upgrader);
NC_DECLARE_VERSION_STEP(ncV14Upgrader);
NC_DECLARE_VERSION_STEP(ncV15Upgrader);
NC_DECLARE_VERSION_STEP(ncV16Upgrader);
NC_DECLARE_VERSION_STEP(ncV17Upgrader);
NC_DECLARE_VERSION_STEP(ncV18Upgrader);
NC_DECLARE_VERSION_STEP(ncV19Upgrader);
NC_DECLARE_VERSION_STEP(ncV20Upgrader);
NC_DECLARE_VERSION_STEP(ncV21Upgrader);
NC_DECLARE_VERSION_STEP(ncV22Upgrader);
NC_DECLARE_VERSION_STEP(ncV23Upgrader);

// Version 7 is the first to keep the names of the document types: rows from before it get
// theirs from the client's data (ncUpgradeData::typeNames).
class ncV6Upgrader : public ncVerUpgrader {
 public:
  explicit ncV6Upgrader(const ncUpgradeContext& context) : ncVerUpgrader(context) {}

 protected:
  void UpgradeData() override;
};

// Moves every top-level folder that belongs to a view into the folder of that view.
class ncViewUpgrader_1to2 : public ncVerUpgrader {
 public:
  explicit ncViewUpgrader_1to2(const ncUpgradeContext& context) : ncVerUpgrader(context) {}
  void Upgrade() override;
};

// Moves the folders out of every view folder back under the root, and removes the view
// folders it emptied.
class ncViewUpgrader_2to1 : public ncVerUpgrader {
 public:
  explicit ncViewUpgrader_2to1(const ncUpgradeContext& context) : ncVerUpgrader(context) {}
  void Upgrade() override;
};
