// One sync root: its hidden data directory, its folder of unsynchronised documents, and
// the conversion between absolute paths ("/") and the relative paths ("\") the stores key
// their records by.
#pragma once

#include "base/String.h"
#include "xpcom/nsISupports.h"

class ncIPathMgr : public nsISupports {
 public:
  NS_DECLARE_STATIC_IID_ACCESSOR({0x05761C84, 0x5BBD, 0x47EA, {0x93, 0xCB, 0x00, 0xCA, 0x5E, 0xF1, 0x2F, 0xE1}})

  virtual base::String GetRootPath() = 0;
  virtual void SetUserName(const base::String& name) = 0;
  virtual bool IsInRootPath(const base::String& path, bool includeSelf) = 0;
  // The root joined with ".kestrove.cache".
  virtual base::String GetDBPath() = 0;
  virtual bool IsInDBPath(const base::String& path, bool includeSelf) = 0;
  virtual base::String GetUnsyncDocPath() = 0;
  virtual bool IsInUnsyncDoc(const base::String& path, bool includeSelf) = 0;
  // Relative paths of a local sync root begin with the root folder's own name.
  virtual base::String GetAbsolutePath(const base::String& relPath) = 0;
  // Throws code 2 with the "IDS_NOT_IN_ROOT_PATH" text for a path outside the root.
  virtual base::String GetRelativePath(const base::String& path) = 0;
};
