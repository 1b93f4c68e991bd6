// Server document ids: namespace paths "gns://<id>/<id>/...".
#pragma once

#include "base/String.h"

class ncGNSUtil {
 public:
  // True when the text carries the document-id scheme prefix "gns://" (any letter case).
  static bool HasGNSPrefix(const base::String& gns);
};
