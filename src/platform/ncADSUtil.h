// Named streams of a file or folder, in the two value forms the component stores: a signed
// 64-bit integer (8 bytes, little-endian two's complement) and a string (UTF-16LE units, no
// terminator stored). Each operation returns non-zero on success and leaves the Win32
// last-error code (platform::GetLastError) set on failure; a missing stream reads as 2.
#pragma once

#include <cstdint>

#include "text/String.h"

class ncADSUtil {
 public:
  static int SetADS(const base::String& path, const base::String& streamName, int64_t value);
  // value is zero-terminated.
  static int SetADS(const base::String& path, const base::String& streamName, const char16_t* value);
  // Stores every unit of value, NUL units included.
  static int SetADS(const base::String& path, const base::String& streamName, const base::String& value);
  static int GetADS(const base::String& path, const base::String& streamName, int64_t& value);
  // Reads at most capacity - 1 units and always terminates the buffer; a longer string is
  // cut. capacity must be at least 1.
  static int GetADS(const base::String& path, const base::String& streamName, char16_t* buffer, uint32_t capacity);
  // As above, and units tells how many units were read, so that a value with NUL units
  // inside is read whole.
  static int GetADS(const base::String& path, const base::String& streamName, char16_t* buffer, uint32_t capacity,
                    uint32_t& units);
  static int CheckADS(const base::String& path, const base::String& streamName);
  static int RemoveADS(const base::String& path, const base::String& streamName);
};
