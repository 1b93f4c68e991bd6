#include "Translation.h"

#include <cstdlib>
#include <map>
#include <memory>

#include "CliContext.h"
#include "base/MoResourceLoader.h"
#include "base/ResourceFile.h"

namespace {

const base::ResourceText kNoBuiltInTexts[] = {{nullptr, nullptr}};

std::unique_ptr<base::MoResourceLoader>& Catalogue() {
  static std::unique_ptr<base::MoResourceLoader> catalogue;
  return catalogue;
}

}  // namespace

void LoadTranslations(const std::string& moduleFile) {
  const std::string language = base::ToUtf8(base::ResourceFile::currentLanguage());
  if (language == "en" || language.empty()) return;
  std::string file;
  if (const char* resources = std::getenv("KESTROVE_RESOURCE_DIR")) {  // as the component finds them
    file = std::string(resources) + "/" + language + "/docmgr.mo";
  } else {
    const size_t slash = moduleFile.rfind('/');
    const std::string dir = slash == std::string::npos ? "." : moduleFile.substr(0, slash);
    file = dir + "/../share/kestrove/locale/" + language + "/docmgr.mo";
  }
  Catalogue().reset(new base::MoResourceLoader(Wide(file), kNoBuiltInTexts));
}

const char* Tr(const char* english) {
  if (!Catalogue() || !Catalogue()->isCatalogueLoaded()) return english;
  // Each text is translated once and kept for the life of the tool, so the pointer stays valid.
  static std::map<std::string, std::string> translated;
  auto found = translated.find(english);
  if (found == translated.end())
    found = translated.emplace(english, base::ToUtf8(Catalogue()->getString(base::FromUtf8(english)))).first;
  return found->second.c_str();
}
