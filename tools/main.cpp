// docmgr-cli: see and drive the local state of a sync root through the docmgr module,
// loaded exactly as a client loads it.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string>
#include <vector>

#include "CliCommand.h"
#include "CliHelp.h"
#include "OsError.h"
#include "Translation.h"
#include "docmgr/Exception.h"
#include "platform/ncPlatform.h"

std::vector<CliCommand>& CliRegistry::commands() {
  static std::vector<CliCommand> list;
  return list;
}

const CliCommand* CliRegistry::find(const std::string& name) {
  for (const CliCommand& command : commands())
    if (name == command.name) return &command;
  return nullptr;
}

void UsageError(const std::string& name, const std::string& why) {
  const CliCommand* command = CliRegistry::find(name);
  std::string text = why.empty() ? std::string() : why + "\n";
  text += std::string(Tr("usage:")) + " docmgr-cli " + name + (command ? std::string(" ") + command->usage : "");
  throw CliError(text, kExitUsage);
}

int RunCommand(CliContext& context, const std::string& name, const std::vector<std::string>& args) {
  const CliCommand* command = CliRegistry::find(name);
  if (!command) throw CliError(std::string(Tr("unknown command")) + " '" + name + "' (docmgr-cli help)", kExitUsage);
  return command->run(context, args);
}

namespace {

// Under --json a failure is a JSON object on standard output, so a script reading the
// output always gets JSON; otherwise one line on standard error.
void ReportFailure(const CliContext& context, const std::string& message, int exitCode, int componentCode,
                   const OsError* os) {
  if (!context.json) {
    std::fprintf(stderr, "docmgr-cli: %s\n", message.c_str());
    return;
  }
  JsonWriter json;
  json.beginObject().member("error", message).member("exitCode", exitCode);
  if (componentCode) json.member("code", componentCode);
  if (os && os->win32Code) json.member("osError", os->text).member("osCode", os->win32Code);
  json.endObject().print();
}

// A failed statement's message carries the whole statement, which can run to hundreds of
// characters; a person needs what SQLite said, and the start of the statement.
std::string ShortMessage(const std::string& message) {
  const std::string sqlPrefix = "Sql: ";
  const size_t sql = message.find(sqlPrefix);
  const size_t error = message.rfind(". Error: ");
  if (sql == std::string::npos || error == std::string::npos || error < sql) return message;
  const size_t kShownSql = 60;
  const std::string statement = message.substr(sql + sqlPrefix.size(), error - sql - sqlPrefix.size());
  return message.substr(error + 9) + " (" + Tr("statement:") + " " +
         (statement.size() > kShownSql ? statement.substr(0, kShownSql) + "..." : statement) + ")";
}

// The options every command takes, wherever they stand.
void TakeGlobalOptions(const std::vector<std::string>& arguments, CliContext& context, int& timeoutSeconds,
                       std::vector<std::string>& args) {
  const size_t count = arguments.size();
  for (size_t i = 0; i < count; ++i) {
    const std::string& arg = arguments[i];
    if (arg == "--json") {
      context.json = true;
    } else if (arg == "--quiet") {
      context.quiet = true;
    } else if (arg == "--timeout") {
      char* end = nullptr;
      const long seconds = i + 1 < count ? std::strtol(arguments[i + 1].c_str(), &end, 10) : 0;
      if (i + 1 >= count || *end != 0 || seconds < 1 || seconds > 86400)
        throw CliError(Tr("--timeout needs a number of seconds (1 to 86400)"), kExitUsage);
      timeoutSeconds = static_cast<int>(seconds);
      ++i;
    } else {
      args.push_back(arg);
    }
  }
}

int Run(CliContext& context, const std::vector<std::string>& arguments) {
  std::vector<std::string> args;
  int timeoutSeconds = 0;
  TakeGlobalOptions(arguments, context, timeoutSeconds, args);
  if (args.empty()) {
    PrintUsage(stderr);
    return kExitUsage;
  }
  if (args[0] == "--version") {
    std::printf("docmgr-cli %s\n", DOCMGR_VERSION);
    return kExitOk;
  }
  if (args[0] == "help" || args[0] == "--help" || args[0] == "-h") return Help(std::vector<std::string>(args.begin() + 1, args.end()));
  const std::string name = args[0];
  args.erase(args.begin());
  context.watchLocks(timeoutSeconds);
  context.loadModule();
  const int status = RunCommand(context, name, args);
  context.closeRoot();
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  CliContext context;
  context.quiet = !platform::IsStandardErrorTerminal();
  try {
    return Run(context, platform::GetCommandLineArguments(argc, argv));
  } catch (const CliError& e) {
    ReportFailure(context, e.what(), e.exitCode(), 0, nullptr);
    return e.exitCode();
  } catch (const base::Exception& e) {
    const OsError os = FindOsError(e);
    std::string message = ShortMessage(base::ToUtf8(e.getMessage())) + (os.win32Code ? ": " + os.text : std::string());
    if (!context.json) message += " (code " + std::to_string(e.getCode()) + ")";
    ReportFailure(context, message, kExitFailure, e.getCode(), &os);
  } catch (const std::exception& e) {
    ReportFailure(context, e.what(), kExitFailure, 0, nullptr);
  }
  return kExitFailure;
}
