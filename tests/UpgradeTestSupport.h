// Runs the upgrade manager's worker and waits for its outcome, as a client polls it.
#pragma once

#include <chrono>
#include <thread>

#include "docmgr/ncIUpgradeMgr.h"

namespace test {

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
