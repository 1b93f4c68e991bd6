#include "ScratchState.h"

#include "CliCommand.h"
#include "Translation.h"
#include "base/Directory.h"
#include "base/Guid.h"
#include "docmgr/Exception.h"
#include "platform/ncPlatform.h"

ScratchState::ScratchState() {
  const base::String folder = platform::GetTempDirectory();
  const base::String path = folder + platform::kPathSeparator + u"docmgr-cli-dry-run." + base::Guid::create().toString();
  if (!platform::CreateDirectory(path))
    throw CliError(Tr("cannot create a scratch folder in the temporary folder") + (": " + Narrow(folder)));
  path_ = Narrow(path);
}

ScratchState::~ScratchState() {
  try {
    base::Directory::removeTree(Wide(path_));
  } catch (const base::Exception&) {
    // A scratch folder left behind in the temporary folder harms nothing.
  }
}
