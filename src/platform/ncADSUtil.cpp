#include "platform/ncADSUtil.h"

#include <string>

#include "platform/ncPlatform.h"

namespace {

const size_t kIntegerSize = 8;

}  // namespace

int ncADSUtil::SetADS(const base::String& path, const base::String& streamName, int64_t value) {
  const uint64_t bits = static_cast<uint64_t>(value);
  std::string bytes(kIntegerSize, '\0');
  for (size_t i = 0; i < kIntegerSize; ++i) bytes[i] = static_cast<char>((bits >> (8 * i)) & 0xFF);
  return platform::WriteStream(path, streamName, bytes) ? 1 : 0;
}

int ncADSUtil::SetADS(const base::String& path, const base::String& streamName, const char16_t* value) {
  return SetADS(path, streamName, value ? base::String(value) : base::String());
}

int ncADSUtil::SetADS(const base::String& path, const base::String& streamName, const base::String& value) {
  std::string bytes(value.size() * 2, '\0');
  for (size_t i = 0; i < value.size(); ++i) {
    bytes[2 * i] = static_cast<char>(value[i] & 0xFF);
    bytes[2 * i + 1] = static_cast<char>(value[i] >> 8);
  }
  return platform::WriteStream(path, streamName, bytes) ? 1 : 0;
}

int ncADSUtil::GetADS(const base::String& path, const base::String& streamName, int64_t& value) {
  std::string bytes;
  if (!platform::ReadStream(path, streamName, bytes)) return 0;
  if (bytes.size() != kIntegerSize) {
    platform::SetLastError(platform::kErrorInvalidData);
    return 0;
  }
  uint64_t bits = 0;
  for (size_t i = 0; i < kIntegerSize; ++i) bits |= uint64_t(static_cast<unsigned char>(bytes[i])) << (8 * i);
  value = static_cast<int64_t>(bits);
  return 1;
}

int ncADSUtil::GetADS(const base::String& path, const base::String& streamName, char16_t* buffer, uint32_t capacity) {
  uint32_t units = 0;
  return GetADS(path, streamName, buffer, capacity, units);
}

int ncADSUtil::GetADS(const base::String& path, const base::String& streamName, char16_t* buffer, uint32_t capacity,
                      uint32_t& units) {
  if (!buffer || capacity == 0) {
    platform::SetLastError(platform::kErrorInvalidParameter);
    return 0;
  }
  std::string bytes;
  if (!platform::ReadStream(path, streamName, bytes)) return 0;
  if (bytes.size() % 2 != 0) {
    platform::SetLastError(platform::kErrorInvalidData);
    return 0;
  }
  const size_t stored = bytes.size() / 2;
  units = static_cast<uint32_t>(stored < capacity - 1 ? stored : capacity - 1);
  for (size_t i = 0; i < units; ++i)
    buffer[i] = static_cast<char16_t>(static_cast<unsigned char>(bytes[2 * i]) |
                                      (static_cast<unsigned char>(bytes[2 * i + 1]) << 8));
  buffer[units] = 0;
  return 1;
}

int ncADSUtil::CheckADS(const base::String& path, const base::String& streamName) {
  return platform::HasStream(path, streamName) ? 1 : 0;
}

int ncADSUtil::RemoveADS(const base::String& path, const base::String& streamName) {
  return platform::RemoveStream(path, streamName) ? 1 : 0;
}
