#include "CliContext.h"

#include <cstdlib>

#include <stdexcept>

#include "base/Path.h"
#include "platform/ncPlatform.h"

namespace {

// The module file of the build or installation the tool belongs to.
std::string ModuleBeside() {
  const base::String toolDir = platform::GetModuleDirectory(reinterpret_cast<const void*>(&ModuleBeside));
  return Narrow(base::Path::combine(base::Path::combine(toolDir, u".."), u"lib")) + "/" DOCMGR_MODULE_FILE_NAME;
}

}  // namespace

CliContext::~CliContext() { closeRoot(); }

void CliContext::loadModule() {
  const char* configured = std::getenv("KESTROVE_MODULE");
  const std::string file = configured ? configured : ModuleBeside();
  if (NS_FAILED(host_.loadModule(file))) throw std::runtime_error("cannot load the module: " + host_.lastError());
}

ncIDocMgr* CliContext::openRoot(const std::string& root) {
  const std::string path = AbsolutePath(root);
  if (docMgr_ && openedRoot_ == path) return docMgr_.get();
  closeRoot();
  docMgr_ = host_.create<ncIDocMgr>(NC_DOCMGR_CONTRACTID);
  if (!docMgr_) throw std::runtime_error("the module did not create the document manager");
  docMgr_->Init(Wide(path), Wide(path), std::vector<ncTopFolderInfo>(), false, u"docmgr-cli");
  openedRoot_ = path;
  return docMgr_.get();
}

void CliContext::closeRoot() {
  if (docMgr_) docMgr_->Close();
  docMgr_.reset();
  openedRoot_.clear();
}

std::string AbsolutePath(const std::string& path) { return Narrow(platform::GetFullPath(Wide(path))); }

base::String Wide(const std::string& text) { return base::FromUtf8(text); }
std::string Narrow(const base::String& text) { return base::ToUtf8(text); }

std::string JsonText(const std::string& text) {
  std::string out = "\"";
  for (unsigned char c : text) {
    switch (c) {
      case '"': out += "\\\""; break;
      case '\\': out += "\\\\"; break;
      case '\n': out += "\\n"; break;
      case '\r': out += "\\r"; break;
      case '\t': out += "\\t"; break;
      default:
        if (c < 0x20) {
          char escaped[8];
          std::snprintf(escaped, sizeof escaped, "\\u%04x", c);
          out += escaped;
        } else {
          out += static_cast<char>(c);
        }
    }
  }
  return out + "\"";
}
