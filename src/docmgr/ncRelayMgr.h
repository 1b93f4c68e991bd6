// Resume records of interrupted transfers in nonius.db: tb_upload_nonius and
// tb_download_nonius, one row per transfer keyed by its local source path, and the codec
// of an upload's list of blocks still to send.
#pragma once

#include "docmgr/ncDBMgr.h"
#include "docmgr/ncDocMgrDefs.h"
#include "docmgr/ncIRelayMgr.h"
#include "docmgr/nsCOMPtr.h"

class ncRelayMgr : public ncIRelayMgr {
  NC_DECL_ISUPPORTS
 public:
  ncRelayMgr();

  void Init(const base::String& path);
  // The store's database connection.
  ncDBMgr* GetDBMgr() const { return dbMgr_.get(); }
  void Close();

  void UpdateUploadNonius(const ncUploadNonius& info) override;
  bool GetUploadNoniusByPath(const base::String& path, ncUploadNonius& info) override;
  bool HasUploadNoniusWithPath(const base::String& path) override;
  bool ListUploadNonius(std::vector<ncUploadNonius>& list, bool all) override;
  bool ListUploadNoniusWithStatus2(std::vector<ncUploadNonius>& list) override;
  void UpdateUploadNoniusUnuploadBlocks(const base::String& path, const base::String& unUploadBlocks, int status) override;
  void UpdateUploadNoniusDuration(const base::String& path, int64_t duration) override;
  void UpdateUploadNonius_Pause(const base::String& path, double ratios, int status) override;
  void DeleteUploadNonius(const base::String& path) override;

  bool ParseUnuploadBlocks(const base::String& unUploadBlocks, const int32_t& maxNum, std::set<int32_t>& blocks) override;
  bool DeleteFormUnupload(base::String& unUploadBlocks, const int32_t& blockId) override;
  bool UpdateUnuploadWithMaxId(const int32_t& maxId, base::String& unUploadBlocks) override;
  bool GetUnuploadNum(const base::String& unUploadBlocks, uint32_t& num) override;

  void UpdateDownloadNonius(const ncDownloadNonius& info) override;
  bool GetDownloadNoniusByPath(const base::String& path, ncDownloadNonius& info) override;
  bool ListDownloadNonius(std::vector<ncDownloadNonius>& list, bool all) override;
  bool ListDownloadNoniusWithStatus2(std::vector<ncDownloadNonius>& list) override;
  void UpdateDownloadNoniusRange(const base::String& path, int64_t range, int status, int64_t lastModified) override;
  void UpdateDownloadNonius_Pause(const base::String& path, double ratios, int status) override;
  void DeleteDownloadNonius(const base::String& path) override;

  // A progress fraction as stored: the integer part of ratio x 10000 (toward zero).
  static int32_t EncodeRatio(double ratio);

 protected:
  virtual ~ncRelayMgr();

 private:
  // The tables, indexes and triggers of a new store; all that a protected connection may not do.
  void CreateSchema();
  nsCOMPtr<ncDBMgr> dbMgr_;
};
