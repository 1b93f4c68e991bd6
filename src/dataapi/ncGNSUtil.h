// Server document ids: namespace paths "gns://<id>/<id>/...", the node names of the levels
// from the top-level object down, separated by "/" (gns://A1B2/C3D4/E5F6). A node name is
// the object's own name in the namespace; the id of an object's parent is its id without
// the last level.
#pragma once

#include <cstdint>

#include "text/String.h"

class ncGNSUtil {
 public:
  // True when the text carries the document-id scheme prefix "gns://" (any letter case).
  static bool HasGNSPrefix(const base::String& gns);
  // The id of the parent object: the id without its last level. A top-level object
  // (gns://A) and anything without the prefix have no parent: "".
  static base::String GetParentPath(const base::String& gns);
  // The last level of the id (gns://A/B -> B; gns://A -> A); "" without the prefix.
  static base::String GetNodeName(const base::String& gns);
};
