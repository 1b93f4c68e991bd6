// Helpers for tests on real files: raw extended attributes, and the two ways to make the
// file system refuse a change even to root (the immutable flag, or running the change in
// a child process that has given up its privileges).
#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace test {

void SetEnvironment(const char* name, const char* value);

// A symbolic link at link to target; false when the system does not make one here.
bool MakeSymlink(const std::string& target, const std::string& link);

// The native path limits in bytes of UTF-8 (POSIX) or units (Windows); a path limit of 0
// means none below the long-path rule.
extern const size_t kNativePathMax;
extern const size_t kNativeNameMax;

// The raw value of an extended attribute; false when absent (always on Windows).
bool GetXattr(const std::string& path, const std::string& name, std::string& value);

// Sets or clears the immutable flag; false when the file system or the caller's
// capabilities do not allow it.
bool SetImmutable(const std::string& path, bool on);

// Makes a file or folder immutable for the scope; clears it again at the end so that the
// temporary folder can be removed.
class Immutable {
 public:
  explicit Immutable(const std::string& path) : path_(path), on_(SetImmutable(path, true)) {}
  ~Immutable() {
    if (on_) SetImmutable(path_, false);
  }
  bool active() const { return on_; }

 private:
  std::string path_;
  bool on_;
};

// Runs body where permission bits apply: directly when the process is not privileged,
// else in a child process that has become the user "nobody" (uid and gid 65534). Returns
// body's result, or -1 with why filled when neither is possible.
int RunUnprivileged(const std::function<int()>& body, std::string& why);
// Hands the path to the user body runs as under RunUnprivileged (no-op when unprivileged)
// and opens its folder chain from dir on for that user.
void GiveToUnprivileged(const std::string& dir, const std::string& path);

}  // namespace test
