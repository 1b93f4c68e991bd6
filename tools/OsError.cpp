#include "OsError.h"

#include <cerrno>
#include <cstring>

#include "platform/ncPlatform.h"

namespace {

// The component reports OS failures with Win32 codes; on Linux the person at the terminal
// expects the system's own text, so the code is taken back to an errno value for strerror.
int ErrnoFor(int win32Code) {
  switch (win32Code) {
    case 2: return ENOENT;
    case 3: return ENOTDIR;
    case 4: return EMFILE;
    case 5: return EACCES;
    case 17: return EXDEV;
    case 19: return EROFS;
    case 32: return EBUSY;
    case 50: return ENOTSUP;
    case 87: return EINVAL;
    case 112: return ENOSPC;
    case 145: return ENOTEMPTY;
    case 183: return EEXIST;
    case 206: return ENAMETOOLONG;
    case 1117: return EIO;
    default: return 0;
  }
}

int Win32CodeFor(int error) {
  for (int code : {2, 3, 4, 5, 17, 19, 32, 50, 87, 112, 145, 183, 206, 1117})
    if (ErrnoFor(code) == error) return code;
  if (error == EPERM) return 5;
  return 0;
}

}  // namespace

OsError FindOsError(const base::Exception& failure) {
  for (const base::Exception* link = &failure; link; link = link->getCause().get()) {
    if (!link->isSystemError()) continue;
    const int error = ErrnoFor(link->getCode());
    return {link->getCode(), error ? std::strerror(error) : base::ToUtf8(link->getMessage())};
  }
  return {0, base::ToUtf8(failure.getMessage())};
}

OsError OsErrorFromErrno(int error) { return {Win32CodeFor(error), std::strerror(error)}; }

OsError OsErrorFromLastError() {
  const uint32_t code = platform::GetLastError();
  const int error = ErrnoFor(static_cast<int>(code));
  return {static_cast<int>(code), error ? std::strerror(error) : base::ToUtf8(platform::SystemErrorText(code))};
}
