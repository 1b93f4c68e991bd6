// Upgrade helpers: stamping and reading a root's versions, and running the worker to its
// outcome as a client polls it.
#pragma once

#include <chrono>
#include <thread>

#include "docmgr/ncConfigDBInfo.h"
#include "docmgr/ncIUpgradeMgr.h"

namespace test {

inline void StampVersion(const base::String& root, int version, int viewVersion) {
  ncConfigDBInfo config;
  config.Init(root, false);
  config.UpdateVersionNum(version);
  if (viewVersion) config.UpdateViewVer(viewVersion);
}

inline int StoredVersion(const base::String& root, bool local = false) {
  ncConfigDBInfo config;
  config.Init(root, local);
  return config.GetVersionNum();
}

inline ncUpgradeSummary RunUpgradeToEnd(ncIUpgradeMgr* upgrade) {
  upgrade->DoUpgrade();
  ncUpgradeSummary summary;
  for (int wait = 0; wait < 3000; ++wait) {
    upgrade->GetSummary(summary);
    if (summary.state >= 2) break;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return summary;
}

}  // namespace test
