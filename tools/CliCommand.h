// Subcommands of docmgr-cli. Each source registers its commands with CLI_COMMAND.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "CliContext.h"

struct CliCommand {
  const char* name;
  const char* usage;    // arguments, e.g. "ROOT [REL]"
  const char* summary;  // one line
  int (*run)(CliContext& context, const std::vector<std::string>& args);
};

class CliRegistry {
 public:
  static std::vector<CliCommand>& commands();
  static const CliCommand* find(const std::string& name);
  struct Add {
    explicit Add(const CliCommand& command) { commands().push_back(command); }
  };
};

#define CLI_CONCAT2(a, b) a##b
#define CLI_CONCAT(a, b) CLI_CONCAT2(a, b)
#define CLI_COMMAND(name, usage, summary, function) \
  static CliRegistry::Add CLI_CONCAT(cliCommand, __LINE__)(CliCommand{name, usage, summary, function})

// Prints "usage: docmgr-cli NAME USAGE" from the command table; returns 2, the exit code of a
// usage error.
int UsageError(const std::string& name);

// Runs another subcommand, as the demo does.
int RunCommand(CliContext& context, const std::string& name, const std::vector<std::string>& args);
