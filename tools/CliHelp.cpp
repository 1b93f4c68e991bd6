#include "CliHelp.h"

#include <algorithm>

#include "CliCommand.h"
#include "Translation.h"

namespace {

const char kGlobalOptions[] =
    "--json: output for scripts: one JSON document, times in microseconds since 1970 (UTC), "
    "failures as {\"error\": ...} objects\n"
    "--quiet: no progress bars\n"
    "--timeout SECONDS: stop waiting for a database another process holds after SECONDS "
    "(the component waits up to 300 s)";

const char kExitCodes[] = "0: done; 1: the work failed or found a problem; 2: the command line is wrong";

// The commands by name: the registry holds them in the order the sources happened to load.
std::vector<const CliCommand*> SortedCommands() {
  std::vector<const CliCommand*> sorted;
  for (const CliCommand& command : CliRegistry::commands()) sorted.push_back(&command);
  std::sort(sorted.begin(), sorted.end(),
            [](const CliCommand* a, const CliCommand* b) { return std::string(a->name) < b->name; });
  return sorted;
}

// Text for troff: a leading "." or "'" and backslashes would be read as requests.
std::string Troff(const std::string& text) {
  std::string out;
  for (const char c : text) {
    if (c == '\\') out += "\\e";
    else if (c == '-') out += "\\-";
    else out += c;
  }
  return out;
}

void PrintManPage() {
  std::printf(".TH DOCMGR-CLI 1 \"\" \"docmgr %s\" \"User Commands\"\n", DOCMGR_VERSION);
  std::printf(".SH NAME\ndocmgr\\-cli \\- see and drive the local state of a sync root\n");
  std::printf(".SH SYNOPSIS\n.B docmgr\\-cli\n[\\-\\-json] [\\-\\-quiet] [\\-\\-timeout SECONDS] COMMAND ARGS...\n");
  std::printf(".SH COMMANDS\n");
  for (const CliCommand* command : SortedCommands())
    std::printf(".TP\n.B %s %s\n%s\n", command->name, Troff(command->usage).c_str(), Troff(command->summary).c_str());
  std::printf(".SH OPTIONS\n");
  std::string options = kGlobalOptions;
  for (size_t begin = 0; begin < options.size();) {
    const size_t end = options.find('\n', begin) == std::string::npos ? options.size() : options.find('\n', begin);
    const std::string line = options.substr(begin, end - begin);
    const size_t colon = line.find(':');
    std::printf(".TP\n.B %s\n%s\n", Troff(line.substr(0, colon)).c_str(), Troff(line.substr(colon + 2)).c_str());
    begin = end + 1;
  }
  std::printf(".SH EXIT STATUS\n%s\n", Troff(kExitCodes).c_str());
}

}  // namespace

void PrintUsage(FILE* out) {
  std::fprintf(out, "%s docmgr-cli [--json] [--quiet] [--timeout SECONDS] COMMAND ARGS...\n\n%s\n", Tr("usage:"),
               Tr("commands:"));
  for (const CliCommand* command : SortedCommands()) {
    const std::string call = std::string(command->name) + " " + command->usage;
    if (call.size() > 28) std::fprintf(out, "  %s\n  %-28s %s\n", call.c_str(), "", Tr(command->summary));
    else std::fprintf(out, "  %-28s %s\n", call.c_str(), Tr(command->summary));
  }
  std::fprintf(out, "\n%s\n", Tr("options:"));
  const std::string options = Tr(kGlobalOptions);
  for (size_t begin = 0; begin < options.size();) {
    const size_t end = std::min(options.find('\n', begin), options.size());
    std::fprintf(out, "  %s\n", options.substr(begin, end - begin).c_str());
    begin = end + 1;
  }
  std::fprintf(out, "\n%s %s\n", Tr("exit codes:"), Tr(kExitCodes));
}

int Help(const std::vector<std::string>& args) {
  if (args.empty()) {
    PrintUsage(stdout);
    return kExitOk;
  }
  if (args.size() == 1 && args[0] == "--man") {
    PrintManPage();
    return kExitOk;
  }
  const CliCommand* command = args.size() == 1 ? CliRegistry::find(args[0]) : nullptr;
  if (!command) UsageError("help", std::string(Tr("unknown command")) + " '" + (args.empty() ? "" : args[0]) + "'");
  std::printf("%s docmgr-cli %s %s\n\n%s\n", Tr("usage:"), command->name, command->usage, Tr(command->summary));
  return kExitOk;
}

namespace {

int HelpCommand(CliContext&, const std::vector<std::string>& args) { return Help(args); }

}  // namespace

CLI_COMMAND("help", "[COMMAND | --man]", "this overview, the usage of one command, or the manual page in troff",
            HelpCommand);
