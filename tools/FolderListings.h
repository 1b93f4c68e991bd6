// The cache's rows of the folders scan's record step has reached, read with one listing per
// folder instead of one lookup per item. A row is dropped once its item has been seen.
#pragma once

#include <map>

#include "docmgr/ncICacheMgr.h"

class FolderListings {
 public:
  explicit FolderListings(ncICacheMgr* cache) : cache_(cache) {}
  // The row of name in folder (relative paths); false when the cache has none.
  bool take(const base::String& folder, const base::String& name, ncCacheScanInfo& row);

 private:
  ncICacheMgr* cache_;
  std::map<base::String, std::map<base::String, ncCacheScanInfo>> listings_;
};
