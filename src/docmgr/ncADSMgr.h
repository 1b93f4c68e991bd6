// The tag manager: keeps the five synchronisation tags in named streams of the tagged item.
// It holds no state; every call works on the path it is given.
#pragma once

#include <functional>

#include "docmgr/ncDocMgrDefs.h"
#include "docmgr/ncIADSMgr.h"

class ncADSMgr : public ncIADSMgr {
  NC_DECL_ISUPPORTS
 public:
  ncADSMgr();

  // The streams that hold the tags, one per tag.
  static constexpr char16_t kDelayStream[] = u"isDelay";
  static constexpr char16_t kDocIdStream[] = u"docId";
  static constexpr char16_t kVrTypeStream[] = u"vrType";
  static constexpr char16_t kErrMarkStream[] = u"errMark";
  static constexpr char16_t kStatusStream[] = u"status";

  void SetDelayInfo(const base::String& path, int64_t size) override;
  bool GetDelayInfo(const base::String& path, int64_t& size) override;
  bool CheckDelayInfo(const base::String& path) override;
  void DeleteDelayInfo(const base::String& path) override;

  void SetDocIdInfo(const base::String& path, const base::String& docId) override;
  bool GetDocIdInfo(const base::String& path, base::String& docId) override;
  bool CheckDocIdInfo(const base::String& path) override;
  void DeleteDocIdInfo(const base::String& path) override;

  void SetVrTypeInfo(const base::String& path, int64_t vrType) override;
  bool GetVrTypeInfo(const base::String& path, int64_t& vrType) override;
  bool CheckVrTypeInfo(const base::String& path) override;
  void DeleteVrTypeInfo(const base::String& path) override;

  void SetErrMarkInfo(const base::String& path, int32_t code) override;
  bool CheckErrMarkInfo(const base::String& path) override;
  void DeleteErrMarkInfo(const base::String& path) override;

  void SetStatusInfo(const base::String& path, int64_t status) override;
  bool GetStatusInfo(const base::String& path, int64_t& status) override;
  bool CheckStatusInfo(const base::String& path) override;
  void DeleteStatusInfo(const base::String& path) override;

 protected:
  virtual ~ncADSMgr();

 private:
  enum class Change { Set, Remove };
  // Runs a stream change on the prefixed path; on access denied once more with the
  // read-only attribute cleared, restoring the attributes afterwards. A vanished item is
  // quiet; any other failure throws code 4 (Set) or 5 (Remove).
  static void ChangeStream(const base::String& path, Change change, const std::function<int(const base::String&)>& call);
  static void SetInteger(const base::String& path, const char16_t* stream, int64_t value);
  static bool GetInteger(const base::String& path, const char16_t* stream, int64_t& value);
  static bool CheckStream(const base::String& path, const char16_t* stream);
  static void RemoveStream(const base::String& path, const char16_t* stream);
};
