// Atomic reference-count arithmetic of the component model: NSPR's PR_AtomicIncrement and
// PR_AtomicDecrement where NSPR is available, the Interlocked functions on Windows. Each
// backend file implements the two functions; this header stays free of system headers so
// that it can be included everywhere.
#pragma once

#include <cstdint>

namespace platform {

// Both return the new value.
int32_t AtomicIncrement(int32_t* value);
int32_t AtomicDecrement(int32_t* value);

}  // namespace platform
