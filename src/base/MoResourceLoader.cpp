#include "base/MoResourceLoader.h"

#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>

namespace base {

namespace {

const uint32_t kMagic = 0x950412de;
const uint32_t kMagicSwapped = 0xde120495;

uint32_t Swap(uint32_t v) {
  return (v >> 24) | ((v >> 8) & 0xFF00) | ((v << 8) & 0xFF0000) | (v << 24);
}

}  // namespace

MoResourceLoader::MoResourceLoader(const String& catalogueFile, const ResourceText* builtIn)
    : builtIn_(builtIn) {
  loaded_ = !catalogueFile.empty() && load(ToUtf8(catalogueFile));
}

bool MoResourceLoader::load(const std::string& file) {
  std::ifstream in(file, std::ios::binary);
  if (!in) return false;
  const std::string data((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  if (data.size() < 28) return false;
  auto word = [&data](size_t offset, bool swapped) -> uint32_t {
    uint32_t v;
    std::memcpy(&v, data.data() + offset, 4);
    return swapped ? Swap(v) : v;
  };
  uint32_t magic;
  std::memcpy(&magic, data.data(), 4);
  if (magic != kMagic && magic != kMagicSwapped) return false;
  const bool swapped = magic == kMagicSwapped;
  const uint64_t count = word(8, swapped);
  const uint64_t originals = word(12, swapped);
  const uint64_t translations = word(16, swapped);
  if (originals + count * 8 > data.size() || translations + count * 8 > data.size()) return false;
  for (uint64_t i = 0; i < count; ++i) {
    const uint64_t keyLength = word(originals + i * 8, swapped);
    const uint64_t keyOffset = word(originals + i * 8 + 4, swapped);
    const uint64_t textLength = word(translations + i * 8, swapped);
    const uint64_t textOffset = word(translations + i * 8 + 4, swapped);
    if (keyOffset + keyLength > data.size() || textOffset + textLength > data.size()) return false;
    if (keyLength == 0) continue;  // the catalogue header
    texts_[data.substr(keyOffset, keyLength)] = data.substr(textOffset, textLength);
  }
  return true;
}

String MoResourceLoader::getString(const String& key) const {
  const std::string narrowKey = ToUtf8(key);
  const auto text = texts_.find(narrowKey);
  if (text != texts_.end() && !text->second.empty()) return FromUtf8(text->second);
  for (const ResourceText* entry = builtIn_; entry && entry->key; ++entry)
    if (narrowKey == entry->key) return FromUtf8(entry->text);
  return key;
}

}  // namespace base
