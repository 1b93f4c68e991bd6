// The synchronisation tags kept on the files and folders themselves, one named stream per
// tag ("isDelay", "docId", "vrType", "errMark", "status"), so that a tag travels with its
// item when it is renamed or moved.
//
// Ownership: owned by the document manager; the pointer from ncIDocMgr::GetADSMgr carries a
// reference the caller releases.
// Thread safety: no state; any thread. The read-only retry of a write changes the item's
// attributes for a moment and restores them; a concurrent change of them is overwritten.
#pragma once

#include <cstdint>

#include "docmgr/String.h"
#include "docmgr/nsISupports.h"

class ncIADSMgr : public nsISupports {
 public:
  NS_DECLARE_STATIC_IID_ACCESSOR({0xE705009A, 0xB605, 0x48C9, {0xB1, 0x5F, 0xC9, 0x2A, 0x3B, 0x26, 0xC5, 0x47}})

  // Set and Delete throw (code 4 or 5) when the file system refuses; a vanished item is not
  // an error. Get returns false and leaves the output alone when there is nothing to read.
  // Check tells whether the tag is present.
  virtual void SetDelayInfo(const base::String& path, int64_t size) = 0;
  virtual bool GetDelayInfo(const base::String& path, int64_t& size) = 0;
  virtual bool CheckDelayInfo(const base::String& path) = 0;
  virtual void DeleteDelayInfo(const base::String& path) = 0;

  // The id must carry the document-id prefix; ids of up to 1023 units read back whole.
  virtual void SetDocIdInfo(const base::String& path, const base::String& docId) = 0;
  virtual bool GetDocIdInfo(const base::String& path, base::String& docId) = 0;
  virtual bool CheckDocIdInfo(const base::String& path) = 0;
  virtual void DeleteDocIdInfo(const base::String& path) = 0;

  virtual void SetVrTypeInfo(const base::String& path, int64_t vrType) = 0;
  virtual bool GetVrTypeInfo(const base::String& path, int64_t& vrType) = 0;
  virtual bool CheckVrTypeInfo(const base::String& path) = 0;
  virtual void DeleteVrTypeInfo(const base::String& path) = 0;

  // Callers only ask whether an item carries an error mark and clear it: no getter.
  virtual void SetErrMarkInfo(const base::String& path, int32_t code) = 0;
  virtual bool CheckErrMarkInfo(const base::String& path) = 0;
  virtual void DeleteErrMarkInfo(const base::String& path) = 0;

  virtual void SetStatusInfo(const base::String& path, int64_t status) = 0;
  virtual bool GetStatusInfo(const base::String& path, int64_t& status) = 0;
  virtual bool CheckStatusInfo(const base::String& path) = 0;
  virtual void DeleteStatusInfo(const base::String& path) = 0;

 protected:
  ~ncIADSMgr() = default;
};
