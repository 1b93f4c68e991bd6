// The collect step of scan: walks a sync root and sorts everything in it into what is
// recorded, what is skipped (and why), and what could not be read.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "OsError.h"
#include "platform/ncPlatform.h"

struct ScanEntry {
  std::string path;  // absolute
  bool isDir = false;
  int64_t mtime = 0;  // microseconds since 1970
  int64_t size = 0;
};

struct ScanSkipped {
  std::string path;
  std::string reason;
};

struct ScanUnreadable {
  std::string path;
  OsError error;
};

struct ScanCollection {
  std::vector<ScanEntry> entries;  // parents before their children, names in byte order
  std::vector<ScanSkipped> skipped;
  // Folders whose listing failed and items that could not be examined: their records stay,
  // since a sync engine takes a vanished record for a deletion to send to the server.
  std::vector<ScanUnreadable> unreadable;
  // Folder (absolute) -> the names present in it, for every folder that was listed whole.
  std::map<std::string, std::set<std::string>> listed;
};

class ScanCollector {
 public:
  // isIgnored: the sync engine's ignore rules, applied to an absolute path.
  ScanCollector(std::string root, std::string unsyncFolderName, std::function<bool(const std::string&)> isIgnored);
  // Throws std::runtime_error when the root itself cannot be listed.
  ScanCollection collect();

 private:
  void collectFolder(const std::string& folder, bool isNestedRoot, ScanCollection& out);
  // Why an item is not recorded, or "" when it is.
  std::string skipReason(const std::string& path, const std::string& name, platform::FileKind kind, bool inNestedRoot);

  std::string root_;
  std::string unsyncFolderName_;
  std::function<bool(const std::string&)> isIgnored_;
};

// The ignore rule a name matched, in words (for names the ignore rules skip).
std::string IgnoreRuleText(const std::string& name, bool isFile);
