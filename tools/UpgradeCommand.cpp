// upgrade ROOT [--view N]: run the upgrade manager on a sync root, as the client does before
// it opens the stores.
#include <chrono>
#include <cstdlib>
#include <stdexcept>
#include <thread>

#include "CliCommand.h"
#include "ProgressBar.h"
#include "docmgr/ncIUpgradeMgr.h"

namespace {

int Upgrade(CliContext& context, const std::vector<std::string>& args) {
  std::vector<std::string> positional;
  int viewVersion = 1;
  for (size_t i = 0; i < args.size(); ++i) {
    if (args[i] == "--view" && i + 1 < args.size()) viewVersion = std::atoi(args[++i].c_str());
    else positional.push_back(args[i]);
  }
  if (positional.size() != 1) {
    std::fprintf(stderr, "usage: docmgr-cli upgrade ROOT [--view N]\n");
    return 2;
  }
  const std::string root = positional[0];
  nsCOMPtr<ncIUpgradeMgr> upgrade = context.host().create<ncIUpgradeMgr>(NC_UPGRADEMGR_CONTRACTID);
  if (!upgrade) throw std::runtime_error("the module did not create the upgrade manager");
  const base::String path = Wide(AbsolutePath(root));
  upgrade->Init(path, path, {}, viewVersion);
  ncUpgradeSummary summary;
  upgrade->GetSummary(summary);
  if (!upgrade->NeedUpgrade()) {
    std::printf(context.json ? "{\"upgraded\": false, \"state\": \"current\"}\n"
                             : "The databases of %s are at the current version.\n",
                root.c_str());
    upgrade->Close();
    return 0;
  }
  upgrade->DoUpgrade();
  {
    ProgressBar bar("upgrade", static_cast<size_t>(summary.total), context.quiet || context.json);
    size_t shown = 0;
    for (upgrade->GetSummary(summary); summary.state < 2; upgrade->GetSummary(summary)) {
      const size_t done = static_cast<size_t>(summary.done);
      if (done > shown) bar.advance(done - shown);
      shown = done;
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
  }
  upgrade->Close();
  const bool ok = summary.state == 2;
  if (context.json) {
    std::printf("{\"upgraded\": %s, \"steps\": %g, \"message\": %s}\n", ok ? "true" : "false", summary.total,
                JsonText(Narrow(summary.message)).c_str());
  } else if (ok) {
    std::printf("Upgraded %s (%g steps).\n", root.c_str(), summary.total);
  } else {
    std::fprintf(stderr, "docmgr-cli: upgrade failed: %s\n", Narrow(summary.message).c_str());
  }
  return ok ? 0 : 1;
}

CLI_COMMAND("upgrade", "ROOT [--view N]", "bring the root's databases to the current schema", Upgrade);

}  // namespace
