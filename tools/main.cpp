// docmgr-cli: see and drive the local state of a sync root through the docmgr module,
// loaded exactly as a client loads it.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string>
#include <vector>

#include "CliCommand.h"
#include "base/Exception.h"

std::vector<CliCommand>& CliRegistry::commands() {
  static std::vector<CliCommand> list;
  return list;
}

const CliCommand* CliRegistry::find(const std::string& name) {
  for (const CliCommand& command : commands())
    if (name == command.name) return &command;
  return nullptr;
}

int RunCommand(CliContext& context, const std::string& name, const std::vector<std::string>& args) {
  const CliCommand* command = CliRegistry::find(name);
  if (!command) {
    std::fprintf(stderr, "docmgr-cli: unknown command '%s'\n", name.c_str());
    return 2;
  }
  return command->run(context, args);
}

int UsageError(const std::string& name) {
  const CliCommand* command = CliRegistry::find(name);
  if (command) std::fprintf(stderr, "usage: docmgr-cli %s %s\n", command->name, command->usage);
  return 2;
}

namespace {

void PrintUsage() {
  std::printf("usage: docmgr-cli [--json] COMMAND ARGS...\n\ncommands:\n");
  for (const CliCommand& command : CliRegistry::commands()) {
    const std::string call = std::string(command.name) + " " + command.usage;
    std::printf("  %-28s %s\n", call.c_str(), command.summary);
  }
}

// The options every command takes, wherever they stand; false on a malformed --timeout.
bool TakeGlobalOptions(int argc, char** argv, CliContext& context, int& timeoutSeconds, std::vector<std::string>& args) {
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    if (arg == "--json") {
      context.json = true;
    } else if (arg == "--quiet") {
      context.quiet = true;
    } else if (arg == "--timeout") {
      char* end = nullptr;
      const long seconds = i + 1 < argc ? std::strtol(argv[i + 1], &end, 10) : 0;
      if (i + 1 >= argc || *end != 0 || seconds < 1 || seconds > 86400) return false;
      timeoutSeconds = static_cast<int>(seconds);
      ++i;
    } else {
      args.push_back(arg);
    }
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  CliContext context;
  context.quiet = !::isatty(STDERR_FILENO);
  std::vector<std::string> args;
  int timeoutSeconds = 0;
  if (!TakeGlobalOptions(argc, argv, context, timeoutSeconds, args)) {
    std::fprintf(stderr, "docmgr-cli: --timeout needs a number of seconds (1 to 86400)\n");
    return 2;
  }
  if (args.empty() || args[0] == "help" || args[0] == "--help" || args[0] == "-h") {
    PrintUsage();
    return args.empty() ? 2 : 0;
  }
  const std::string name = args[0];
  args.erase(args.begin());
  try {
    context.watchLocks(timeoutSeconds);
    context.loadModule(argv[0]);
    const int status = RunCommand(context, name, args);
    context.closeRoot();
    return status;
  } catch (const base::Exception& e) {
    std::fprintf(stderr, "docmgr-cli: %s (code %d)\n", e.what(), e.getCode());
  } catch (const std::exception& e) {
    std::fprintf(stderr, "docmgr-cli: %s\n", e.what());
  }
  return 1;
}
