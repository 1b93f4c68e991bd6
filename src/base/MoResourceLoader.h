// Message texts by key from a GNU gettext binary catalogue (.mo), with built-in texts as
// the fallback, so a missing or damaged catalogue never breaks an operation.
#pragma once

#include <string>
#include <unordered_map>

#include "text/String.h"

namespace base {

struct ResourceText {
  const char* key;
  const char* text;  // UTF-8
};

class MoResourceLoader {
 public:
  // builtIn is a table ending with a {nullptr, nullptr} entry; it must outlive the loader.
  MoResourceLoader(const String& catalogueFile, const ResourceText* builtIn);

  // The catalogue's text, else the built-in text, else the key itself.
  String getString(const String& key) const;
  bool isCatalogueLoaded() const { return loaded_; }

 private:
  bool load(const std::string& file);

  std::unordered_map<std::string, std::string> texts_;
  const ResourceText* builtIn_;
  bool loaded_ = false;
};

// Formats the text of a resource key with the arguments.
template <typename... Args>
String FormatResource(const MoResourceLoader* loader, const String& key, const Args&... args) {
  return Format(loader ? loader->getString(key) : key, args...);
}

}  // namespace base
