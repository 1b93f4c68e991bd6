#include "dataapi/ncGNSUtil.h"

using base::String;

namespace {

const char16_t kGnsPrefix[] = u"gns://";
const size_t kPrefixLength = 6;

// The levels part of an id: everything after the prefix, without trailing "/".
String Levels(const String& gns) {
  size_t end = gns.size();
  while (end > kPrefixLength && gns[end - 1] == u'/') --end;
  return gns.substr(kPrefixLength, end - kPrefixLength);
}

// The id's own prefix, in the letter case it was written with.
String Prefix(const String& gns) { return gns.substr(0, kPrefixLength); }

}  // namespace

bool ncGNSUtil::HasGNSPrefix(const String& gns) {
  const String prefix(kGnsPrefix);
  return gns.size() >= prefix.size() && base::EqualsIgnoreCase(gns.substr(0, prefix.size()), prefix);
}

String ncGNSUtil::GetParentPath(const String& gns) {
  if (!HasGNSPrefix(gns)) return String();
  const String levels = Levels(gns);
  const size_t last = levels.rfind(u'/');
  if (last == String::npos) return String();
  return Prefix(gns) + levels.substr(0, last);
}

String ncGNSUtil::GetNodeName(const String& gns) {
  if (!HasGNSPrefix(gns)) return String();
  const String levels = Levels(gns);
  const size_t last = levels.rfind(u'/');
  return last == String::npos ? levels : levels.substr(last + 1);
}
