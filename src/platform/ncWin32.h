// <windows.h> without the macros that would rename the platform interface's functions
// (CopyFile to CopyFileW and so on) wherever both are used.
#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#undef CopyFile
#undef CreateDirectory
#undef DeleteFile
#undef GetFileAttributes
#undef GetUserName
#undef MoveFile
#undef RemoveDirectory
#undef SetFileAttributes
