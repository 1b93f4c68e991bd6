#include "base/ncBasePool.h"

#include <cstdlib>
#include <new>

#include "base/ncModulePool.h"

namespace base {

namespace {

class PoolAllocator : public ncIAllocator {
 public:
  PoolAllocator(const char* name, ncBasePool* pool) : name_(name ? name : ""), pool_(pool) {}
  const char* getName() const override { return name_.c_str(); }
  ncBasePool* getPool() const override { return pool_; }
  void* allocate(size_t size, const char* className, const char* file, int line) override {
    return pool_ ? ncBasePool::malloc(pool_, this, size, className, file, line) : std::malloc(size);
  }
  void deallocate(void* memory) override {
    if (pool_) ncBasePool::free(pool_, this, memory);
    else std::free(memory);
  }

 private:
  std::string name_;
  ncBasePool* pool_;
};

}  // namespace

ncIAllocator* ncBasePool::createAllocator(const char* name, int /*flags*/, int64_t /*limit*/) {
  return new PoolAllocator(name, ncModulePool::getInstance());
}

void ncBasePool::deleteAllocator(ncIAllocator* allocator) { delete allocator; }

void* ncBasePool::malloc(ncBasePool* pool, ncIAllocator* /*allocator*/, size_t size, const char* className,
                         const char* /*file*/, int /*line*/) {
  return pool ? pool->take(size, className) : std::malloc(size);
}

void ncBasePool::free(ncBasePool* pool, ncIAllocator* /*allocator*/, void* memory) {
  if (!memory) return;
  if (pool) pool->give(memory);
  else std::free(memory);
}

void* ncBasePool::take(size_t size, const char* className) {
  void* memory = std::malloc(size ? size : 1);
  if (!memory) return nullptr;
  std::lock_guard<std::mutex> guard(lock_);
  const std::string name = className ? className : "";
  owners_.emplace(memory, name);
  ++counts_[name];
  return memory;
}

void ncBasePool::give(void* memory) {
  {
    std::lock_guard<std::mutex> guard(lock_);
    const auto owner = owners_.find(memory);
    if (owner != owners_.end()) {
      const auto count = counts_.find(owner->second);
      if (count != counts_.end() && --count->second == 0) counts_.erase(count);
      owners_.erase(owner);
    }
  }
  std::free(memory);
}

size_t ncBasePool::liveObjects(const std::string& className) const {
  std::lock_guard<std::mutex> guard(lock_);
  const auto count = counts_.find(className);
  return count == counts_.end() ? 0 : count->second;
}

size_t ncBasePool::liveObjects() const {
  std::lock_guard<std::mutex> guard(lock_);
  return owners_.size();
}

}  // namespace base
