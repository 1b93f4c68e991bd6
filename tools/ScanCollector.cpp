#include "ScanCollector.h"

#include <algorithm>
#include <cctype>
#include <stdexcept>

#include "CacheCliSupport.h"

namespace {

bool EndsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

bool StartsWith(const std::string& text, const std::string& start) { return text.compare(0, start.size(), start) == 0; }

std::string Lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
  return text;
}

bool HasDataDirectory(const std::string& folder) {
  platform::FileInfo info;
  return platform::GetFileInfo(Wide(folder + "/" + kDataDirectoryName), info) &&
         info.kind == platform::FileKind::kDirectory;
}

// The names in a folder, sorted by their bytes; false with the platform's last error when
// it cannot be listed.
bool ListFolder(const std::string& folder, std::vector<std::string>& names) {
  std::vector<base::String> entries;
  if (!platform::ListDirectory(Wide(folder), entries)) return false;
  for (const base::String& entry : entries) names.push_back(Narrow(entry));
  std::sort(names.begin(), names.end());
  return true;
}

std::string SpecialFileText(platform::FileKind kind) {
  switch (kind) {
    case platform::FileKind::kLink: return "symbolic link: links are not synchronised";
    case platform::FileKind::kPipe: return "named pipe: only regular files and folders are synchronised";
    case platform::FileKind::kSocket: return "socket: only regular files and folders are synchronised";
    case platform::FileKind::kDevice: return "device: only regular files and folders are synchronised";
    default: return "special file: only regular files and folders are synchronised";
  }
}

}  // namespace

std::string IgnoreRuleText(const std::string& name, bool isFile) {
  const std::string lower = Lower(name);
  if (name.find('\\') != std::string::npos) return "ignored: a \"\\\" in a name cannot reach the server";
  if (StartsWith(name, "atmp") && name.find('.') == std::string::npos) return "ignored: temporary name atmp*";
  for (const char* prefix : {"~$", "~~$", "._"})
    if (StartsWith(name, prefix)) return std::string("ignored: names beginning with ") + prefix;
  for (const char* ending : {".kestrove.bak", ".dwl", ".dwl2", ".es$", ".tmp", ".crdownload", ".part", ".partial",
                             ".kqbl", ".sgdownload", ".td", ".td.cfg", ".bak", ".sjz3", ".tesbak", ".testmp", ".bakd"})
    if (EndsWith(lower, ending)) return std::string("ignored: temporary or backup ending ") + ending;
  if (lower == "desktop.ini" || lower == ".directory") return "ignored: folder customisation file";
  const bool eightAlnum =
      name.size() == 8 && std::all_of(name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c); });
  if (eightAlnum && isFile) return "ignored: office temporary (a file named with 8 letters or digits, no extension)";
  if (lower == "tmp0.mpj" || lower == "tmp0.mtw" || (StartsWith(name, "~") && EndsWith(lower, ".mpj~")))
    return "ignored: statistics program temporary";
  if (lower.find("___jb_tmp___") != std::string::npos || lower.find("___jb_old___") != std::string::npos)
    return "ignored: IDE safe-write temporary";
  return "ignored: CAD temporary (the user's name and 12 letters or digits)";
}

ScanCollector::ScanCollector(std::string root, std::string unsyncFolderName,
                             std::function<bool(const std::string&)> isIgnored)
    : root_(std::move(root)), unsyncFolderName_(std::move(unsyncFolderName)), isIgnored_(std::move(isIgnored)) {}

ScanCollection ScanCollector::collect() {
  ScanCollection out;
  collectFolder(root_, true, out);
  if (!out.unreadable.empty() && out.unreadable.front().path == root_)
    throw std::runtime_error("cannot read " + root_ + ": " + out.unreadable.front().error.text);
  return out;
}

std::string ScanCollector::skipReason(const std::string& path, const std::string& name, platform::FileKind kind,
                                      bool inNestedRoot) {
  const bool isDir = kind == platform::FileKind::kDirectory;
  if (!isDir && kind != platform::FileKind::kRegularFile) return SpecialFileText(kind);
  if (isDir && EndsWith(name, kDataDirectoryName))
    return "data directory of a nested sync root";
  if (isDir && inNestedRoot && name == unsyncFolderName_)
    return "unsynchronised-documents folder of a sync root";
  if (isIgnored_(path)) return IgnoreRuleText(name, !isDir);
  return std::string();
}

// isRoot: the folder is the root or a nested sync root, whose own folders are not user data.
void ScanCollector::collectFolder(const std::string& folder, bool isRoot, ScanCollection& out) {
  std::vector<std::string> names;
  if (!ListFolder(folder, names)) {
    out.unreadable.push_back({folder, OsErrorFromLastError()});
    return;
  }
  std::set<std::string>& present = out.listed[folder];
  for (const std::string& name : names) {
    const std::string path = folder + "/" + name;
    if (path == root_ + "/" + kDataDirectoryName) continue;  // the tool's own state, never user data
    platform::FileInfo info;
    if (!platform::GetFileInfo(Wide(path), info)) {
      out.unreadable.push_back({path, OsErrorFromLastError()});
      present.insert(name);  // its record stays
      continue;
    }
    const std::string reason = skipReason(path, name, info.kind, isRoot);
    if (!reason.empty()) {
      out.skipped.push_back({path, reason});
      continue;
    }
    present.insert(name);
    const bool isDir = info.kind == platform::FileKind::kDirectory;
    out.entries.push_back({path, isDir, info.modifiedMicros, info.size});
    if (isDir) collectFolder(path, HasDataDirectory(path), out);
  }
}
