#include "docmgr/ncDocUtils.h"

#include <vector>

#include "docmgr/ncDocMgrDefs.h"
#include "platform/ncPlatform.h"

using base::String;

namespace {

// Pinyin initials of the GB2312 level-2 characters, in code order (rows 0xD8-0xF7).
const char kLevel2Initials[] =
#include "gb2312Level2Initials.inc"
    ;
static_assert(sizeof kLevel2Initials == 3008 + 1, "the level-2 table has 3008 entries");

// Level-1 characters (row-column codes 1601-5589) are ordered by pinyin: each letter starts
// at the code given.
struct Threshold {
  char letter;
  int from;
};
const Threshold kLevel1Thresholds[] = {
    {'A', 1601}, {'B', 1637}, {'C', 1833}, {'D', 2078}, {'E', 2274}, {'F', 2302}, {'G', 2433}, {'H', 2594},
    {'J', 2787}, {'K', 3106}, {'L', 3212}, {'M', 3472}, {'N', 3635}, {'O', 3722}, {'P', 3730}, {'Q', 3858},
    {'R', 4027}, {'S', 4086}, {'T', 4390}, {'W', 4558}, {'X', 4684}, {'Y', 4925}, {'Z', 5249},
};

String PreparedForContainment(const String& path) {
  String prepared = platform::RemoveLongPathPrefix(path);
  if (prepared.empty() || !base::Path::isSeparator(prepared.back())) prepared += base::Path::kSeparator;
  return prepared;
}

bool SameUnitIgnoringCase(char16_t a, char16_t b) {
  if (base::Path::isSeparator(a) && base::Path::isSeparator(b)) return true;
  return base::ToLowerUnit(a) == base::ToLowerUnit(b);
}

bool EqualIgnoringCase(const String& a, size_t length, const String& b) {
  for (size_t i = 0; i < length; ++i)
    if (!SameUnitIgnoringCase(a[i], b[i])) return false;
  return true;
}

std::string AcronymBytes(const std::string& bytes) {
  std::string out;
  out.reserve(bytes.size());
  const size_t size = bytes.size();
  for (size_t i = 0; i < size;) {
    const unsigned char c1 = static_cast<unsigned char>(bytes[i]);
    const unsigned char c2 = i + 1 < size ? static_cast<unsigned char>(bytes[i + 1]) : 0;
    if (c1 < 0xA1 || c2 < 0xA1) {
      out += static_cast<char>(c1);
      ++i;
      continue;
    }
    const int q = c1 * 100 + c2 - 16160;
    if (q >= 1601 && q <= 5589) {
      int row = static_cast<int>(sizeof kLevel1Thresholds / sizeof kLevel1Thresholds[0]) - 1;
      while (row > 0 && kLevel1Thresholds[row].from > q) --row;
      out += kLevel1Thresholds[row].letter;
    } else {
      const int k = c1 * 94 + c2 - 20465;
      if (k >= 0 && k <= 3007) {
        out += kLevel2Initials[k];
      } else {
        out += static_cast<char>(c1);
        out += static_cast<char>(c2);
      }
    }
    i += 2;
  }
  return out;
}

// Positions in text of the units matched by key, ignoring ASCII case: contiguous (the
// first occurrence) or scattered (greedy, in order). Empty when the key does not match.
std::vector<size_t> MatchPositions(const String& text, const String& key, bool contiguous) {
  std::vector<size_t> positions;
  if (key.empty()) return positions;
  if (contiguous) {
    for (size_t start = 0; start + key.size() <= text.size(); ++start) {
      size_t k = 0;
      while (k < key.size() && base::ToLowerUnit(text[start + k]) == base::ToLowerUnit(key[k])) ++k;
      if (k == key.size()) {
        for (k = 0; k < key.size(); ++k) positions.push_back(start + k);
        return positions;
      }
    }
    return positions;
  }
  size_t k = 0;
  for (size_t i = 0; i < text.size() && k < key.size(); ++i)
    if (base::ToLowerUnit(text[i]) == base::ToLowerUnit(key[k])) {
      positions.push_back(i);
      ++k;
    }
  if (k < key.size()) positions.clear();
  return positions;
}

// Wraps every run of marked units in prefix and suffix.
String WrapRuns(const String& name, const std::vector<bool>& marked, const String& prefix, const String& suffix) {
  String out;
  for (size_t i = 0; i < name.size(); ++i) {
    const bool starts = marked[i] && (i == 0 || !marked[i - 1]);
    const bool ends = marked[i] && (i + 1 == name.size() || !marked[i + 1]);
    if (starts) out += prefix;
    out += name[i];
    if (ends) out += suffix;
  }
  return out;
}

}  // namespace

bool ncDocUtils::IsParentPath(const String& parent, const String& child, bool includeSelf) {
  NC_TRACE(u"parent: %s, child: %s", parent, child);
  NC_CHECK_PATH(parent);
  NC_CHECK_PATH(child);
  const String preparedParent = PreparedForContainment(parent);
  const String preparedChild = PreparedForContainment(child);
  if (preparedParent.size() < preparedChild.size())
    return EqualIgnoringCase(preparedParent, preparedParent.size(), preparedChild);
  if (!includeSelf) return false;
  return preparedParent.size() == preparedChild.size() &&
         EqualIgnoringCase(preparedParent, preparedParent.size(), preparedChild);
}

bool ncDocUtils::IsExtensionPath(const String& path, const String& extName) {
  NC_TRACE(u"path: %s, extName: %s", path, extName);
  NC_CHECK_PATH(path);
  if (extName.empty()) return false;
  String name = path;
  const size_t separator = name.find_last_of(u"/\\");
  if (separator != String::npos) name.erase(0, separator + 1);
  return base::EndsWith(base::ToLower(name), base::ToLower(extName));
}

String ncDocUtils::GetRelPathByDepth(const String& relPath, uint32_t depth) {
  NC_TRACE(u"relPath: %s, depth: %d", relPath, depth);
  NC_CHECK_PATH(relPath);
  if (depth == 0) return String();
  size_t separator = String::npos;
  for (uint32_t component = 1; component <= depth; ++component) {
    separator = relPath.find(u'\\', separator == String::npos ? 0 : separator + 1);
    if (separator == String::npos) return component == depth ? relPath : String();
  }
  return relPath.substr(0, separator);
}

String ncDocUtils::ReplaceStr(const String& srcStr, const String& oldSubStr, const String& newSubStr,
                              bool replaceAll) {
  NC_TRACE(u"srcStr: %s, oldSubStr: %s, newSubStr: %s, replaceAll: %d", srcStr, oldSubStr, newSubStr, replaceAll);
  if (srcStr.empty()) return String();
  if (oldSubStr.empty()) return srcStr;
  String out;
  size_t pos = 0;
  while (pos < srcStr.size()) {
    const size_t hit = srcStr.find(oldSubStr, pos);
    if (hit == String::npos) break;
    out.append(srcStr, pos, hit - pos);
    out += newSubStr;
    pos = hit + oldSubStr.size();
    if (!replaceAll) break;
  }
  if (pos < srcStr.size()) out.append(srcStr, pos, String::npos);
  return out;
}

String ncDocUtils::GetAcronym(const String& name) {
  return platform::FromCodePage936(AcronymBytes(platform::ToCodePage936(name)));
}

bool ncDocUtils::IsAcronymKey(const String& key) {
  if (key.empty()) return false;
  for (char16_t unit : key)
    if (unit < 32 || unit > 126) return false;
  return true;
}

String ncDocUtils::MarkMatch(const String& name, bool byAcronym, bool contiguous, const String& key,
                             const String& prefix, const String& suffix) {
  std::vector<bool> marked(name.size(), false);
  if (!byAcronym) {
    for (size_t position : MatchPositions(name, key, contiguous)) marked[position] = true;
    return WrapRuns(name, marked, prefix, suffix);
  }
  // Initials: each character of the name gives its own part of the acronym; a name
  // character is marked when any unit of its part matched.
  String acronym;
  std::vector<size_t> owner;  // acronym unit -> first unit of its name character
  for (size_t i = 0; i < name.size();) {
    const bool pair = i + 1 < name.size() && name[i] >= 0xD800 && name[i] <= 0xDBFF;
    const size_t length = pair ? 2 : 1;
    // An ASCII character is its own initial; only the others need the code-page round trip.
    const String part = name[i] < 0x80 ? String(1, name[i]) : GetAcronym(name.substr(i, length));
    acronym += part;
    owner.insert(owner.end(), part.size(), i);
    i += length;
  }
  for (size_t position : MatchPositions(acronym, key, contiguous)) {
    const size_t first = owner[position];
    marked[first] = true;
    if (first + 1 < name.size() && name[first] >= 0xD800 && name[first] <= 0xDBFF) marked[first + 1] = true;
  }
  return WrapRuns(name, marked, prefix, suffix);
}
