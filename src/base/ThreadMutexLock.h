// Recursive mutex: a thread that takes it twice is not deadlocked by itself.
#pragma once

#include <mutex>

namespace base {

class ThreadMutexLock {
 public:
  void lock() { mutex_.lock(); }
  void unlock() { mutex_.unlock(); }

 private:
  std::recursive_mutex mutex_;
};

class AutoLock {
 public:
  explicit AutoLock(ThreadMutexLock& lock) : lock_(lock) { lock_.lock(); }
  ~AutoLock() { lock_.unlock(); }
  AutoLock(const AutoLock&) = delete;
  AutoLock& operator=(const AutoLock&) = delete;

 private:
  ThreadMutexLock& lock_;
};

}  // namespace base
