// POSIX backend of the platform interface: emulates the Win32 semantics the component
// relies on (boolean results, a thread-local last-error code with Win32 values, hidden and
// system attributes in "user.DOSATTRIB", read-only as the owner-write bit).
#include "platform/ncPlatform.h"
#include "platform/ncAtomic.h"

#include <pratom.h>

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <iconv.h>
#include <pwd.h>
#include <syslog.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>

namespace platform {

namespace {

thread_local uint32_t lastError = kErrorSuccess;

const char kDosAttributeName[] = "user.DOSATTRIB";
const uint32_t kDosAttributeBits = kAttrHidden | kAttrSystem;

bool Fail(uint32_t code) {
  lastError = code;
  return false;
}

bool FailFromErrno() { return Fail(Win32ErrorFromErrno(errno)); }

bool Succeed() {
  lastError = kErrorSuccess;
  return true;
}

// Hidden and system bits stored as text ("0x6"), the form Samba and Wine read.
uint32_t ReadDosAttributes(const std::string& path) {
  char text[64] = {0};
  const ssize_t size = ::getxattr(path.c_str(), kDosAttributeName, text, sizeof text - 1);
  if (size <= 0) return 0;
  text[size] = 0;
  return static_cast<uint32_t>(std::strtoul(text, nullptr, 16)) & kDosAttributeBits;
}

bool WriteDosAttributes(const std::string& path, uint32_t bits) {
  bits &= kDosAttributeBits;
  if (bits == 0) {
    if (::removexattr(path.c_str(), kDosAttributeName) != 0 && errno != ENODATA) return false;
    return true;
  }
  char text[16];
  const int length = std::snprintf(text, sizeof text, "0x%x", bits);
  return ::setxattr(path.c_str(), kDosAttributeName, text, static_cast<size_t>(length), 0) == 0;
}

FileKind KindOf(mode_t mode) {
  if (S_ISREG(mode)) return FileKind::kRegularFile;
  if (S_ISDIR(mode)) return FileKind::kDirectory;
  if (S_ISLNK(mode)) return FileKind::kLink;
  if (S_ISFIFO(mode)) return FileKind::kPipe;
  if (S_ISSOCK(mode)) return FileKind::kSocket;
  if (S_ISCHR(mode) || S_ISBLK(mode)) return FileKind::kDevice;
  return FileKind::kOther;
}

bool IsDotName(const std::string& path) {
  const size_t slash = path.rfind('/');
  const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
  return name.size() > 1 && name[0] == '.' && name != "..";
}

}  // namespace

uint32_t GetLastError() { return lastError; }
void SetLastError(uint32_t code) { lastError = code; }

String AddLongPathPrefix(const String& path) { return path; }

String RemoveLongPathPrefix(const String& path) {
  return base::StartsWith(path, u"\\\\?\\") ? path.substr(4) : path;
}

// Bytes of a name that are not UTF-8 live in a String as escape units (see ToNativeBytes),
// so every name on disk has its own String and comes back to the same bytes.
std::string NativePath(const String& path) { return base::ToNativeBytes(RemoveLongPathPrefix(path)); }

bool ExceedsNativePathLimits(const String& path) {
  const std::string native = NativePath(path);
  if (native.size() >= PATH_MAX) return true;
  size_t start = 0;
  while (start <= native.size()) {
    size_t end = native.find('/', start);
    if (end == std::string::npos) end = native.size();
    if (end - start > NAME_MAX) return true;
    start = end + 1;
  }
  return false;
}

uint32_t GetFileAttributes(const String& path) {
  const std::string native = NativePath(path);
  struct stat info;
  if (::lstat(native.c_str(), &info) != 0) {
    FailFromErrno();
    return kInvalidAttributes;
  }
  uint32_t attributes = 0;
  if (S_ISDIR(info.st_mode)) attributes |= kAttrDirectory;
  if (!(info.st_mode & S_IWUSR)) attributes |= kAttrReadOnly;
  if (S_ISDIR(info.st_mode) || S_ISREG(info.st_mode)) attributes |= ReadDosAttributes(native);
  if (IsDotName(native)) attributes |= kAttrHidden;
  if (attributes == 0) attributes = kAttrNormal;
  Succeed();
  return attributes;
}

bool GetFileSize(const String& path, int64_t& size) {
  struct stat info;
  if (::stat(NativePath(path).c_str(), &info) != 0) return FailFromErrno();
  size = static_cast<int64_t>(info.st_size);
  return true;
}

bool GetFileInfo(const String& path, FileInfo& out) {
  struct stat info;
  if (::lstat(NativePath(path).c_str(), &info) != 0) return FailFromErrno();
  out.isDirectory = S_ISDIR(info.st_mode);
  out.isRegularFile = S_ISREG(info.st_mode);
  out.kind = KindOf(info.st_mode);
  out.size = out.isRegularFile ? static_cast<int64_t>(info.st_size) : 0;
  out.modifiedMicros = static_cast<int64_t>(info.st_mtim.tv_sec) * 1000000 + info.st_mtim.tv_nsec / 1000;
  return Succeed();
}

bool IsDirectory(const String& path) {
  struct stat info;
  if (::stat(NativePath(path).c_str(), &info) != 0) return FailFromErrno();
  return S_ISDIR(info.st_mode) ? Succeed() : Fail(kErrorPathNotFound);
}

String GetFullPath(const String& path) {
  if (!path.empty() && path[0] == u'/') return path;
  std::unique_ptr<char, void (*)(void*)> cwd(::getcwd(nullptr, 0), std::free);
  if (!cwd) return path;
  String absolute = base::FromNativeBytes(cwd.get()) + u"/" + path;
  while (absolute.size() > 1 && absolute.back() == u'/') absolute.pop_back();
  return absolute;
}

bool SetFileAttributes(const String& path, uint32_t attributes) {
  const std::string native = NativePath(path);
  struct stat info;
  if (::lstat(native.c_str(), &info) != 0) return FailFromErrno();
  if (S_ISLNK(info.st_mode)) return Succeed();  // links carry no attributes of their own
  mode_t mode = info.st_mode & 07777;
  const bool readOnly = attributes & kAttrReadOnly;
  mode = readOnly ? (mode & ~mode_t(S_IWUSR | S_IWGRP | S_IWOTH)) : (mode | S_IWUSR);
  // Extended attributes need a writable file when not running as root: make it writable
  // before writing them, read-only only afterwards.
  if (!readOnly && ::chmod(native.c_str(), mode) != 0) return FailFromErrno();
  // A name beginning with "." reads as hidden anyway: writing back what was read must not
  // leave a stored hidden bit behind on such a name.
  const uint32_t current = ReadDosAttributes(native);
  uint32_t wanted = attributes & kDosAttributeBits;
  if (IsDotName(native) && (wanted & kAttrHidden)) wanted = (wanted & ~kAttrHidden) | (current & kAttrHidden);
  if (current != wanted && !WriteDosAttributes(native, wanted)) {
    if (!(errno == ENOTSUP && wanted == 0)) return FailFromErrno();
  }
  if (readOnly && ::chmod(native.c_str(), mode) != 0) return FailFromErrno();
  return Succeed();
}

bool CreateDirectory(const String& path) {
  return ::mkdir(NativePath(path).c_str(), 0777) == 0 ? Succeed() : FailFromErrno();
}

bool CreateEmptyFile(const String& path) {
  const int fd = ::open(NativePath(path).c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (fd < 0) return FailFromErrno();
  ::close(fd);
  return Succeed();
}

bool WriteWholeFile(const String& path, const std::string& bytes) {
  const int fd = ::open(NativePath(path).c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (fd < 0) return FailFromErrno();
  size_t written = 0;
  while (written < bytes.size()) {
    const ssize_t put = ::write(fd, bytes.data() + written, bytes.size() - written);
    if (put < 0 && errno == EINTR) continue;
    if (put < 0) {
      const int error = errno;
      ::close(fd);
      return Fail(Win32ErrorFromErrno(error));
    }
    written += static_cast<size_t>(put);
  }
  if (::close(fd) != 0) return FailFromErrno();
  return Succeed();
}

bool IsReadable(const String& path) {
  return ::access(NativePath(path).c_str(), R_OK) == 0 ? Succeed() : FailFromErrno();
}

String GetTempDirectory() {
  const char* configured = std::getenv("TMPDIR");
  std::string folder = configured && configured[0] == '/' ? configured : "/tmp";
  while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
  return base::FromNativeBytes(folder);
}

bool ListDirectory(const String& path, std::vector<String>& names) {
  std::unique_ptr<DIR, int (*)(DIR*)> dir(::opendir(NativePath(path).c_str()), ::closedir);
  if (!dir) return FailFromErrno();
  errno = 0;  // readdir tells the end from a failure only through errno
  while (const struct dirent* entry = ::readdir(dir.get())) {
    if (std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0) continue;
    names.push_back(base::FromNativeBytes(entry->d_name));
  }
  return errno == 0 ? Succeed() : FailFromErrno();
}

bool RemoveDirectory(const String& path) {
  return ::rmdir(NativePath(path).c_str()) == 0 ? Succeed() : FailFromErrno();
}

bool IsMountPoint(const String& path) {
  const std::string native = NativePath(path);
  struct stat self;
  struct stat parent;
  if (::stat(native.c_str(), &self) != 0) return FailFromErrno();
  if (!S_ISDIR(self.st_mode)) return Fail(kErrorPathNotFound);
  if (::stat((native + "/..").c_str(), &parent) != 0) return FailFromErrno();
  Succeed();
  // A different device above, or the folder is its own parent ("/").
  return self.st_dev != parent.st_dev || self.st_ino == parent.st_ino;
}

bool DeleteFile(const String& path) {
  return ::unlink(NativePath(path).c_str()) == 0 ? Succeed() : FailFromErrno();
}

namespace {

const char kStreamPrefix[] = "user.kestrove.";

std::string StreamAttribute(const String& streamName) { return kStreamPrefix + base::ToUtf8(streamName); }

// Streams live on regular files and folders only. The attribute calls do not follow links
// and run first; only a failed one looks at the item, so that a link or a special file
// answers "not supported" while a stream costs one system call.
bool FailStreamCall(const std::string& native) {
  const int callError = errno;
  struct stat info;
  if (::lstat(native.c_str(), &info) == 0 && !S_ISREG(info.st_mode) && !S_ISDIR(info.st_mode))
    return Fail(kErrorNotSupported);
  errno = callError;
  return FailFromErrno();
}

class FileDescriptor {
 public:
  explicit FileDescriptor(int fd) : fd_(fd) {}
  ~FileDescriptor() {
    if (fd_ >= 0) ::close(fd_);
  }
  int get() const { return fd_; }
  bool valid() const { return fd_ >= 0; }

 private:
  int fd_;
};

bool CopyData(int from, int to) {
  char buffer[65536];
  for (;;) {
    const ssize_t got = ::read(from, buffer, sizeof buffer);
    if (got == 0) return true;
    if (got < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    for (ssize_t written = 0; written < got;) {
      const ssize_t put = ::write(to, buffer + written, static_cast<size_t>(got - written));
      if (put < 0) {
        if (errno == EINTR) continue;
        return false;
      }
      written += put;
    }
  }
}

// Copies every user extended attribute (the streams and the DOS attributes among them).
bool CopyUserAttributes(int from, int to) {
  ssize_t size = ::flistxattr(from, nullptr, 0);
  if (size < 0) return errno == ENOTSUP;
  std::string names(static_cast<size_t>(size), '\0');
  size = ::flistxattr(from, &names[0], names.size());
  if (size < 0) return false;
  for (size_t start = 0; start < static_cast<size_t>(size);) {
    const std::string name = names.c_str() + start;
    start += name.size() + 1;
    if (name.compare(0, 5, "user.") != 0) continue;
    const ssize_t length = ::fgetxattr(from, name.c_str(), nullptr, 0);
    if (length < 0) return false;
    std::string value(static_cast<size_t>(length), '\0');
    if (::fgetxattr(from, name.c_str(), &value[0], value.size()) != length) return false;
    if (::fsetxattr(to, name.c_str(), value.data(), value.size(), 0) != 0) return false;
  }
  return true;
}

// ENOENT from a rename: the source is missing (2), or the target's folder is (3), as Win32
// tells them apart.
bool FailMissingTarget(const std::string& source) {
  struct stat info;
  return Fail(::lstat(source.c_str(), &info) == 0 ? kErrorPathNotFound : kErrorFileNotFound);
}

// Puts a finished copy in place: beside an existing target only when replacing is allowed.
bool PlaceCopy(const std::string& temporary, const std::string& target, bool failIfExists) {
  if (!failIfExists) return ::rename(temporary.c_str(), target.c_str()) == 0;
  if (::renameat2(AT_FDCWD, temporary.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0) return true;
  if (errno != EINVAL && errno != ENOSYS) return false;
  // A file system without RENAME_NOREPLACE: a hard link never replaces either.
  if (::link(temporary.c_str(), target.c_str()) != 0) return false;
  ::unlink(temporary.c_str());
  return true;
}

// The copy is written to a hidden temporary file beside the target and put in place only
// when it is complete, so a failure leaves an existing target as it was.
bool CopyRegularFile(const std::string& source, const std::string& target, bool failIfExists) {
  FileDescriptor from(::open(source.c_str(), O_RDONLY | O_CLOEXEC));
  if (!from.valid()) return FailFromErrno();
  struct stat info;
  if (::fstat(from.get(), &info) != 0) return FailFromErrno();
  if (!S_ISREG(info.st_mode)) return Fail(kErrorAccessDenied);  // as CopyFileW on a folder
  struct stat existing;
  if (::stat(target.c_str(), &existing) == 0) {
    if (failIfExists) return Fail(kErrorAlreadyExists);
    if (existing.st_dev == info.st_dev && existing.st_ino == info.st_ino) return Fail(kErrorSharingViolation);
    if (S_ISDIR(existing.st_mode)) return Fail(kErrorAccessDenied);
  }
  const size_t slash = target.rfind('/');
  // A working name of the component, which the sync engine leaves alone.
  const char suffix[] = ".kestrove.temp";
  std::string temporary = (slash == std::string::npos ? std::string() : target.substr(0, slash + 1)) +
                          ".copy-XXXXXX" + suffix;
  FileDescriptor to(::mkostemps(&temporary[0], sizeof suffix - 1, O_CLOEXEC));
  if (!to.valid()) return errno == ENOENT ? Fail(kErrorPathNotFound) : FailFromErrno();
  const struct timespec times[2] = {info.st_atim, info.st_mtim};
  if (!CopyData(from.get(), to.get()) || !CopyUserAttributes(from.get(), to.get()) ||
      ::fchmod(to.get(), info.st_mode & 07777) != 0 || ::futimens(to.get(), times) != 0 ||
      !PlaceCopy(temporary, target, failIfExists)) {
    const uint32_t code = Win32ErrorFromErrno(errno);
    ::unlink(temporary.c_str());
    return Fail(code);
  }
  return Succeed();
}

}  // namespace

bool MoveFile(const String& source, const String& target) {
  const std::string from = NativePath(source);
  const std::string to = NativePath(target);
  if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return Succeed();
  if (errno == EINVAL || errno == ENOSYS) {
    // A file system without RENAME_NOREPLACE: check, then rename.
    struct stat info;
    if (::lstat(to.c_str(), &info) == 0) return Fail(kErrorAlreadyExists);
    if (::rename(from.c_str(), to.c_str()) == 0) return Succeed();
  }
  if (errno == ENOENT) return FailMissingTarget(from);
  if (errno != EXDEV) return FailFromErrno();
  struct stat info;
  if (::lstat(from.c_str(), &info) != 0) return FailFromErrno();
  if (S_ISDIR(info.st_mode)) return Fail(kErrorNotSameDevice);
  if (!CopyRegularFile(from, to, true)) return false;
  if (::unlink(from.c_str()) != 0) {
    const uint32_t code = Win32ErrorFromErrno(errno);
    ::unlink(to.c_str());  // the source stays where it was
    return Fail(code);
  }
  return Succeed();
}

bool CopyFile(const String& source, const String& target, bool failIfExists) {
  return CopyRegularFile(NativePath(source), NativePath(target), failIfExists);
}

bool ReadStream(const String& path, const String& streamName, std::string& bytes) {
  const std::string native = NativePath(path);
  const std::string name = StreamAttribute(streamName);
  for (;;) {
    const ssize_t size = ::lgetxattr(native.c_str(), name.c_str(), nullptr, 0);
    if (size < 0) return FailStreamCall(native);
    std::string value(static_cast<size_t>(size), '\0');
    const ssize_t got = ::lgetxattr(native.c_str(), name.c_str(), size ? &value[0] : nullptr, value.size());
    if (got < 0 && errno == ERANGE) continue;  // it grew in between
    if (got < 0) return FailStreamCall(native);
    value.resize(static_cast<size_t>(got));
    bytes.swap(value);
    return Succeed();
  }
}

bool WriteStream(const String& path, const String& streamName, const std::string& bytes) {
  const std::string native = NativePath(path);
  if (::lsetxattr(native.c_str(), StreamAttribute(streamName).c_str(), bytes.data(), bytes.size(), 0) != 0)
    return FailStreamCall(native);
  return Succeed();
}

bool RemoveStream(const String& path, const String& streamName) {
  const std::string native = NativePath(path);
  if (::lremovexattr(native.c_str(), StreamAttribute(streamName).c_str()) != 0) return FailStreamCall(native);
  return Succeed();
}

bool HasStream(const String& path, const String& streamName) {
  const std::string native = NativePath(path);
  if (::lgetxattr(native.c_str(), StreamAttribute(streamName).c_str(), nullptr, 0) < 0) return FailStreamCall(native);
  return Succeed();
}

namespace {

// A value of a desktop entry on one line: line breaks, tabs and backslashes are written as
// the format's escapes, other control characters are left out, so that no value can add a
// key or a group of its own.
std::string DesktopEntryValue(const std::string& value) {
  std::string out;
  out.reserve(value.size());
  for (const char c : value) {
    switch (c) {
      case '\n': out += "\\n"; break;
      case '\t': out += "\\t"; break;
      case '\r': out += "\\r"; break;
      case '\\': out += "\\\\"; break;
      default:
        if (static_cast<unsigned char>(c) >= 0x20 && c != 0x7F) out += c;
        break;
    }
  }
  return out;
}

}  // namespace

// The freedesktop counterpart of desktop.ini: ".directory" with the icon and the comment.
bool CustomizeFolder(const String& path, const String* text, const String& iconFile, int iconIndex) {
  const std::string folder = NativePath(path);
  struct stat info;
  if (::stat(folder.c_str(), &info) != 0) return FailFromErrno();
  if (!S_ISDIR(info.st_mode)) return Fail(kErrorPathNotFound);
  std::string content = "[Desktop Entry]\n";
  if (!iconFile.empty()) content += "Icon=" + DesktopEntryValue(NativePath(iconFile)) + "\n";
  content += "X-Kestrove-IconIndex=" + std::to_string(iconIndex) + "\n";
  if (text) content += "Comment=" + DesktopEntryValue(base::ToUtf8(*text)) + "\n";
  const std::string file = folder + "/.directory";
  const std::string temporary = file + ".kestrove.temp";
  {
    FileDescriptor out(::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
    if (!out.valid()) return FailFromErrno();
    if (::write(out.get(), content.data(), content.size()) != static_cast<ssize_t>(content.size())) {
      const uint32_t code = Win32ErrorFromErrno(errno);
      ::unlink(temporary.c_str());
      return Fail(code);
    }
  }
  if (::rename(temporary.c_str(), file.c_str()) != 0) {
    const uint32_t code = Win32ErrorFromErrno(errno);
    ::unlink(temporary.c_str());
    return Fail(code);
  }
  return Succeed();
}

String GetUserName() {
  const uid_t uid = ::geteuid();
  long size = ::sysconf(_SC_GETPW_R_SIZE_MAX);
  std::string buffer(size > 0 ? static_cast<size_t>(size) : 16384, '\0');
  struct passwd entry;
  struct passwd* result = nullptr;
  if (::getpwuid_r(uid, &entry, &buffer[0], buffer.size(), &result) == 0 && result && result->pw_name)
    return base::FromUtf8(result->pw_name);
  if (const char* user = std::getenv("USER")) return base::FromUtf8(user);
  return base::ToString(static_cast<int64_t>(uid));
}

void CreateGuidBytes(uint8_t bytes[16]) {
  size_t filled = 0;
  while (filled < 16) {
    const ssize_t got = ::getrandom(bytes + filled, 16 - filled, 0);
    if (got > 0) filled += static_cast<size_t>(got);
    else if (errno != EINTR) std::abort();  // no entropy source: nothing sensible to fall back on
  }
  bytes[6] = static_cast<uint8_t>((bytes[6] & 0x0F) | 0x40);  // version 4
  bytes[8] = static_cast<uint8_t>((bytes[8] & 0x3F) | 0x80);  // RFC 4122 variant
}

String GetModuleDirectory(const void* addressInModule) {
  Dl_info info;
  if (!::dladdr(addressInModule, &info) || !info.dli_fname) return String();
  char resolved[PATH_MAX];
  const char* file = ::realpath(info.dli_fname, resolved) ? resolved : info.dli_fname;
  const char* slash = std::strrchr(file, '/');
  return slash ? base::FromNativeBytes(std::string(file, slash)) : String(u".");
}

LocalTime GetLocalTime() {
  struct timeval now;
  ::gettimeofday(&now, nullptr);
  struct tm local;
  ::localtime_r(&now.tv_sec, &local);
  return LocalTime{local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
                   local.tm_min,         local.tm_sec,     static_cast<int>(now.tv_usec / 1000)};
}

bool ToLocalTime(int64_t epochSeconds, LocalTime& out) {
  const time_t when = static_cast<time_t>(epochSeconds);
  struct tm local;
  if (!::localtime_r(&when, &local)) return false;
  out = LocalTime{local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec, 0};
  return true;
}

int64_t GetEpochMillis() {
  struct timeval now;
  ::gettimeofday(&now, nullptr);
  return static_cast<int64_t>(now.tv_sec) * 1000 + now.tv_usec / 1000;
}

uint64_t GetCurrentThreadId() { return static_cast<uint64_t>(::syscall(SYS_gettid)); }

bool IsStandardErrorTerminal() { return ::isatty(STDERR_FILENO) == 1; }

std::vector<std::string> GetCommandLineArguments(int argc, char** argv) {
  return std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc);
}

void WriteSystemLog(const std::string& utf8Text) { ::syslog(LOG_ERR, "%s", utf8Text.c_str()); }

namespace {
thread_local std::string lastModuleError;
}  // namespace

void* LoadModuleFile(const String& path) {
  void* module = ::dlopen(NativePath(path).c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!module) {
    const char* why = ::dlerror();
    lastModuleError = why ? why : "cannot open the module file";
  }
  return module;
}

void* FindModuleSymbol(void* module, const char* name) {
  void* symbol = ::dlsym(module, name);
  if (!symbol) lastModuleError = std::string("no symbol ") + name;
  return symbol;
}

void UnloadModuleFile(void* module) { ::dlclose(module); }

std::string LastModuleError() { return lastModuleError; }

int32_t AtomicIncrement(int32_t* value) { return PR_AtomicIncrement(value); }
int32_t AtomicDecrement(int32_t* value) { return PR_AtomicDecrement(value); }

}  // namespace platform

// ---------------------------------------------------------------------------
// Code page 936 through iconv, one converter per thread and direction.

namespace platform {

namespace {

class Converter {
 public:
  Converter(const char* to, const char* from) : handle_(::iconv_open(to, from)) {}
  ~Converter() {
    if (handle_ != reinterpret_cast<iconv_t>(-1)) ::iconv_close(handle_);
  }
  bool valid() const { return handle_ != reinterpret_cast<iconv_t>(-1); }

  // Converts input; a unit the target lacks (step bytes of input) becomes '?'.
  std::string run(const char* input, size_t size, size_t step, const std::string& replacement) {
    std::string out;
    ::iconv(handle_, nullptr, nullptr, nullptr, nullptr);
    char buffer[1024];
    char* in = const_cast<char*>(input);
    size_t left = size;
    while (left > 0) {
      char* target = buffer;
      size_t room = sizeof buffer;
      const size_t result = ::iconv(handle_, &in, &left, &target, &room);
      out.append(buffer, static_cast<size_t>(target - buffer));
      if (result == static_cast<size_t>(-1)) {
        if (errno == E2BIG) continue;
        const size_t skip = left < step ? left : step;  // EILSEQ or EINVAL: replace and go on
        in += skip;
        left -= skip;
        out += replacement;
        ::iconv(handle_, nullptr, nullptr, nullptr, nullptr);
      }
    }
    return out;
  }

 private:
  iconv_t handle_;
};

}  // namespace

std::string ToCodePage936(const String& text) {
  thread_local Converter converter("CP936", "UTF-16LE");
  if (!converter.valid()) return base::ToAscii(text);
  // A character beyond the BMP has no GBK form: one '?' for the pair, as for any other.
  std::string units;
  units.reserve(text.size() * 2);
  for (size_t i = 0; i < text.size(); ++i) {
    char16_t unit = text[i];
    if (unit >= 0xD800 && unit <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF) {
      unit = u'?';
      ++i;
    }
    units += static_cast<char>(unit & 0xFF);
    units += static_cast<char>(unit >> 8);
  }
  return converter.run(units.data(), units.size(), 2, "?");
}

String FromCodePage936(const std::string& bytes) {
  thread_local Converter converter("UTF-16LE", "CP936");
  if (!converter.valid()) return base::FromAscii(bytes);
  const std::string units = converter.run(bytes.data(), bytes.size(), 1, std::string("?\0", 2));
  String out(units.size() / 2, u'\0');
  for (size_t i = 0; i < out.size(); ++i)
    out[i] = static_cast<char16_t>(static_cast<unsigned char>(units[2 * i]) |
                                   (static_cast<unsigned char>(units[2 * i + 1]) << 8));
  return out;
}

}  // namespace platform
