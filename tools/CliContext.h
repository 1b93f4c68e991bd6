// What every subcommand of docmgr-cli works with: the component host that has loaded
// libdocmgr, output options, and a document manager opened on a sync root.
#pragma once

#include <string>

#include "base/String.h"
#include "docmgr/public/ncIDocMgr.h"
#include "xpcom/nsCOMPtr.h"
#include "xpcom/nsHostLoader.h"

class CliContext {
 public:
  CliContext() = default;
  ~CliContext();

  // Loads the module: KESTROVE_MODULE, else the module file in ../lib beside the tool.
  void loadModule();
  // A document manager opened on root (log and messages in the same root).
  ncIDocMgr* openRoot(const std::string& root);
  void closeRoot();
  nsHostLoader& host() { return host_; }

  bool json = false;
  bool quiet = false;  // no progress bars (set when the output is not a terminal)

 private:
  nsHostLoader host_;
  nsCOMPtr<ncIDocMgr> docMgr_;
  std::string openedRoot_;
};

// An absolute path from a command-line argument.
std::string AbsolutePath(const std::string& path);
base::String Wide(const std::string& text);
std::string Narrow(const base::String& text);
// A JSON string literal.
std::string JsonText(const std::string& text);
