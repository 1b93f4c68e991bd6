// What every subcommand of docmgr-cli works with: the component host that has loaded
// libdocmgr, output options, and a document manager opened on a sync root.
#pragma once

#include <memory>
#include <string>

#include "JsonWriter.h"
#include "LockWatch.h"
#include "text/String.h"
#include "docmgr/ncIDocMgr.h"
#include "docmgr/nsCOMPtr.h"
#include "docmgr/nsHostLoader.h"

class CliContext {
 public:
  CliContext() = default;
  ~CliContext();

  // Loads the module: KESTROVE_MODULE, else the module file in ../lib beside the tool.
  void loadModule();
  // A document manager opened on root (log and messages in the same root).
  ncIDocMgr* openRoot(const std::string& root);
  void closeRoot();
  // A document manager that opens nothing, for the database wrappers it creates.
  ncIDocMgr* bareDocMgr();
  nsHostLoader& host() { return host_; }

  // Starts the watcher that reports waits on locked databases (see LockWatch).
  void watchLocks(int timeoutSeconds);

  bool json = false;
  bool quiet = false;  // no progress bars (set when the output is not a terminal)

 private:
  std::unique_ptr<LockWatch> lockWatch_;
  nsHostLoader host_;
  nsCOMPtr<ncIDocMgr> docMgr_;
  nsCOMPtr<ncIDocMgr> bareDocMgr_;
  std::string openedRoot_;
};

// An absolute path from a command-line argument, relative ones taken from the current
// folder, without ".", ".." or repeated separators, '/' between names (Windows takes it as
// well as '\'). ".." is resolved by the text, as a shell's "cd -L" does, so a symbolic link
// in the path does not change which root is meant.
std::string AbsolutePath(const std::string& path);
std::string NormalPath(const std::string& path);
// Paths and file names in the tool are native bytes (WTF-8 on Windows): a name that is not
// UTF-8 still reaches the same file. Wide gives the component a path with the system's
// separators; other command-line texts go through base::FromNativeBytes as they are.
base::String Wide(const std::string& path);
std::string Narrow(const base::String& path);
