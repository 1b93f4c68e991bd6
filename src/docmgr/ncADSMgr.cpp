#include "docmgr/ncADSMgr.h"

#include <memory>

#include "dataapi/ncGNSUtil.h"
#include "docmgr/ncDocMgrLibrary.h"
#include "docmgr/ncModuleAllocator.h"
#include "platform/ncADSUtil.h"
#include "platform/ncPlatform.h"

using base::String;

namespace {

// A document id is read into a buffer of this many units, terminator included.
const uint32_t kDocIdBufferUnits = 1024;

}  // namespace

NC_IMPL_POOLED_ISUPPORTS1(ncADSMgr, ncIADSMgr)

ncADSMgr::ncADSMgr() { NC_TRACE(u"this: 0x%p", this); }

ncADSMgr::~ncADSMgr() { NC_TRACE(u"this: 0x%p", this); }

void ncADSMgr::ChangeStream(const String& path, Change change, const std::function<int(const String&)>& call) {
  const String target = platform::AddLongPathPrefix(path);
  if (call(target)) return;
  uint32_t code = platform::GetLastError();
  if (code == platform::kErrorAccessDenied) {
    // A read-only item refuses its streams: clear the flag for one more attempt, then put
    // the attributes back whatever the attempt gave.
    const uint32_t attributes = platform::GetFileAttributes(target);
    const bool known = attributes != platform::kInvalidAttributes;
    if (known) platform::SetFileAttributes(target, attributes & ~platform::kAttrReadOnly);
    const bool retried = call(target) != 0;
    code = platform::GetLastError();
    if (known) platform::SetFileAttributes(target, attributes);
    if (retried) return;
  }
  if (code == platform::kErrorFileNotFound) return;
  const bool set = change == Change::Set;
  throw base::Exception(__FILE__, __LINE__,
                        NC_RESOURCE_TEXT(set ? u"IDS_SET_ADS_ERR" : u"IDS_REMOVE_ADS_ERR", path),
                        set ? NC_ERR_SET_ADS : NC_ERR_REMOVE_ADS, NC_DOCMGR_PROVIDER,
                        std::make_shared<base::Exception>(BASE_SYSTEM_ERROR(code, path)));
}

void ncADSMgr::SetInteger(const String& path, const char16_t* stream, int64_t value) {
  NC_CHECK_PATH(path);
  ChangeStream(path, Change::Set,
               [&](const String& target) { return ncADSUtil::SetADS(target, stream, value); });
}

bool ncADSMgr::GetInteger(const String& path, const char16_t* stream, int64_t& value) {
  NC_CHECK_PATH(path);
  int64_t read = 0;
  if (!ncADSUtil::GetADS(platform::AddLongPathPrefix(path), stream, read)) return false;
  value = read;
  return true;
}

bool ncADSMgr::CheckStream(const String& path, const char16_t* stream) {
  NC_CHECK_PATH(path);
  return ncADSUtil::CheckADS(platform::AddLongPathPrefix(path), stream) != 0;
}

void ncADSMgr::RemoveStream(const String& path, const char16_t* stream) {
  NC_CHECK_PATH(path);
  ChangeStream(path, Change::Remove, [&](const String& target) { return ncADSUtil::RemoveADS(target, stream); });
}

void ncADSMgr::SetDelayInfo(const String& path, int64_t size) {
  NC_TRACE(u"path: %s, size: %i64", path, size);
  SetInteger(path, kDelayStream, size);
}

bool ncADSMgr::GetDelayInfo(const String& path, int64_t& size) {
  NC_TRACE(u"path: %s", path);
  return GetInteger(path, kDelayStream, size);
}

bool ncADSMgr::CheckDelayInfo(const String& path) {
  NC_TRACE(u"path: %s", path);
  return CheckStream(path, kDelayStream);
}

void ncADSMgr::DeleteDelayInfo(const String& path) {
  NC_TRACE(u"path: %s", path);
  RemoveStream(path, kDelayStream);
}

void ncADSMgr::SetDocIdInfo(const String& path, const String& docId) {
  NC_TRACE(u"path: %s, docId: %s", path, docId);
  NC_CHECK_PATH(path);
  if (docId.empty() || !ncGNSUtil::HasGNSPrefix(docId)) NC_THROW(NC_ERR_INVALID_ARG, u"Gns (%s) is INVALID.", docId);
  ChangeStream(path, Change::Set,
               [&](const String& target) { return ncADSUtil::SetADS(target, kDocIdStream, docId); });
}

bool ncADSMgr::GetDocIdInfo(const String& path, String& docId) {
  NC_TRACE(u"path: %s", path);
  NC_CHECK_PATH(path);
  char16_t buffer[kDocIdBufferUnits] = {0};
  uint32_t units = 0;
  if (!ncADSUtil::GetADS(platform::AddLongPathPrefix(path), kDocIdStream, buffer, kDocIdBufferUnits, units))
    return false;
  docId.assign(buffer, units);  // by length: an id with a NUL inside is read whole
  return true;
}

bool ncADSMgr::CheckDocIdInfo(const String& path) {
  NC_TRACE(u"path: %s", path);
  return CheckStream(path, kDocIdStream);
}

void ncADSMgr::DeleteDocIdInfo(const String& path) {
  NC_TRACE(u"path: %s", path);
  RemoveStream(path, kDocIdStream);
}

void ncADSMgr::SetVrTypeInfo(const String& path, int64_t vrType) {
  NC_TRACE(u"path: %s, vrType: %i64", path, vrType);
  SetInteger(path, kVrTypeStream, vrType);
}

bool ncADSMgr::GetVrTypeInfo(const String& path, int64_t& vrType) {
  NC_TRACE(u"path: %s", path);
  return GetInteger(path, kVrTypeStream, vrType);
}

bool ncADSMgr::CheckVrTypeInfo(const String& path) {
  NC_TRACE(u"path: %s", path);
  return CheckStream(path, kVrTypeStream);
}

void ncADSMgr::DeleteVrTypeInfo(const String& path) {
  NC_TRACE(u"path: %s", path);
  RemoveStream(path, kVrTypeStream);
}

void ncADSMgr::SetErrMarkInfo(const String& path, int32_t code) {
  NC_TRACE(u"path: %s, code: %i64", path, code);
  SetInteger(path, kErrMarkStream, static_cast<int64_t>(code));
}

bool ncADSMgr::CheckErrMarkInfo(const String& path) {
  NC_TRACE(u"path: %s", path);
  return CheckStream(path, kErrMarkStream);
}

void ncADSMgr::DeleteErrMarkInfo(const String& path) {
  NC_TRACE(u"path: %s", path);
  RemoveStream(path, kErrMarkStream);
}

void ncADSMgr::SetStatusInfo(const String& path, int64_t status) {
  NC_TRACE(u"path: %s, status: %d", path, status);
  SetInteger(path, kStatusStream, status);
}

bool ncADSMgr::GetStatusInfo(const String& path, int64_t& status) {
  NC_TRACE(u"path: %s", path);
  return GetInteger(path, kStatusStream, status);
}

bool ncADSMgr::CheckStatusInfo(const String& path) {
  NC_TRACE(u"path: %s", path);
  return CheckStream(path, kStatusStream);
}

void ncADSMgr::DeleteStatusInfo(const String& path) {
  NC_TRACE(u"path: %s", path);
  RemoveStream(path, kStatusStream);
}
