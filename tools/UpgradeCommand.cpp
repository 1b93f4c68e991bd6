// upgrade ROOT [--view N]: run the upgrade manager on a sync root, as the client does before
// it opens the stores, and show what it changed.
#include <sqlite3.h>

#include <chrono>
#include <stdexcept>
#include <thread>

#include "CliCommand.h"
#include "ProgressBar.h"
#include "docmgr/Exception.h"
#include "docmgr/ncIUpgradeMgr.h"
#include "platform/ncPlatform.h"

namespace {

const int kCurrentVersion = 24;

struct Versions {
  int schema = 0;  // 0: none recorded
  int view = 0;
};

int ReadVersion(sqlite3* db, const char* table) {
  const std::string sql = std::string("select versionId from ") + table + " limit 1";
  sqlite3_stmt* statement = nullptr;
  int version = 0;
  if (sqlite3_prepare_v2(db, sql.c_str(), -1, &statement, nullptr) == SQLITE_OK &&
      sqlite3_step(statement) == SQLITE_ROW)
    version = sqlite3_column_int(statement, 0);
  sqlite3_finalize(statement);
  return version;
}

// The versions config.db records, read without writing anything.
Versions ReadVersions(const std::string& dataDir) {
  Versions versions;
  sqlite3* db = nullptr;
  // SQLite takes the platform's own form of a file name (UTF-8 on Windows).
  const std::string path = platform::NativePath(Wide(dataDir + "/config.db"));
  if (sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK) {
    versions.schema = ReadVersion(db, "tb_version");
    versions.view = ReadVersion(db, "tb_viewver");
  }
  sqlite3_close(db);
  return versions;
}

std::string VersionText(int version) { return version ? std::to_string(version) : std::string("none"); }

// --view takes the layout 1 or 2 and nothing else.
bool ParseLayout(const std::string& text, int& layout) {
  if (text != "1" && text != "2") return false;
  layout = text[0] - '0';
  return true;
}

// --type-name N=NAME: the name shown for the document type N, which databases older than
// version 7 do not keep.
bool ParseTypeName(const std::string& text, ncUpgradeData& data) {
  const size_t equals = text.find('=');
  if (equals == 0 || equals == std::string::npos || equals + 1 == text.size()) return false;
  const std::string number = text.substr(0, equals);
  if (number.find_first_not_of("0123456789") != std::string::npos || number.size() > 9) return false;
  data.typeNames[std::stoi(number)] = base::FromNativeBytes(text.substr(equals + 1));
  return true;
}

bool ParseArguments(const std::vector<std::string>& args, std::string& root, int& layout, ncUpgradeData& data) {
  std::vector<std::string> positional;
  for (size_t i = 0; i < args.size(); ++i) {
    if (args[i] == "--view") {
      if (i + 1 >= args.size() || !ParseLayout(args[++i], layout)) return false;
    } else if (args[i] == "--type-name") {
      if (i + 1 >= args.size() || !ParseTypeName(args[++i], data)) return false;
    } else {
      positional.push_back(args[i]);
    }
  }
  if (positional.size() != 1) return false;
  root = positional[0];
  return true;
}

void WaitWithProgress(ncIUpgradeMgr* upgrade, ncUpgradeSummary& summary, bool quiet) {
  ProgressBar bar("upgrade", static_cast<size_t>(summary.total), quiet);
  size_t shown = 0;
  for (upgrade->GetSummary(summary); summary.state < 2; upgrade->GetSummary(summary)) {
    const size_t done = static_cast<size_t>(summary.done);
    if (done > shown) bar.advance(done - shown);
    shown = done;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  if (summary.state == 2) bar.finish();
}

void Report(const CliContext& context, const std::string& root, const Versions& before, const Versions& after,
            const ncUpgradeSummary& summary) {
  if (context.json) {
    std::printf(
        "{\"root\": %s, \"ok\": %s, \"steps\": %g, \"done\": %g, \"schema\": [%d, %d], \"view\": [%d, %d], "
        "\"message\": %s}\n",
        JsonText(root).c_str(), summary.state == 2 ? "true" : "false", summary.total, summary.done, before.schema,
        after.schema, before.view, after.view, JsonText(Narrow(summary.message)).c_str());
    return;
  }
  std::printf("schema version  %s -> %s\n", VersionText(before.schema).c_str(), VersionText(after.schema).c_str());
  std::printf("view layout     %s -> %s\n", VersionText(before.view).c_str(), VersionText(after.view).c_str());
  std::printf("steps           %g of %g done\n", summary.done, summary.total);
  if (summary.state != 2)
    std::fprintf(stderr, "docmgr-cli: upgrade of %s failed: %s%s\n", root.c_str(), Narrow(summary.message).c_str(),
                 before.schema < 7 ? " (type names are given with --type-name N=NAME)" : "");
  else if (before.schema == after.schema && before.view == after.view)
    std::printf("Nothing to change: %s is at the current version.\n", root.c_str());
}

int Upgrade(CliContext& context, const std::vector<std::string>& args) {
  std::string root;
  int layout = 0;  // 0: keep the current layout
  ncUpgradeData data;
  if (!ParseArguments(args, root, layout, data)) {
    std::fprintf(stderr, "usage: docmgr-cli upgrade ROOT [--view 1|2] [--type-name N=NAME]...\n");
    return 2;
  }
  root = AbsolutePath(root);
  const std::string dataDir = root + "/.kestrove.cache";
  if (!platform::IsDirectory(Wide(dataDir))) {
    std::fprintf(stderr, "docmgr-cli: %s has no local state (no %s); nothing to upgrade.\n", root.c_str(),
                 dataDir.c_str());
    return 1;
  }
  const Versions before = ReadVersions(dataDir);
  if (before.schema && (before.schema < 4 || before.schema > kCurrentVersion)) {
    std::fprintf(stderr, "docmgr-cli: %s is at schema version %d; only versions 4 to %d can be upgraded.\n",
                 root.c_str(), before.schema, kCurrentVersion);
    return 1;
  }
  if (!layout) layout = before.view ? before.view : 1;

  nsCOMPtr<ncIUpgradeMgr> upgrade = context.host().create<ncIUpgradeMgr>(NC_UPGRADEMGR_CONTRACTID);
  if (!upgrade) throw std::runtime_error("the module did not create the upgrade manager");
  const base::String path = Wide(root);
  upgrade->Init(path, path, {}, layout);
  upgrade->SetData(data);
  ncUpgradeSummary summary;
  upgrade->GetSummary(summary);
  if (upgrade->NeedUpgrade()) {
    upgrade->DoUpgrade();
    WaitWithProgress(upgrade.get(), summary, context.quiet || context.json);
  } else {
    summary.state = 2;
  }
  upgrade->Close();
  Report(context, root, before, ReadVersions(dataDir), summary);
  return summary.state == 2 ? 0 : 1;
}

CLI_COMMAND("upgrade", "ROOT [--view 1|2] [--type-name N=NAME]...",
            "bring the root's databases to the current schema and view layout", Upgrade);

}  // namespace
