#include "base/ResourceFile.h"

#include <cstdlib>

#include "base/File.h"
#include "base/Path.h"
#include "platform/ncPlatform.h"

namespace base {

namespace {

String LanguageOf(const char* locale) {
  if (!locale || !*locale) return String();
  String language = FromUtf8(locale);
  const size_t cut = language.find_first_of(u".@");
  if (cut != String::npos) language.resize(cut);
  if (language == u"C" || language == u"POSIX") return u"en";
  return language;
}

}  // namespace

String ResourceFile::currentLanguage() {
  for (const char* variable : {"KESTROVE_LANG", "LC_ALL", "LC_MESSAGES", "LANG"}) {
    const String language = LanguageOf(std::getenv(variable));
    if (!language.empty()) return language;
  }
  return u"en";
}

String ResourceFile::getResourceFileName(const String& baseName, AppSettings*, AppContext*, const String& extension,
                                         const void* moduleAddress) {
  const String fileName = baseName + u"." + extension;
  if (const char* directory = std::getenv("KESTROVE_RESOURCE_DIR")) {
    // A flat folder of catalogues, or one folder per language.
    const String root = FromUtf8(directory);
    const String perLanguage = Path::combine(Path::combine(root, currentLanguage()), fileName);
    return File::exists(perLanguage) ? perLanguage : Path::combine(root, fileName);
  }
  const String locale = Path::combine(platform::GetModuleDirectory(moduleAddress), u"../share/kestrove/locale");
  const String language = currentLanguage();
  const size_t underscore = language.find(u'_');
  for (const String& candidate : {language, language.substr(0, underscore), String(u"en")}) {
    const String file = Path::combine(Path::combine(locale, candidate), fileName);
    if (File::exists(file)) return file;
  }
  return String();
}

}  // namespace base
