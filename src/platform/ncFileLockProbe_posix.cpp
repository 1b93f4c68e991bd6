#include "platform/ncFileLockProbe.h"

#include <fcntl.h>
#include <unistd.h>

#include "platform/ncPlatform.h"

bool ncFileLockProbe::isSupported() { return true; }

ncFileLockProbe::ncFileLockProbe(const base::String& path)
    : handle_(::open(platform::NativePath(path).c_str(), O_RDONLY | O_CLOEXEC)) {}

ncFileLockProbe::~ncFileLockProbe() {
  if (isOpen()) ::close(static_cast<int>(handle_));
}

// F_GETLK reports a conflicting lock of another process only, never this process's own.
bool ncFileLockProbe::heldByOther(int64_t start, int64_t length, int64_t& holder) const {
  if (!isOpen()) return false;
  struct flock probe = {};
  probe.l_type = F_WRLCK;
  probe.l_whence = SEEK_SET;
  probe.l_start = static_cast<off_t>(start);
  probe.l_len = static_cast<off_t>(length);
  if (::fcntl(static_cast<int>(handle_), F_GETLK, &probe) != 0 || probe.l_type == F_UNLCK) return false;
  holder = static_cast<int64_t>(probe.l_pid);
  return true;
}
