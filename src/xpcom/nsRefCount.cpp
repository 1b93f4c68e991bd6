#include "xpcom/nsRefCount.h"

#include <atomic>

#include "platform/ncAtomic.h"

namespace {
std::atomic<int32_t> liveCounts{0};
}  // namespace

nsRefCount::nsRefCount() { ++liveCounts; }

nsRefCount::~nsRefCount() { --liveCounts; }

nsrefcnt nsRefCount::increment() { return static_cast<nsrefcnt>(platform::AtomicIncrement(&value_)); }

nsrefcnt nsRefCount::decrement() { return static_cast<nsrefcnt>(platform::AtomicDecrement(&value_)); }

int32_t nsRefCount::liveObjects() { return liveCounts.load(); }
