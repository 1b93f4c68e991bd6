#include "ScratchState.h"

#include <ftw.h>
#include <stdlib.h>

#include <cstdio>

#include "CliCommand.h"
#include "Translation.h"

ScratchState::ScratchState() {
  char pattern[] = "/tmp/docmgr-cli-dry-run.XXXXXX";
  if (!::mkdtemp(pattern)) throw CliError(Tr("cannot create a scratch folder in /tmp"));
  path_ = pattern;
}

ScratchState::~ScratchState() {
  ::nftw(path_.c_str(), [](const char* item, const struct stat*, int, struct FTW*) { return std::remove(item); }, 16,
         FTW_DEPTH | FTW_PHYS);
}
