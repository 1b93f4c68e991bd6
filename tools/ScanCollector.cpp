#include "ScanCollector.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <memory>
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
  struct stat info;
  return ::lstat((folder + "/" + kDataDirectoryName).c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

// The names in a folder, sorted; false with errno set when it cannot be listed.
bool ListFolder(const std::string& folder, std::vector<std::string>& names) {
  std::unique_ptr<DIR, int (*)(DIR*)> dir(::opendir(folder.c_str()), ::closedir);
  if (!dir) return false;
  errno = 0;
  while (const dirent* item = ::readdir(dir.get())) {
    const std::string name = item->d_name;
    if (name != "." && name != "..") names.push_back(name);
  }
  if (errno != 0) return false;
  std::sort(names.begin(), names.end());
  return true;
}

std::string SpecialFileText(mode_t mode) {
  if (S_ISLNK(mode)) return "symbolic link: links are not synchronised";
  if (S_ISFIFO(mode)) return "named pipe: only regular files and folders are synchronised";
  if (S_ISSOCK(mode)) return "socket: only regular files and folders are synchronised";
  if (S_ISCHR(mode) || S_ISBLK(mode)) return "device: only regular files and folders are synchronised";
  return "special file: only regular files and folders are synchronised";
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

std::string ScanCollector::skipReason(const std::string& path, const std::string& name, mode_t mode,
                                      bool inNestedRoot) {
  if (!S_ISDIR(mode) && !S_ISREG(mode)) return SpecialFileText(mode);
  if (S_ISDIR(mode) && EndsWith(name, kDataDirectoryName))
    return "data directory of a nested sync root";
  if (S_ISDIR(mode) && inNestedRoot && name == unsyncFolderName_)
    return "unsynchronised-documents folder of a sync root";
  if (isIgnored_(path)) return IgnoreRuleText(name, S_ISREG(mode));
  return std::string();
}

// isRoot: the folder is the root or a nested sync root, whose own folders are not user data.
void ScanCollector::collectFolder(const std::string& folder, bool isRoot, ScanCollection& out) {
  std::vector<std::string> names;
  if (!ListFolder(folder, names)) {
    out.unreadable.push_back({folder, OsErrorFromErrno(errno)});
    return;
  }
  std::set<std::string>& present = out.listed[folder];
  for (const std::string& name : names) {
    const std::string path = folder + "/" + name;
    if (path == root_ + "/" + kDataDirectoryName) continue;  // the tool's own state, never user data
    struct stat info;
    if (::lstat(path.c_str(), &info) != 0) {
      out.unreadable.push_back({path, OsErrorFromErrno(errno)});
      present.insert(name);  // its record stays
      continue;
    }
    const std::string reason = skipReason(path, name, info.st_mode, isRoot);
    if (!reason.empty()) {
      out.skipped.push_back({path, reason});
      continue;
    }
    present.insert(name);
    const bool isDir = S_ISDIR(info.st_mode);
    const int64_t mtime = static_cast<int64_t>(info.st_mtim.tv_sec) * 1000000 + info.st_mtim.tv_nsec / 1000;
    out.entries.push_back({path, isDir, mtime, isDir ? 0 : static_cast<int64_t>(info.st_size)});
    if (isDir) collectFolder(path, HasDataDirectory(path), out);
  }
}
