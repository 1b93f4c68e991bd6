// The reference count of every object of the component model (components, internal
// managers, the module and its factories, the host loader's manager): atomic arithmetic of
// the platform layer. Each count also counts itself among the live objects of its binary,
// which is what tells a host whether a module file may be unloaded.
#pragma once

#include <cstdint>

#include "docmgr/nscore.h"

class nsRefCount {
 public:
  nsRefCount();
  ~nsRefCount();
  nsRefCount(const nsRefCount&) = delete;
  nsRefCount& operator=(const nsRefCount&) = delete;

  nsrefcnt increment();
  nsrefcnt decrement();
  // Drops one reference; the last one runs destroy() on the object. Before that the count
  // is set to 1, so that a destructor that takes and drops a reference to its own object
  // cannot destroy it a second time.
  template <typename Destroy>
  nsrefcnt release(Destroy destroy) {
    const nsrefcnt remaining = decrement();
    if (remaining != 0) return remaining;
    value_ = 1;
    destroy();
    return 0;
  }

  // Objects alive in this binary that carry a count.
  static int32_t liveObjects();

 private:
  int32_t value_ = 0;
};
