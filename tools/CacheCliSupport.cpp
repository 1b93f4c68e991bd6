#include "CacheCliSupport.h"

#include <cstdio>
#include <stdexcept>

#include "base/Directory.h"
#include "base/Path.h"

const char kDataDirectoryName[] = ".kestrove.cache";

namespace {

bool IsFolder(const std::string& path) { return base::Directory::exists(Wide(path)); }

// Columns a UTF-8 text takes in a terminal: wide East Asian characters take two.
size_t DisplayWidth(const std::string& text) {
  size_t width = 0;
  for (const char16_t unit : Wide(text)) {
    if (unit >= 0xDC00 && unit <= 0xDFFF) continue;  // second half of a pair
    const bool wide = (unit >= 0x1100 && unit <= 0x115F) || (unit >= 0x2E80 && unit <= 0xA4CF) ||
                      (unit >= 0xAC00 && unit <= 0xD7A3) || (unit >= 0xF900 && unit <= 0xFAFF) ||
                      (unit >= 0xFE30 && unit <= 0xFE4F) || (unit >= 0xFF00 && unit <= 0xFF60) ||
                      (unit >= 0xFFE0 && unit <= 0xFFE6);
    width += wide ? 2 : 1;
  }
  return width;
}

}  // namespace

std::string CheckSyncRoot(const std::string& root, bool requireState) {
  const std::string path = AbsolutePath(root);
  if (!IsFolder(path)) throw std::runtime_error(path + " is not a folder");
  if (requireState && !IsFolder(path + "/" + kDataDirectoryName))
    throw std::runtime_error(path + " has no local state yet (run: docmgr-cli scan " + root + ")");
  return path;
}

std::string FindSyncRoot(const std::string& absolutePath) {
  base::String folder = Wide(absolutePath);
  while (!folder.empty()) {
    if (IsFolder(Narrow(base::Path::combine(folder, Wide(kDataDirectoryName))))) return Narrow(folder);
    const base::String parent = base::Path::getDirectoryName(folder);
    if (parent == folder) break;
    folder = parent.empty() && folder.size() > 1 && base::Path::isSeparator(folder[0]) ? folder.substr(0, 1) : parent;
  }
  return std::string();
}

nsCOMPtr<ncIPathMgr> MainPathMgr(ncIDocMgr* docMgr) { return nsCOMPtr<ncIPathMgr>::adopt(docMgr->GetPathMgr(u"")); }

nsCOMPtr<ncICacheMgr> MainCacheMgr(ncIDocMgr* docMgr) {
  nsCOMPtr<ncICacheMgr> cache = nsCOMPtr<ncICacheMgr>::adopt(docMgr->GetCacheMgr(u""));
  if (!cache) throw std::runtime_error("the module has no document cache");
  return cache;
}

base::String StoredRelPath(const std::string& text) {
  base::String relPath = Wide(text);
  for (auto& unit : relPath)
    if (unit == u'/') unit = u'\\';
  return base::Trim(relPath, u'\\');
}

std::string ShownRelPath(const base::String& relPath) {
  std::string shown = Narrow(relPath);
  for (auto& c : shown)
    if (c == '\\') c = '/';
  return shown;
}

std::string StateText(int32_t state) {
  switch (state) {
    case NC_CACHE_STATE_NORMAL: return "synced";
    case NC_CACHE_STATE_DELAY: return "delayed";
    case NC_CACHE_STATE_UNSYNC: return "unsynced";
    default: return "state " + std::to_string(state);
  }
}

std::string SizeText(int64_t size) {
  if (size < 10 * 1024) return std::to_string(size) + " B";
  const char* units[] = {"KiB", "MiB", "GiB", "TiB"};
  double value = static_cast<double>(size) / 1024;
  int unit = 0;
  while (value >= 1024 && unit < 3) {
    value /= 1024;
    ++unit;
  }
  char text[32];
  std::snprintf(text, sizeof text, "%.1f %s", value, units[unit]);
  return text;
}

std::string Pad(const std::string& text, size_t width) {
  const size_t used = DisplayWidth(text);
  return used >= width ? text : text + std::string(width - used, ' ');
}
