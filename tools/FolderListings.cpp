#include "FolderListings.h"

bool FolderListings::take(const base::String& folder, const base::String& name, ncCacheScanInfo& row) {
  auto listing = listings_.find(folder);
  if (listing == listings_.end()) {
    listing = listings_.emplace(folder, std::map<base::String, ncCacheScanInfo>()).first;
    cache_->GetScanSubInfos(folder, listing->second);
  }
  const auto found = listing->second.find(name);
  if (found == listing->second.end()) return false;
  row = found->second;
  listing->second.erase(found);
  return true;
}
