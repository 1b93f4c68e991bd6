// Subcommands of docmgr-cli. Each source registers its commands with CLI_COMMAND; usage
// lines, help and the manual page are all made from this one table.
#pragma once

#include <cstdio>
#include <stdexcept>
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

// Exit codes: 0 done, 1 the work failed (or found a problem), 2 the command line is wrong.
const int kExitOk = 0;
const int kExitFailure = 1;
const int kExitUsage = 2;

// A failure the tool explains in one line; main prints it (as a JSON object under --json)
// and exits with its code.
class CliError : public std::runtime_error {
 public:
  explicit CliError(const std::string& message, int exitCode = kExitFailure)
      : std::runtime_error(message), exitCode_(exitCode) {}
  int exitCode() const { return exitCode_; }

 private:
  int exitCode_;
};

// Throws the usage error of a command: "usage: docmgr-cli NAME USAGE" from the table.
[[noreturn]] void UsageError(const std::string& name, const std::string& why = std::string());

// Runs another subcommand, as the demo does.
int RunCommand(CliContext& context, const std::string& name, const std::vector<std::string>& args);
