// Win32 error codes from C library errors, and the texts of the codes the component uses
// (the words Windows itself gives them, so every backend reports alike).
#include <cerrno>

#include "platform/ncPlatform.h"

namespace platform {

uint32_t Win32ErrorFromErrno(int error) {
  switch (error) {
    case 0: return kErrorSuccess;
    case ENOENT: return kErrorFileNotFound;
    case ENODATA: return kErrorFileNotFound;  // a missing extended attribute, as a missing stream
    case ENOTDIR: return kErrorPathNotFound;
    case EACCES: case EPERM: return kErrorAccessDenied;
    case EROFS: return kErrorWriteProtect;
    case EEXIST: return kErrorAlreadyExists;
    case ENOTEMPTY: return kErrorDirNotEmpty;
    case EXDEV: return kErrorNotSameDevice;
    case ENOSPC: return kErrorDiskFull;
    case ENAMETOOLONG: return kErrorFilenameExcedRange;
    case EINVAL: return kErrorInvalidParameter;
    case EBUSY: return kErrorSharingViolation;
    case EMFILE: return kErrorTooManyOpenFiles;
#if defined(EOPNOTSUPP) && EOPNOTSUPP != ENOTSUP
    case EOPNOTSUPP:
#endif
    case ENOTSUP: return kErrorNotSupported;
    case EIO: return kErrorIoDevice;
    default: return kErrorGenFailure;
  }
}

String SystemErrorText(uint32_t code) {
  const char* text;
  switch (code) {
    case kErrorSuccess: text = "The operation completed successfully."; break;
    case kErrorFileNotFound: text = "The system cannot find the file specified."; break;
    case kErrorPathNotFound: text = "The system cannot find the path specified."; break;
    case kErrorTooManyOpenFiles: text = "The system cannot open the file."; break;
    case kErrorAccessDenied: text = "Access is denied."; break;
    case kErrorInvalidData: text = "The data is invalid."; break;
    case kErrorNotSameDevice: text = "The system cannot move the file to a different disk drive."; break;
    case kErrorWriteProtect: text = "The media is write protected."; break;
    case kErrorGenFailure: text = "A device attached to the system is not functioning."; break;
    case kErrorSharingViolation: text = "The process cannot access the file because it is being used by another process."; break;
    case kErrorNotSupported: text = "The request is not supported."; break;
    case kErrorFileExists: text = "The file exists."; break;
    case kErrorInvalidParameter: text = "The parameter is incorrect."; break;
    case kErrorDiskFull: text = "There is not enough space on the disk."; break;
    case kErrorDirNotEmpty: text = "The directory is not empty."; break;
    case kErrorAlreadyExists: text = "Cannot create a file when that file already exists."; break;
    case kErrorFilenameExcedRange: text = "The filename or extension is too long."; break;
    case kErrorIoDevice: text = "The request could not be performed because of an I/O device error."; break;
    default: return base::Format(u"System error %u.", code);
  }
  return base::FromAscii(text);
}

}  // namespace platform
