#include "dataapi/ncGNSUtil.h"

namespace {

const char16_t kGnsPrefix[] = u"gns://";

}  // namespace

bool ncGNSUtil::HasGNSPrefix(const base::String& gns) {
  const base::String prefix(kGnsPrefix);
  return gns.size() >= prefix.size() && base::EqualsIgnoreCase(gns.substr(0, prefix.size()), prefix);
}
