// A joinable worker thread whose body is run().
#pragma once

#include <cstdint>
#include <memory>
#include <thread>

namespace base {

class Thread {
 public:
  Thread() = default;
  virtual ~Thread();
  Thread(const Thread&) = delete;
  Thread& operator=(const Thread&) = delete;

  void start();
  void join();
  static uint64_t currentId();

 protected:
  virtual void run() = 0;

 private:
  std::unique_ptr<std::thread> thread_;
};

}  // namespace base
