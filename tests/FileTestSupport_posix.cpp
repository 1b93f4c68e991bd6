#include "FileTestSupport.h"

#include <fcntl.h>
#include <grp.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "TestSupport.h"

namespace test {

namespace {

const uid_t kNobody = 65534;
const int kCannotDropPrivileges = 77;

}  // namespace

bool GetXattr(const std::string& path, const std::string& name, std::string& value) {
  const ssize_t size = ::getxattr(path.c_str(), name.c_str(), nullptr, 0);
  if (size < 0) return false;
  value.assign(static_cast<size_t>(size), '\0');
  return ::getxattr(path.c_str(), name.c_str(), size ? &value[0] : nullptr, value.size()) == size;
}

bool MakeSymlink(const std::string& target, const std::string& link) {
  return ::symlink(target.c_str(), link.c_str()) == 0;
}

const bool kPosixBackend = true;

std::string ExportedFunctions(const std::string& moduleFile) {
  int status = 0;
  return RunCommand("nm -D --defined-only " + moduleFile + " | awk '$2 == \"T\" || $2 == \"W\" {print $3}'", &status);
}

std::string FolderDisplayText(const std::string& folder) {
  const std::string entry = ReadFile(folder + "/.directory");
  const size_t start = entry.find("Comment=");
  if (start == std::string::npos) return std::string();
  const size_t end = entry.find('\n', start);
  return entry.substr(start + 8, end == std::string::npos ? std::string::npos : end - start - 8);
}

const size_t kNativePathMax = PATH_MAX;
const size_t kNativeNameMax = NAME_MAX;

void SetEnvironment(const char* name, const char* value) { ::setenv(name, value, 1); }

std::string RunCommand(const std::string& command, int* status) {
  std::string output;
  FILE* pipe = ::popen((command + " 2>&1").c_str(), "r");
  if (!pipe) {
    *status = -1;
    return output;
  }
  char buffer[4096];
  while (size_t got = std::fread(buffer, 1, sizeof buffer, pipe)) output.append(buffer, got);
  const int rc = ::pclose(pipe);
  *status = WIFEXITED(rc) ? WEXITSTATUS(rc) : -1;
  return output;
}

const char kNoStreamsReason[] = "no user extended attributes (the streams' store) in ";

bool SupportsStreams(const std::string& directory) {
  const std::string probe = directory + "/.xattr-probe";
  WriteFile(probe, "");
  const bool supported = ::setxattr(probe.c_str(), "user.probe", "1", 1, 0) == 0;
  ::unlink(probe.c_str());
  return supported;
}

bool SetImmutable(const std::string& path, bool on) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) return false;
  int flags = 0;
  bool done = ::ioctl(fd, FS_IOC_GETFLAGS, &flags) == 0;
  if (done) {
    flags = on ? (flags | FS_IMMUTABLE_FL) : (flags & ~FS_IMMUTABLE_FL);
    done = ::ioctl(fd, FS_IOC_SETFLAGS, &flags) == 0;
  }
  ::close(fd);
  return done;
}

int RunUnprivileged(const std::function<int()>& body, std::string& why) {
  if (::geteuid() != 0) return body();
  const pid_t child = ::fork();
  if (child < 0) {
    why = "fork failed";
    return -1;
  }
  if (child == 0) {
    if (::setgroups(0, nullptr) != 0 || ::setgid(kNobody) != 0 || ::setuid(kNobody) != 0)
      ::_exit(kCannotDropPrivileges);
    ::_exit(body());
  }
  int status = 0;
  if (::waitpid(child, &status, 0) != child || !WIFEXITED(status)) {
    why = "the unprivileged child did not finish";
    return -1;
  }
  if (WEXITSTATUS(status) == kCannotDropPrivileges) {
    why = "running as root without the right to become another user";
    return -1;
  }
  return WEXITSTATUS(status);
}

void GiveToUnprivileged(const std::string& dir, const std::string& path) {
  if (::geteuid() != 0) return;
  ::chmod(dir.c_str(), 0777);
  for (size_t slash = path.find('/', dir.size() + 1); slash != std::string::npos; slash = path.find('/', slash + 1))
    ::chmod(path.substr(0, slash).c_str(), 0777);
  if (::lchown(path.c_str(), kNobody, kNobody) != 0) return;
}

}  // namespace test
