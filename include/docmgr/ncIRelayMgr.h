// Resume records of interrupted uploads and downloads, kept in nonius.db of each sync
// root's data directory and keyed by the transfer's local source path; and the codec of
// the list of blocks an upload still owes.
//
// Ownership: owned by the document manager, one per sync root; the pointer from
// ncIDocMgr::GetRelayMgr carries a reference the caller releases.
// Thread safety: any thread; statements on nonius.db run one at a time. The block-list
// operations work on the caller's text only and touch no database.
#pragma once

#include <cstdint>
#include <set>
#include <vector>

#include "docmgr/String.h"
#include "docmgr/nsISupports.h"

// One row of tb_upload_nonius, fields in column order.
struct ncUploadNonius {
  base::String srcPath;   // absolute local path of the file being uploaded (the key)
  base::String destPath;  // destination on the server side
  base::String docId;
  base::String md5;
  base::String crc32;
  base::String sliceMd5;  // digest of the first slice
  base::String uploadId;  // server-side multipart upload id
  int64_t lastModified = 0;
  base::String otag;
  int64_t partSize = 0;   // block size
  int64_t size = 0;
  // The blocks not yet uploaded: a JSON array of "N", "A-B" and "A-" (open) elements, or
  // "" before the first block was sent.
  base::String unUploadBlocks;
  bool direcMode = false;
  int32_t status = 0;
  int32_t taskSrc = 0;
  int32_t onDup = 0;
  bool delSrc = false;
  double ratios = 0;      // progress fraction, kept to four decimals (truncated)
  int64_t duration = 0;
  base::String csf;       // classification tag of the file
};

// One row of tb_download_nonius, fields in column order.
struct ncDownloadNonius {
  base::String srcPath;   // absolute local path of the file being downloaded (the key)
  base::String destPath;
  base::String docId;
  int64_t lastModified = 0;
  base::String otag;
  int32_t docType = 0;
  base::String typeName;
  int32_t viewType = 0;
  base::String viewName;
  int64_t mtime = 0;
  int64_t size = 0;
  int32_t attr = 0;
  int64_t range = 0;      // bytes already fetched
  bool direcMode = false;
  int32_t status = 0;
  int32_t taskSrc = 0;
  bool delSrc = false;
  double ratios = 0;
};

class ncIRelayMgr : public nsISupports {
 public:
  NS_DECLARE_STATIC_IID_ACCESSOR({0x36989B90, 0x9771, 0x42E9, {0xB0, 0xF7, 0x45, 0xB2, 0x18, 0xAB, 0x0D, 0x3B}})

  // Adds the record, or replaces the whole record of the same srcPath.
  virtual void UpdateUploadNonius(const ncUploadNonius& info) = 0;
  // False, with info unchanged, when there is no record of the path.
  virtual bool GetUploadNoniusByPath(const base::String& path, ncUploadNonius& info) = 0;
  virtual bool HasUploadNoniusWithPath(const base::String& path) = 0;
  // all: every record, highest status first; else the records whose status is not 2.
  // Appends to list; true when at least one record came back.
  virtual bool ListUploadNonius(std::vector<ncUploadNonius>& list, bool all) = 0;
  virtual bool ListUploadNoniusWithStatus2(std::vector<ncUploadNonius>& list) = 0;
  virtual void UpdateUploadNoniusUnuploadBlocks(const base::String& path, const base::String& unUploadBlocks,
                                                int status) = 0;
  virtual void UpdateUploadNoniusDuration(const base::String& path, int64_t duration) = 0;
  virtual void UpdateUploadNonius_Pause(const base::String& path, double ratios, int status) = 0;
  virtual void DeleteUploadNonius(const base::String& path) = 0;

  // The block list. These work on the text only; the caller stores the result.
  // Expands the list into block numbers, at most maxNum of them. "A-B" counts only when
  // A < B, so an open "A-" yields nothing until UpdateUnuploadWithMaxId closes it.
  virtual bool ParseUnuploadBlocks(const base::String& unUploadBlocks, const int32_t& maxNum,
                                   std::set<int32_t>& blocks) = 0;
  // Removes one block, splitting the range that holds it. False for the empty text.
  virtual bool DeleteFormUnupload(base::String& unUploadBlocks, const int32_t& blockId) = 0;
  // Closes the open range once the last block is known: "" becomes [1-maxId], [A-] becomes
  // [A-maxId] ([maxId] when they are equal). False when the list is anything else or its
  // start lies beyond maxId.
  virtual bool UpdateUnuploadWithMaxId(const int32_t& maxId, base::String& unUploadBlocks) = 0;
  // Adds the number of blocks in the list to num (which the caller sets first).
  virtual bool GetUnuploadNum(const base::String& unUploadBlocks, uint32_t& num) = 0;

  virtual void UpdateDownloadNonius(const ncDownloadNonius& info) = 0;
  virtual bool GetDownloadNoniusByPath(const base::String& path, ncDownloadNonius& info) = 0;
  virtual bool ListDownloadNonius(std::vector<ncDownloadNonius>& list, bool all) = 0;
  virtual bool ListDownloadNoniusWithStatus2(std::vector<ncDownloadNonius>& list) = 0;
  virtual void UpdateDownloadNoniusRange(const base::String& path, int64_t range, int status,
                                         int64_t lastModified) = 0;
  virtual void UpdateDownloadNonius_Pause(const base::String& path, double ratios, int status) = 0;
  virtual void DeleteDownloadNonius(const base::String& path) = 0;

 protected:
  ~ncIRelayMgr() = default;
};
