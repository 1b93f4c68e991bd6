#include "docmgr/ncModuleAllocator.h"

#include <cstdlib>

#include "base/ncBasePool.h"
#include "docmgr/ncDocMgrLibrary.h"

void* ncModuleAllocator::allocate(size_t size, const char* className, const char* file, int line) {
  base::ncIAllocator* allocator = ncDocMgrLibrary::getAllocator();
  if (allocator && allocator->getPool())
    return base::ncBasePool::malloc(allocator->getPool(), allocator, size, className, file, line);
  return std::malloc(size);
}

void ncModuleAllocator::deallocate(void* memory) {
  base::ncIAllocator* allocator = ncDocMgrLibrary::getAllocator();
  if (allocator && allocator->getPool()) base::ncBasePool::free(allocator->getPool(), allocator, memory);
  else std::free(memory);
}
