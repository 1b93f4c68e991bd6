// One step of the upgrade chain: a version step carries the databases of one root from its
// stored schema version to the next, a view step moves the top-level folders of the primary
// root to another layout. Its inputs are given when it is made.
#pragma once

#include "docmgr/nsISupports.h"

class ncIVerUpgrader : public nsISupports {
 public:
  NS_DECLARE_STATIC_IID_ACCESSOR({0x1E92FB8F, 0x38AB, 0x4B62, {0x8B, 0xA5, 0xA7, 0xBA, 0x9B, 0x85, 0xA3, 0xFE}})

  // Performs the step; a failure is thrown and leaves the step safe to run again.
  virtual void Upgrade() = 0;

 protected:
  ~ncIVerUpgrader() = default;
};
