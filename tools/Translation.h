// The tool's own texts in the user's language. The English text is the key: it is looked up
// in the component's message catalogue (resources/<lang>/docmgr.po, where the tool's texts
// sit beside the component's), so there is one catalogue per language to translate and a
// missing entry or catalogue simply leaves the English text.
#pragma once

#include <string>

// Loads the catalogue of the current language (KESTROVE_LANG, else the locale) installed
// beside the module file.
void LoadTranslations(const std::string& moduleFile);
// The text in the user's language; a printf format keeps its directives in the same order.
const char* Tr(const char* english);
