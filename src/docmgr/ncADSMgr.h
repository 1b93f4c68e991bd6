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

  void SetDelayInfo(const String& path, int64_t size) override;
  bool GetDelayInfo(const String& path, int64_t& size) override;
  bool CheckDelayInfo(const String& path) override;
  void DeleteDelayInfo(const String& path) override;

  void SetDocIdInfo(const String& path, const String& docId) override;
  bool GetDocIdInfo(const String& path, String& docId) override;
  bool CheckDocIdInfo(const String& path) override;
  void DeleteDocIdInfo(const String& path) override;

  void SetVrTypeInfo(const String& path, int64_t vrType) override;
  bool GetVrTypeInfo(const String& path, int64_t& vrType) override;
  bool CheckVrTypeInfo(const String& path) override;
  void DeleteVrTypeInfo(const String& path) override;

  void SetErrMarkInfo(const String& path, int32_t code) override;
  bool CheckErrMarkInfo(const String& path) override;
  void DeleteErrMarkInfo(const String& path) override;

  void SetStatusInfo(const String& path, int64_t status) override;
  bool GetStatusInfo(const String& path, int64_t& status) override;
  bool CheckStatusInfo(const String& path) override;
  void DeleteStatusInfo(const String& path) override;

 protected:
  virtual ~ncADSMgr();

 private:
  enum class Change { Set, Remove };
  // Runs a stream change on the prefixed path; on access denied once more with the
  // read-only attribute cleared, restoring the attributes afterwards. A vanished item is
  // quiet; any other failure throws code 4 (Set) or 5 (Remove).
  static void ChangeStream(const String& path, Change change, const std::function<int(const String&)>& call);
  static void SetInteger(const String& path, const char16_t* stream, int64_t value);
  static bool GetInteger(const String& path, const char16_t* stream, int64_t& value);
  static bool CheckStream(const String& path, const char16_t* stream);
  static void RemoveStream(const String& path, const char16_t* stream);
};
