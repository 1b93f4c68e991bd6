// check ROOT: run SQLite's integrity check on every database of a sync root's data
// directory, each on its own connection, so one damaged or locked database does not hide
// the state of the others.
#include <algorithm>

#include "CacheCliSupport.h"
#include "CliCommand.h"
#include "OsError.h"
#include "Translation.h"
#include "docmgr/Exception.h"
#include "docmgr/ncIDBMgr.h"
#include "platform/ncPlatform.h"

namespace {

struct DatabaseState {
  std::string name;
  std::string status;   // ok, busy, corrupt, unreadable
  std::string problem;  // what SQLite or the OS said; empty when ok
};

std::vector<std::string> DatabaseFiles(const std::string& directory) {
  std::vector<std::string> files;
  std::vector<base::String> names;
  if (!platform::ListDirectory(Wide(directory), names))
    throw CliError(Tr("cannot read") + (" " + Printable(directory)) + ": " + OsErrorFromLastError().text);
  for (const base::String& entry : names) {
    const std::string name = Narrow(entry);
    if (name.size() > 3 && name.compare(name.size() - 3, 3, ".db") == 0) files.push_back(name);
  }
  std::sort(files.begin(), files.end());
  return files;
}

bool Mentions(const std::string& text, const char* part) { return text.find(part) != std::string::npos; }

std::string Classify(const std::string& problem) {
  if (Mentions(problem, "locked") || Mentions(problem, "busy")) return "busy";
  if (Mentions(problem, "unable to open") || Mentions(problem, "Open database failed") ||
      Mentions(problem, "disk I/O error") || Mentions(problem, "authorization"))
    return "unreadable";
  return "corrupt";
}

DatabaseState CheckDatabase(ncIDocMgr* docMgr, const std::string& directory, const std::string& name) {
  const std::string file = directory + "/" + name;
  if (!platform::IsReadable(Wide(file))) return {name, "unreadable", OsErrorFromLastError().text};
  try {
    ncIDBMgr* db = docMgr->CreateDBMgr();
    db->Open(Wide(file));
    // The wrapper runs statements without reading results: a damaged database makes this
    // statement fail (integer overflow), a sound one returns no row.
    db->ExecuteSql(u"select abs(-9223372036854775808) from pragma_integrity_check where integrity_check <> 'ok'");
    db->Close();
    return {name, "ok", std::string()};
  } catch (const base::Exception& e) {
    std::string why = e.what();
    const size_t sqliteSaid = why.rfind(". Error: ");
    if (sqliteSaid != std::string::npos) why = why.substr(sqliteSaid + 9);  // the statement is ours, not news
    if (Mentions(why, "integer overflow")) return {name, "corrupt", "the integrity check found damage"};
    return {name, Classify(why), why};
  }
}

int Check(CliContext& context, const std::vector<std::string>& args) {
  if (args.size() != 1) UsageError("check");
  const std::string data = CheckSyncRoot(args[0], true) + "/" + kDataDirectoryName;
  ncIDocMgr* docMgr = context.bareDocMgr();
  std::vector<DatabaseState> states;
  for (const std::string& name : DatabaseFiles(data)) states.push_back(CheckDatabase(docMgr, data, name));
  const bool allOk =
      std::all_of(states.begin(), states.end(), [](const DatabaseState& s) { return s.status == "ok"; });
  if (context.json) {
    JsonWriter json;
    json.beginObject().member("ok", allOk).key("databases").beginArray();
    for (const DatabaseState& s : states)
      json.beginObject().member("database", s.name).member("status", s.status).member("problem", s.problem).endObject();
    json.endArray().endObject().print();
  } else {
    for (const DatabaseState& s : states)
      std::printf("%-12s %s%s%s\n", Printable(s.name).c_str(), Tr(s.status.c_str()), s.problem.empty() ? "" : ": ",
                  Printable(s.problem).c_str());
  }
  return allOk ? 0 : 1;
}

CLI_COMMAND("check", "ROOT", "check every database of a sync root: ok, busy, corrupt or unreadable", Check);

}  // namespace
