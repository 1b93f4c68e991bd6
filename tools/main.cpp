// docmgr-cli: see and drive the local state of a sync root through the docmgr module,
// loaded exactly as a client loads it.
#include <unistd.h>

#include <cstdio>
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

namespace {

void PrintUsage() {
  std::printf("usage: docmgr-cli [--json] COMMAND ARGS...\n\ncommands:\n");
  for (const CliCommand& command : CliRegistry::commands()) {
    const std::string call = std::string(command.name) + " " + command.usage;
    std::printf("  %-28s %s\n", call.c_str(), command.summary);
  }
}

}  // namespace

int main(int argc, char** argv) {
  CliContext context;
  context.quiet = !::isatty(STDERR_FILENO);
  std::vector<std::string> args;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--json") == 0) context.json = true;
    else if (std::strcmp(argv[i], "--quiet") == 0) context.quiet = true;
    else args.push_back(argv[i]);
  }
  if (args.empty() || args[0] == "help" || args[0] == "--help" || args[0] == "-h") {
    PrintUsage();
    return args.empty() ? 2 : 0;
  }
  const std::string name = args[0];
  args.erase(args.begin());
  try {
    context.loadModule();
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
