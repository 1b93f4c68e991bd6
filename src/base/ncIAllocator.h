// A named allocator of the client's memory-pool library.
#pragma once

#include <cstddef>

namespace base {

class ncBasePool;

class ncIAllocator {
 public:
  virtual ~ncIAllocator() = default;
  virtual const char* getName() const = 0;
  // The pool the allocator belongs to; null for an allocator over the plain C heap.
  virtual ncBasePool* getPool() const = 0;
  virtual void* allocate(size_t size, const char* className, const char* file, int line) = 0;
  virtual void deallocate(void* memory) = 0;
};

}  // namespace base
