#include "FileTestSupport.h"

#include <fcntl.h>
#include <grp.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cstdint>

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

std::string LittleEndian64(int64_t value) {
  std::string bytes(8, '\0');
  for (int i = 0; i < 8; ++i) bytes[i] = static_cast<char>((static_cast<uint64_t>(value) >> (8 * i)) & 0xFF);
  return bytes;
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
