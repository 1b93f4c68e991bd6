// What the operating system said about a failure, in its own words, with the Win32-style
// code the component carries (kept for scripts, which compare codes across platforms).
#pragma once

#include <string>

#include "docmgr/Exception.h"

struct OsError {
  int win32Code = 0;  // 0 when the failure did not come from the OS
  std::string text;   // strerror's words on Linux, else the exception's message
};

// The OS failure behind a component exception (its own or that of a cause), else the
// exception's message with code 0.
OsError FindOsError(const base::Exception& failure);
// The words for an errno value.
OsError OsErrorFromErrno(int error);
// The failure the platform layer's last call left (platform::GetLastError).
OsError OsErrorFromLastError();
