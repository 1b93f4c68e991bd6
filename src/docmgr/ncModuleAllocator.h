// Allocation of the module's internal objects from the allocator "docMgrAlloc": through the
// pool (which counts live objects per class name) when the allocator has one, else with
// malloc/free.
#pragma once

#include <cstddef>
#include <new>
#include <utility>

class ncModuleAllocator {
 public:
  static void* allocate(size_t size, const char* className, const char* file, int line);
  static void deallocate(void* memory);

  template <typename T, typename... Args>
  static T* create(const char* className, const char* file, int line, Args&&... args) {
    void* memory = allocate(sizeof(T), className, file, line);
    if (!memory) throw std::bad_alloc();
    try {
      return new (memory) T(std::forward<Args>(args)...);
    } catch (...) {
      deallocate(memory);
      throw;
    }
  }
};

// NC_NEW(ncPathMgr) or NC_NEW(ncFileMgr, pathMgr): a new object with no reference taken.
#define NC_NEW(Class, ...) ncModuleAllocator::create<Class>(#Class, __FILE__, __LINE__, ##__VA_ARGS__)
