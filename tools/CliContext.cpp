#include "CliContext.h"

#include <algorithm>
#include <cstdlib>

#include <stdexcept>
#include <vector>

#include "Translation.h"
#include "base/Path.h"
#include "docmgr/ncIPathMgr.h"
#include "platform/ncPlatform.h"

namespace {

// The module file of the build or installation the tool belongs to.
std::string ModuleBeside() {
  const base::String toolDir = platform::GetModuleDirectory(reinterpret_cast<const void*>(&ModuleBeside));
  return Narrow(toolDir) + "/../lib/" DOCMGR_MODULE_FILE_NAME;
}

bool OnWindows() { return platform::kPathSeparator == u'\\'; }

// '\' is an ordinary character of a POSIX name.
bool IsSeparator(char c) { return c == '/' || (OnWindows() && c == '\\'); }

// The part of an absolute path no ".." climbs above: "/" on POSIX; on Windows a drive
// ("C:/") or a share ("//server/share/").
size_t RootLength(const std::string& path) {
  if (path.size() >= 2 && path[1] == ':' && OnWindows()) return path.size() > 2 ? 3 : 2;
  if (path.size() >= 2 && IsSeparator(path[0]) && IsSeparator(path[1]) && OnWindows()) {
    size_t end = 2;
    for (int names = 0; names < 2 && end < path.size(); ++names) {
      while (end < path.size() && !IsSeparator(path[end])) ++end;
      if (end < path.size()) ++end;
    }
    return end;
  }
  return !path.empty() && IsSeparator(path[0]) ? 1 : 0;
}

}  // namespace

CliContext::~CliContext() { closeRoot(); }

void CliContext::loadModule() {
  const char* configured = std::getenv("KESTROVE_MODULE");
  const std::string file = configured ? configured : ModuleBeside();
  if (NS_FAILED(host_.loadModule(file))) throw std::runtime_error(Tr("cannot load the module:") + (" " + host_.lastError()));
  LoadTranslations(file);
}

ncIDocMgr* CliContext::openRoot(const std::string& root) {
  const std::string path = AbsolutePath(root);
  if (docMgr_ && openedRoot_ == path) return docMgr_.get();
  closeRoot();
  if (lockWatch_) lockWatch_->watch(path + "/" NC_DATA_DIRECTORY_NAME);
  docMgr_ = host_.create<ncIDocMgr>(NC_DOCMGR_CONTRACTID);
  if (!docMgr_) throw std::runtime_error("the module did not create the document manager");
  docMgr_->Init(Wide(path), Wide(path), std::vector<ncTopFolderInfo>(), false, u"docmgr-cli");
  openedRoot_ = path;
  return docMgr_.get();
}

ncIDocMgr* CliContext::bareDocMgr() {
  if (!bareDocMgr_) bareDocMgr_ = host_.create<ncIDocMgr>(NC_DOCMGR_CONTRACTID);
  if (!bareDocMgr_) throw std::runtime_error("the module did not create the document manager");
  return bareDocMgr_.get();
}

void CliContext::watchLocks(int timeoutSeconds) { lockWatch_.reset(new LockWatch(timeoutSeconds, json)); }

void CliContext::closeRoot() {
  if (docMgr_) docMgr_->Close();
  docMgr_.reset();
  openedRoot_.clear();
}

std::string NormalPath(const std::string& path) {
  std::string root = path.substr(0, RootLength(path));
  for (char& c : root)
    if (IsSeparator(c)) c = '/';
  std::vector<std::string> parts;
  size_t begin = root.size();
  while (begin <= path.size()) {
    size_t end = begin;
    while (end < path.size() && !IsSeparator(path[end])) ++end;
    const std::string part = path.substr(begin, end - begin);
    if (part == "..") {
      if (!parts.empty()) parts.pop_back();  // ".." above "/" stays at "/"
    } else if (!part.empty() && part != ".") {
      parts.push_back(part);
    }
    begin = end + 1;
  }
  if (parts.empty()) return root.empty() ? "/" : root;
  std::string normal = root;
  if (!normal.empty() && normal.back() == '/') normal.pop_back();
  for (const std::string& part : parts) normal += "/" + part;
  return normal;
}

std::string AbsolutePath(const std::string& path) {
  const std::string full = Narrow(platform::GetFullPath(Wide(path)));
  if (RootLength(full) == 0) throw std::runtime_error("cannot read the current folder");
  return NormalPath(full);
}

base::String Wide(const std::string& path) {
  base::String wide = base::FromNativeBytes(path);
  // The component cuts paths at the system's own separator only.
  if (OnWindows()) std::replace(wide.begin(), wide.end(), u'/', platform::kPathSeparator);
  return wide;
}
std::string Narrow(const base::String& text) { return base::ToNativeBytes(text); }
