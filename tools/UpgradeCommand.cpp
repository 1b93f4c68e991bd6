// upgrade ROOT [--view 1|2] [--type-name N=NAME]...: run the upgrade manager on a sync root,
// as the client does before it opens the stores, and show what it changed.
#include <sqlite3.h>

#include <chrono>
#include <cstdio>
#include <thread>

#include "CacheCliSupport.h"
#include "CliCommand.h"
#include "ProgressBar.h"
#include "Translation.h"
#include "docmgr/Exception.h"
#include "docmgr/ncIUpgradeMgr.h"
#include "platform/ncPlatform.h"

namespace {

struct Versions {
  int schema = 0;  // 0: none recorded
  int view = 0;
};

// What the command line asks for.
struct Request {
  std::string root;
  int layout = 0;  // 0: keep the current layout
  ncUpgradeData data;
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

Request ParseArguments(const std::vector<std::string>& args) {
  Request request;
  std::vector<std::string> positional;
  for (size_t i = 0; i < args.size(); ++i) {
    if (args[i] == "--view") {
      if (i + 1 >= args.size() || !ParseLayout(args[++i], request.layout)) UsageError("upgrade", Tr("--view takes 1 or 2"));
    } else if (args[i] == "--type-name") {
      if (i + 1 >= args.size() || !ParseTypeName(args[++i], request.data))
        UsageError("upgrade", Tr("--type-name takes a type number and a name: N=NAME"));
    } else {
      positional.push_back(args[i]);
    }
  }
  if (positional.size() != 1) UsageError("upgrade");
  request.root = positional[0];
  return request;
}

// Refuses a root the upgrade cannot start from before the module touches anything.
void CheckVersionInRange(const std::string& root, int schema) {
  if (!schema || (schema >= NC_SCHEMA_VERSION_OLDEST && schema <= NC_SCHEMA_VERSION_CURRENT)) return;
  char why[160];
  std::snprintf(why, sizeof why, Tr("is at schema version %d; only versions %d to %d can be upgraded"), schema,
                NC_SCHEMA_VERSION_OLDEST, NC_SCHEMA_VERSION_CURRENT);
  throw CliError(Printable(root) + " " + why);
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

// Runs what the manager finds to do; the summary tells how it ended.
ncUpgradeSummary RunUpgrade(CliContext& context, const Request& request, int layout) {
  nsCOMPtr<ncIUpgradeMgr> upgrade = context.host().create<ncIUpgradeMgr>(NC_UPGRADEMGR_CONTRACTID);
  if (!upgrade) throw CliError(Tr("the module did not create the upgrade manager"));
  const base::String path = Wide(request.root);
  upgrade->Init(path, path, {}, layout);
  upgrade->SetData(request.data);
  ncUpgradeSummary summary;
  upgrade->GetSummary(summary);
  if (upgrade->NeedUpgrade()) {
    upgrade->DoUpgrade();
    WaitWithProgress(upgrade.get(), summary, context.quiet || context.json);
  } else {
    summary.state = 2;
  }
  upgrade->Close();
  return summary;
}

void PrintJson(const std::string& root, const Versions& before, const Versions& after, const ncUpgradeSummary& summary) {
  JsonWriter json;
  json.beginObject().member("root", root).member("ok", summary.state == 2);
  json.member("steps", summary.total).member("done", summary.done);
  json.key("schema").beginArray().value(before.schema).value(after.schema).endArray();
  json.key("view").beginArray().value(before.view).value(after.view).endArray();
  json.member("message", Narrow(summary.message)).endObject().print();
}

void PrintTable(const Versions& before, const Versions& after, const ncUpgradeSummary& summary) {
  std::printf("schema version  %s -> %s\n", VersionText(before.schema).c_str(), VersionText(after.schema).c_str());
  std::printf("view layout     %s -> %s\n", VersionText(before.view).c_str(), VersionText(after.view).c_str());
  std::printf("steps           %g of %g done\n", summary.done, summary.total);
  if (summary.state == 2 && before.schema == after.schema && before.view == after.view)
    std::printf("%s\n", Tr("Nothing to change: the root is at the current version."));
}

void ThrowFailure(const std::string& root, const Versions& before, const ncUpgradeSummary& summary) {
  std::string text = Tr("upgrade failed:") + (" " + Printable(root) + ": " + Printable(Narrow(summary.message)));
  if (before.schema < 7) text += std::string(" (") + Tr("type names are given with --type-name N=NAME") + ")";
  throw CliError(text);
}

int Upgrade(CliContext& context, const std::vector<std::string>& args) {
  Request request = ParseArguments(args);
  request.root = CheckSyncRoot(request.root, true);
  const std::string dataDir = request.root + "/" + kDataDirectoryName;
  const Versions before = ReadVersions(dataDir);
  CheckVersionInRange(request.root, before.schema);
  const int layout = request.layout ? request.layout : before.view ? before.view : 1;
  const ncUpgradeSummary summary = RunUpgrade(context, request, layout);
  const Versions after = ReadVersions(dataDir);
  // A failed run under --json is still the report (with ok false), so scripts read one shape.
  if (context.json) {
    PrintJson(request.root, before, after, summary);
    return summary.state == 2 ? kExitOk : kExitFailure;
  }
  PrintTable(before, after, summary);
  if (summary.state != 2) ThrowFailure(request.root, before, summary);
  return kExitOk;
}

CLI_COMMAND("upgrade", "ROOT [--view 1|2] [--type-name N=NAME]...",
            "bring the root's databases to the current schema and view layout", Upgrade);

}  // namespace
