// check ROOT: open every database of a sync root's data directory through the module and
// run SQLite's integrity check on it.
#include <dirent.h>

#include <algorithm>
#include <memory>

#include "CliCommand.h"
#include "base/Exception.h"
#include "docmgr/ncIDBMgr.h"
#include "docmgr/ncIPathMgr.h"

namespace {

std::vector<std::string> DatabaseFiles(const std::string& directory) {
  std::vector<std::string> files;
  std::unique_ptr<DIR, int (*)(DIR*)> dir(::opendir(directory.c_str()), ::closedir);
  if (!dir) return files;
  while (const struct dirent* entry = ::readdir(dir.get())) {
    const std::string name = entry->d_name;
    if (name.size() > 3 && name.compare(name.size() - 3, 3, ".db") == 0) files.push_back(name);
  }
  std::sort(files.begin(), files.end());
  return files;
}

// Empty when the database is sound, else what is wrong with it.
std::string CheckDatabase(ncIDocMgr* docMgr, const std::string& file) {
  try {
    ncIDBMgr* db = docMgr->CreateDBMgr();
    db->Open(Wide(file));
    // The wrapper runs statements without reading results: a damaged database makes this
    // statement fail (integer overflow), a sound one returns no row.
    db->ExecuteSql(u"select abs(-9223372036854775808) from pragma_integrity_check where integrity_check <> 'ok'");
    db->Close();
    return std::string();
  } catch (const base::Exception& e) {
    const std::string why = e.what();
    return why.find("integer overflow") != std::string::npos ? "integrity check failed" : why;
  }
}

int Check(CliContext& context, const std::vector<std::string>& args) {
  if (args.size() != 1) {
    std::fprintf(stderr, "usage: docmgr-cli check ROOT\n");
    return 2;
  }
  ncIDocMgr* docMgr = context.openRoot(args[0]);
  nsCOMPtr<ncIPathMgr> pathMgr = nsCOMPtr<ncIPathMgr>::adopt(docMgr->GetPathMgr(u""));
  const std::string data = Narrow(pathMgr->GetDBPath());
  int damaged = 0;
  std::string json;
  for (const std::string& name : DatabaseFiles(data)) {
    const std::string problem = CheckDatabase(docMgr, data + "/" + name);
    if (!problem.empty()) ++damaged;
    if (context.json) {
      json += std::string(json.empty() ? "" : ", ") + "{\"database\": " + JsonText(name) +
              ", \"ok\": " + (problem.empty() ? "true" : "false") + ", \"problem\": " + JsonText(problem) + "}";
    } else {
      std::printf("%-12s %s\n", name.c_str(), problem.empty() ? "ok" : problem.c_str());
    }
  }
  if (context.json) std::printf("[%s]\n", json.c_str());
  return damaged ? 1 : 0;
}

CLI_COMMAND("check", "ROOT", "check the integrity of every database of a sync root", Check);

}  // namespace
