#include "CacheCliSupport.h"

#include <cstdio>
#include <stdexcept>

#include "CliCommand.h"
#include "Display.h"
#include "Translation.h"
#include "platform/ncPlatform.h"

const char kDataDirectoryName[] = NC_DATA_DIRECTORY_NAME;

namespace {

// A link to a folder counts: a root may be reached through one.
bool IsFolder(const std::string& path) { return platform::IsDirectory(Wide(path)); }

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
  if (!IsFolder(path)) throw CliError(Printable(path) + ": " + Tr("no such folder"));
  if (requireState && !IsFolder(path + "/" + kDataDirectoryName))
    throw CliError(Printable(path) + ": " + Tr("no local state here (no .kestrove.cache); nothing was created"));
  return path;
}

std::string FindSyncRoot(const std::string& absolutePath) {
  std::string folder = absolutePath;
  while (!folder.empty()) {
    if (IsFolder(folder + "/" + kDataDirectoryName)) return folder;
    const size_t slash = folder.rfind('/');
    if (slash == std::string::npos || folder == "/") break;
    folder = slash == 0 ? "/" : folder.substr(0, slash);
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
  std::string slashed = text;
  for (auto& c : slashed)
    if (c == '\\') c = '/';
  slashed.erase(0, slashed.find_first_not_of('/'));  // leading separators would read as a share on Windows
  // ".", ".." and doubled separators go as in any path; ".." never climbs above the root.
  base::String relPath = Wide(NormalPath("/" + slashed).substr(1));
  for (auto& unit : relPath)
    if (unit == u'/') unit = u'\\';
  return relPath;
}

std::string SlashedPath(const base::String& relPath) {
  std::string shown = Narrow(relPath);
  for (auto& c : shown)
    if (c == '\\') c = '/';
  return shown;
}

std::string ShownRelPath(const base::String& relPath) { return Printable(SlashedPath(relPath)); }

std::string StateText(int32_t state) {
  switch (state) {
    case NC_CACHE_STATE_NORMAL: return Tr("synced");
    case NC_CACHE_STATE_DELAY: return Tr("delayed");
    case NC_CACHE_STATE_UNSYNC: return Tr("unsynced");
    default: return Tr("state") + (" " + std::to_string(state));
  }
}

std::string Pad(const std::string& text, size_t width) {
  const size_t used = DisplayWidth(text);
  return used >= width ? text : text + std::string(width - used, ' ');
}
