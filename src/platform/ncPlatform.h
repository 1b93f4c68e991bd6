// The operating-system interface of the component, shaped after Win32: operations return a
// boolean and leave a thread-local last-error code with Win32 values on failure. The POSIX
// backend emulates these semantics; the Windows backend passes through.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "text/String.h"

namespace platform {

using base::String;

// Win32 error codes the component looks at.
enum : uint32_t {
  kErrorSuccess = 0,
  kErrorFileNotFound = 2,
  kErrorPathNotFound = 3,
  kErrorTooManyOpenFiles = 4,
  kErrorAccessDenied = 5,
  kErrorInvalidData = 13,
  kErrorNotSameDevice = 17,
  kErrorWriteProtect = 19,
  kErrorGenFailure = 31,
  kErrorSharingViolation = 32,
  kErrorNotSupported = 50,
  kErrorFileExists = 80,
  kErrorInvalidParameter = 87,
  kErrorDiskFull = 112,
  kErrorDirNotEmpty = 145,
  kErrorAlreadyExists = 183,
  kErrorFilenameExcedRange = 206,
  kErrorIoDevice = 1117,
};

// File attributes, Win32 values.
enum : uint32_t {
  kAttrReadOnly = 0x1,
  kAttrHidden = 0x2,
  kAttrSystem = 0x4,
  kAttrDirectory = 0x10,
  kAttrNormal = 0x80,
  kInvalidAttributes = 0xFFFFFFFF,
};

uint32_t GetLastError();
void SetLastError(uint32_t code);
uint32_t Win32ErrorFromErrno(int error);
// The platform's text for a Win32 error code.
String SystemErrorText(uint32_t code);

// The separator the platform writes between path names, and every unit it reads as one.
#ifdef _WIN32
constexpr char16_t kPathSeparator = u'\\';
constexpr const char16_t* kPathSeparators = u"\\/";
#else
constexpr char16_t kPathSeparator = u'/';
constexpr const char16_t* kPathSeparators = u"/";
#endif

// "\\?\" handling: the identity on POSIX when adding (Windows: absolute paths get the
// prefix, '/' becomes '\\'); removal strips the four units.
String AddLongPathPrefix(const String& path);
String RemoveLongPathPrefix(const String& path);
// The native form of a path for system calls. POSIX: the bytes of base::ToNativeBytes
// (lossless for names that are not valid UTF-8), long-path prefix removed. Windows: UTF-8
// for SQLite, the prefix kept only where the path needs it.
std::string NativePath(const String& path);

// True when the path is beyond what the native file system takes (POSIX: the UTF-8 path
// reaches PATH_MAX bytes or one of its names exceeds NAME_MAX bytes).
bool ExceedsNativePathLimits(const String& path);

uint32_t GetFileAttributes(const String& path);
// The size in bytes of a file.
bool GetFileSize(const String& path, int64_t& size);
bool SetFileAttributes(const String& path, uint32_t attributes);

// What is at a path, a link not followed: a link or a device is neither a regular file nor
// a folder. Windows tells only links (reparse points), folders and files apart.
enum class FileKind { kRegularFile, kDirectory, kLink, kPipe, kSocket, kDevice, kOther };
struct FileInfo {
  bool isDirectory;
  bool isRegularFile;
  FileKind kind;
  int64_t size;
  int64_t modifiedMicros;  // since 1970
};
bool GetFileInfo(const String& path, FileInfo& info);
// True for a folder or a link to one.
bool IsDirectory(const String& path);
// The absolute form of a path, against the current folder.
String GetFullPath(const String& path);

bool CreateDirectory(const String& path);
// Creates an empty file, truncating an existing one.
bool CreateEmptyFile(const String& path);
// Creates the file or truncates an existing one, then writes bytes into it.
bool WriteWholeFile(const String& path, const std::string& bytes);
// True when this process may open the file for reading.
bool IsReadable(const String& path);
// The folder for temporary files (POSIX: $TMPDIR, else /tmp), without a trailing separator.
String GetTempDirectory();
// Names of the entries of a folder, without "." and "..".
bool ListDirectory(const String& path, std::vector<String>& names);
bool RemoveDirectory(const String& path);
// True when the folder is the root of a mounted file system; false when it is not or when
// it cannot be examined.
bool IsMountPoint(const String& path);
bool DeleteFile(const String& path);
// Never overwrites: fails with 183 when the target exists. Across file systems a file is
// copied (data, mode, times, extended attributes) and then removed; a folder fails with 17.
bool MoveFile(const String& source, const String& target);
// Copies data, mode, times and extended attributes. With failIfExists an existing target
// fails with 183; without it the target is replaced.
bool CopyFile(const String& source, const String& target, bool failIfExists);

// Named streams of a file or folder (extended attributes "user.kestrove.<name>" on POSIX).
// A missing stream reads as error 2.
bool ReadStream(const String& path, const String& streamName, std::string& bytes);
bool WriteStream(const String& path, const String& streamName, const std::string& bytes);
bool RemoveStream(const String& path, const String& streamName);
bool HasStream(const String& path, const String& streamName);

// Gives a folder an icon and, when text is not null, a display text for the desktop shell.
bool CustomizeFolder(const String& path, const String* text, const String& iconFile, int iconIndex);

// Code page 936 (GBK): each GB2312 character takes two bytes of 0xA1 or more; a character
// the code page lacks becomes '?'.
std::string ToCodePage936(const String& text);
String FromCodePage936(const std::string& bytes);

String GetUserName();
void CreateGuidBytes(uint8_t bytes[16]);
// Folder of the module (shared library or executable) that contains the address.
String GetModuleDirectory(const void* addressInModule);

// Wall clock.
struct LocalTime {
  int year, month, day, hour, minute, second, millisecond;
};
LocalTime GetLocalTime();
// The local time of a moment given in seconds since 1970; false when the system cannot
// represent it.
bool ToLocalTime(int64_t epochSeconds, LocalTime& local);
int64_t GetEpochMillis();
uint64_t GetCurrentThreadId();

// True when the standard error stream is a terminal (a console on Windows).
bool IsStandardErrorTerminal();
// The program's arguments after its name, as native bytes for base::FromNativeBytes: on
// POSIX argv as it is; on Windows the wide command line, whatever the code page.
std::vector<std::string> GetCommandLineArguments(int argc, char** argv);

// One error entry in the system log (syslog on POSIX, the event log on Windows).
void WriteSystemLog(const std::string& utf8Text);

// Module files loaded at run time. LoadModuleFile returns null on failure and leaves the
// system's reason for LastModuleError.
void* LoadModuleFile(const String& path);
void* FindModuleSymbol(void* module, const char* name);
void UnloadModuleFile(void* module);
std::string LastModuleError();

}  // namespace platform
