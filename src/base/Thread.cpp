#include "base/Thread.h"

#include "platform/ncPlatform.h"

namespace base {

Thread::~Thread() { join(); }

void Thread::start() {
  join();
  thread_.reset(new std::thread([this] { run(); }));
}

void Thread::join() {
  if (thread_ && thread_->joinable()) thread_->join();
  thread_.reset();
}

uint64_t Thread::currentId() { return platform::GetCurrentThreadId(); }

}  // namespace base
