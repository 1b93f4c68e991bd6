#include "CliContext.h"

#include <climits>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

#include <stdexcept>
#include <vector>

#include "Translation.h"
#include "base/Path.h"
#include "docmgr/ncIPathMgr.h"

namespace {

std::string ModuleBeside(const std::string& toolPath) {
  char resolved[PATH_MAX];
  std::string tool = ::realpath(toolPath.c_str(), resolved) ? resolved : toolPath;
  const size_t slash = tool.rfind('/');
  const std::string dir = slash == std::string::npos ? "." : tool.substr(0, slash);
  return dir + "/../lib/libdocmgr.so";
}

}  // namespace

CliContext::~CliContext() { closeRoot(); }

void CliContext::loadModule(const std::string& toolPath) {
  const char* configured = std::getenv("KESTROVE_MODULE");
  const std::string file = configured ? configured : ModuleBeside(toolPath);
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
  std::vector<std::string> parts;
  size_t begin = 0;
  while (begin <= path.size()) {
    size_t end = path.find('/', begin);
    if (end == std::string::npos) end = path.size();
    const std::string part = path.substr(begin, end - begin);
    if (part == "..") {
      if (!parts.empty()) parts.pop_back();  // ".." above "/" stays at "/"
    } else if (!part.empty() && part != ".") {
      parts.push_back(part);
    }
    begin = end + 1;
  }
  std::string normal;
  for (const std::string& part : parts) normal += "/" + part;
  return normal.empty() ? "/" : normal;
}

std::string AbsolutePath(const std::string& path) {
  if (!path.empty() && path[0] == '/') return NormalPath(path);
  char cwd[PATH_MAX];
  if (!::getcwd(cwd, sizeof cwd)) throw std::runtime_error("cannot read the current folder: " + std::string(std::strerror(errno)));
  return NormalPath(std::string(cwd) + "/" + path);
}

base::String Wide(const std::string& text) { return base::FromUtf8(text); }
std::string Narrow(const base::String& text) { return base::ToUtf8(text); }
