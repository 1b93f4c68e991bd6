// Stateless helpers over paths and names: the ancestor test, extensions, the first
// components of a relative path, substring replacement, and the initials of a name.
#pragma once

#include <cstdint>

#include "text/String.h"

class ncDocUtils {
 public:
  // True when child lies under parent ("C:\ab" is not a parent of "C:\abc"); with
  // includeSelf also when both name the same path. Case is ignored; "\" and "/" are both
  // separators; the long-path prefix is ignored.
  static bool IsParentPath(const base::String& parent, const base::String& child, bool includeSelf);
  // True when the file name ends with extName, compared in lower case (so ".td.cfg" works).
  static bool IsExtensionPath(const base::String& path, const base::String& extName);
  // The first depth components of a "\" path, or "" when it has fewer.
  static base::String GetRelPathByDepth(const base::String& relPath, uint32_t depth);
  static base::String ReplaceStr(const base::String& srcStr, const base::String& oldSubStr,
                                 const base::String& newSubStr, bool replaceAll);
  // Doubles every single quote, for values spliced into SQL between quotes.
  static base::String QuoteSql(const base::String& value) {
    return value.find(u'\'') == base::String::npos ? value : ReplaceStr(value, u"'", u"''", true);
  }
  // Initials for search: a GB2312 character gives the upper-case initial of its pinyin
  // ("[" for the few without one); everything else is kept as it is.
  static base::String GetAcronym(const base::String& name);

  // True when a search key can be initials: not empty and printable ASCII (32 to 126) only.
  static bool IsAcronymKey(const base::String& key);
  // The name with the part that matched key wrapped in prefix and suffix. byAcronym: the key
  // matched the name's initials; contiguous: the key occurs as a whole, else its characters
  // occur in order. Letter case is ignored. A name the key does not match is returned as is.
  static base::String MarkMatch(const base::String& name, bool byAcronym, bool contiguous, const base::String& key,
                                const base::String& prefix, const base::String& suffix);
};
