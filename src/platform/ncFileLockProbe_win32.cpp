#include "platform/ncFileLockProbe.h"

bool ncFileLockProbe::isSupported() { return false; }

ncFileLockProbe::ncFileLockProbe(const base::String&) {}

ncFileLockProbe::~ncFileLockProbe() {}

bool ncFileLockProbe::heldByOther(int64_t, int64_t, int64_t&) const { return false; }
