// Whether another process holds a write lock on a byte range of a file, the way SQLite
// takes its locks. The file stays open for the probe's life: on POSIX, closing any
// descriptor of a file drops every lock this process holds on it, SQLite's own included.
#pragma once

#include <cstdint>

#include "text/String.h"

class ncFileLockProbe {
 public:
  // False where the system cannot answer. Windows: locks belong to handles and can only be
  // asked about by taking one, which would stand in the way of the process asked about and
  // could not tell this process's locks from another's.
  static bool isSupported();

  explicit ncFileLockProbe(const base::String& path);
  ~ncFileLockProbe();
  ncFileLockProbe(const ncFileLockProbe&) = delete;
  ncFileLockProbe& operator=(const ncFileLockProbe&) = delete;

  // False when the file could not be opened (missing, unreadable) or probes are unsupported.
  bool isOpen() const { return handle_ >= 0; }
  // True when another process holds a write lock on a byte of [start, start + length); its
  // process id goes to holder.
  bool heldByOther(int64_t start, int64_t length, int64_t& holder) const;

 private:
  intptr_t handle_ = -1;
};
