#include "docmgr/ncRelayMgr.h"

#include <cmath>
#include <cstdint>

#include "dataapi/ncJson.h"
#include "docmgr/ncDocUtils.h"
#include "docmgr/ncModuleAllocator.h"
#include "docmgr/ncQueryResult.h"

using base::String;

namespace {

const char16_t kUploadTable[] = u"tb_upload_nonius";
const char16_t kDownloadTable[] = u"tb_download_nonius";

const char16_t kUploadColumns[] =
    u"srcPath, destPath, docId, md5, crc32, sliceMd5, uploadId, lastModified, otag, partSize, size, unUploadBlocks, "
    u"direcMode, status, taskSrc, onDup, delSrc, ratios, duration, csf";
const char16_t kDownloadColumns[] =
    u"srcPath, destPath, docId, lastModified, otag, docType, typeName, viewType, viewName, mtime, size, attr, range, "
    u"direcMode, status, taskSrc, delSrc, ratios";

double DecodeRatio(int64_t stored) { return static_cast<double>(stored) / 10000.0; }
String Decimal(int64_t value) { return base::ToString(value); }

using Q = ncDocUtils;

// --- rows ----------------------------------------------------------------------
// A row in the column order of kUploadColumns or kDownloadColumns.

void FromRow(const ncQueryResult& result, int row, ncUploadNonius& r) {
  r.srcPath = result.text(row, 0);
  r.destPath = result.text(row, 1);
  r.docId = result.text(row, 2);
  r.md5 = result.text(row, 3);
  r.crc32 = result.text(row, 4);
  r.sliceMd5 = result.text(row, 5);
  r.uploadId = result.text(row, 6);
  r.lastModified = result.int64(row, 7);
  r.otag = result.text(row, 8);
  r.partSize = result.int64(row, 9);
  r.size = result.int64(row, 10);
  r.unUploadBlocks = result.text(row, 11);
  r.direcMode = result.flag(row, 12);
  r.status = result.int32(row, 13);
  r.taskSrc = result.int32(row, 14);
  r.onDup = result.int32(row, 15);
  r.delSrc = result.flag(row, 16);
  r.ratios = DecodeRatio(result.int64(row, 17));
  r.duration = result.int64(row, 18);
  r.csf = result.text(row, 19);
}

void FromRow(const ncQueryResult& result, int row, ncDownloadNonius& r) {
  r.srcPath = result.text(row, 0);
  r.destPath = result.text(row, 1);
  r.docId = result.text(row, 2);
  r.lastModified = result.int64(row, 3);
  r.otag = result.text(row, 4);
  r.docType = result.int32(row, 5);
  r.typeName = result.text(row, 6);
  r.viewType = result.int32(row, 7);
  r.viewName = result.text(row, 8);
  r.mtime = result.int64(row, 9);
  r.size = result.int64(row, 10);
  r.attr = result.int32(row, 11);
  r.range = result.int64(row, 12);
  r.direcMode = result.flag(row, 13);
  r.status = result.int32(row, 14);
  r.taskSrc = result.int32(row, 15);
  r.delSrc = result.flag(row, 16);
  r.ratios = DecodeRatio(result.int64(row, 17));
}

// Appends the rows sql selects; false when it selects none.
template <typename Row>
bool ReadRows(ncDBMgr* db, const String& sql, std::vector<Row>& list) {
  ncQueryResult result(db, sql);
  for (int row = 0; row < result.rows(); ++row) {
    Row r;
    FromRow(result, row, r);
    list.push_back(std::move(r));
  }
  return result.rows() > 0;
}

// The transfer recorded for a source path; false, and info as it was, when there is none.
template <typename Row>
bool ReadByPath(ncDBMgr* db, const char16_t* columns, const char16_t* table, const String& path, Row& info) {
  std::vector<Row> found;
  if (!ReadRows(db, base::Format(u"select %s from %s where srcPath='%s' limit 1", columns, table, Q::QuoteSql(path)),
                found))
    return false;
  info = std::move(found.front());
  return true;
}

// Pausing and deleting read the same on both tables.
void SetRatiosAndStatus(ncDBMgr* db, const char16_t* table, const String& path, double ratios, int status) {
  db->ExecuteSql(base::Format(u"update %s set ratios='%d', status='%d' where srcPath='%s'", table,
                              ncRelayMgr::EncodeRatio(ratios), status, Q::QuoteSql(path)));
}

void DeleteByPath(ncDBMgr* db, const char16_t* table, const String& path) {
  db->ExecuteSql(base::Format(u"delete from %s where srcPath='%s'", table, Q::QuoteSql(path)));
}

// --- block lists -------------------------------------------------------------
// An element is "N" (one block), "A-B" (A to B, meaningful only when A < B) or "A-" (from
// A on, the end not known yet; its B reads as 0).

struct BlockElement {
  bool isRange = false;
  int32_t first = 0;  // N, or A
  int32_t last = 0;   // B
};

BlockElement ReadElement(const std::string& item) {
  BlockElement element;
  const size_t dash = item.find('-');
  if (dash == std::string::npos) {
    element.first = base::ToInt32(item.c_str());
    return element;
  }
  element.isRange = true;
  element.first = base::ToInt32(item.substr(0, dash).c_str());
  element.last = base::ToInt32(item.c_str() + dash + 1);
  return element;
}

std::string BlockText(int64_t block) { return std::to_string(block); }
std::string RangeText(int64_t first, int64_t last) { return BlockText(first) + "-" + BlockText(last); }

const JSON::Value::array_type& ReadBlockList(const String& unUploadBlocks, JSON::Value& root) {
  root.read(base::ToUtf8(unUploadBlocks));
  return root.as_array();
}

}  // namespace

NC_IMPL_POOLED_ISUPPORTS1(ncRelayMgr, ncIRelayMgr)

ncRelayMgr::ncRelayMgr() : dbMgr_(NC_NEW(ncDBMgr)) { NC_TRACE(u"this: 0x%p", this); }

ncRelayMgr::~ncRelayMgr() { NC_TRACE(u"this: 0x%p", this); }

void ncRelayMgr::Init(const String& path) {
  NC_TRACE(u"path: %s", path);
  NC_CHECK_PATH(path);
  dbMgr_->Open(path);
  dbMgr_->ExecuteSql(u"PRAGMA synchronous=NORMAL;");
  CreateSchema();
  dbMgr_->ProtectSchema();
}

void ncRelayMgr::CreateSchema() {
  ncDBMgr::SchemaChange setUp(*dbMgr_);
  dbMgr_->ExecuteSql(base::Format(
      u"create table if not exists %s (\t\t\tsrcPath text PRIMARY KEY,\t\t\tdestPath text,\t\t\tdocId text,\t\t\t"
      u"md5 text,\t\t\tcrc32 text,\t\t\tsliceMd5 text,\t\t\tuploadId text,\t\t\tlastModified text,\t\t\t"
      u"otag text,\t\t\tpartSize text,\t\t\tsize text,\t\t\tunUploadBlocks text,\t\t\tdirecMode int,\t\t\t"
      u"status int,\t\t\ttaskSrc int,\t\t\tonDup int,\t\t\tdelSrc int,\t\t\tratios int,\t\t\tduration text,\t\t\t"
      u"csf text)",
      kUploadTable));
  dbMgr_->ExecuteSql(base::Format(u"create unique index if not exists %s on %s(srcPath, destPath)",
                                  base::Format(u"%s_src_dest_path_idx", kUploadTable), kUploadTable));
  dbMgr_->ExecuteSql(base::Format(
      u"create table if not exists %s (\t\t\tsrcPath text PRIMARY KEY,\t\t\tdestPath text,\t\t\tdocId text,\t\t\t"
      u"lastModified text,\t\t\totag text,\t\t\tdocType int,\t\t\ttypeName text,\t\t\tviewType int,\t\t\t"
      u"viewName text,\t\t\tmtime text,\t\t\tsize text,\t\t\tattr int,\t\t\trange text,\t\t\tdirecMode int\t,\t\t\t"
      u"status int,\t\t\ttaskSrc int,\t\t\tdelSrc int,\t\t\tratios int)",
      kDownloadTable));
  dbMgr_->ExecuteSql(base::Format(u"create unique index if not exists %s on %s(srcPath, destPath)",
                                  base::Format(u"%s_src_dest_path_idx", kDownloadTable), kDownloadTable));
}

void ncRelayMgr::Close() {
  NC_TRACE(u"this: 0x%p", this);
  dbMgr_->Close();
}

int32_t ncRelayMgr::EncodeRatio(double ratio) {
  const double scaled = std::trunc(ratio * 10000.0);
  if (std::isnan(scaled)) return 0;
  if (scaled >= 2147483647.0) return INT32_MAX;
  if (scaled <= -2147483648.0) return INT32_MIN;
  return static_cast<int32_t>(scaled);
}

// --- uploads -------------------------------------------------------------------

void ncRelayMgr::UpdateUploadNonius(const ncUploadNonius& r) {
  NC_TRACE(u"absPath: %s", r.srcPath);
  // Every text has its quotes doubled, the server's digests, ids, tags and block list too:
  // a value without an apostrophe leaves the statement as it was, and one with an
  // apostrophe is written as it is instead of failing the call or running SQL of its own.
  dbMgr_->ExecuteSql(base::Format(
      u"replace into %s(srcPath, destPath, docId, md5, crc32, sliceMd5, uploadId, lastModified, otag, partSize, "
      u"size, unUploadBlocks, direcMode, status, taskSrc, onDup, delSrc, ratios, duration, csf)\t\t\tvalues('%s', "
      u"'%s', '%s', '%s', '%s', '%s', '%s', '%s', '%s', '%s', '%s', '%s', '%d', '%d', '%d', '%d', '%d', '%d', "
      u"'%s','%s')",
      kUploadTable, Q::QuoteSql(r.srcPath), Q::QuoteSql(r.destPath), Q::QuoteSql(r.docId), Q::QuoteSql(r.md5),
      Q::QuoteSql(r.crc32), Q::QuoteSql(r.sliceMd5), Q::QuoteSql(r.uploadId), Decimal(r.lastModified),
      Q::QuoteSql(r.otag), Decimal(r.partSize), Decimal(r.size), Q::QuoteSql(r.unUploadBlocks), r.direcMode, r.status,
      r.taskSrc, r.onDup, r.delSrc, EncodeRatio(r.ratios), Decimal(r.duration), Q::QuoteSql(r.csf)));
}

bool ncRelayMgr::GetUploadNoniusByPath(const String& path, ncUploadNonius& info) {
  NC_TRACE(u"absPath: %s", path);
  return ReadByPath(dbMgr_.get(), kUploadColumns, kUploadTable, path, info);
}

bool ncRelayMgr::HasUploadNoniusWithPath(const String& path) {
  NC_TRACE(u"absPath: %s", path);
  return ncQueryResult(dbMgr_.get(), base::Format(u"select uploadId from %s where srcPath='%s' limit 1", kUploadTable,
                                                  Q::QuoteSql(path)))
             .rows() > 0;
}

bool ncRelayMgr::ListUploadNonius(std::vector<ncUploadNonius>& list, bool all) {
  NC_TRACE(u"all: %d", all);
  return ReadRows(dbMgr_.get(),
                  all ? base::Format(u"select %s from %s order by status desc", kUploadColumns, kUploadTable)
                      : base::Format(u"select %s from %s  where status!=2", kUploadColumns, kUploadTable),
                  list);
}

bool ncRelayMgr::ListUploadNoniusWithStatus2(std::vector<ncUploadNonius>& list) {
  NC_TRACE(u"this: 0x%p", this);
  return ReadRows(dbMgr_.get(), base::Format(u"select %s from %s where status=2", kUploadColumns, kUploadTable),
                  list);
}

void ncRelayMgr::UpdateUploadNoniusUnuploadBlocks(const String& path, const String& unUploadBlocks, int status) {
  NC_TRACE(u"absPath: %s", path);
  dbMgr_->ExecuteSql(base::Format(u"update %s set unUploadBlocks='%s', status='%d' where srcPath='%s'", kUploadTable,
                                  Q::QuoteSql(unUploadBlocks), status, Q::QuoteSql(path)));
}

void ncRelayMgr::UpdateUploadNoniusDuration(const String& path, int64_t duration) {
  NC_TRACE(u"absPath: %s", path);
  dbMgr_->ExecuteSql(base::Format(u"update %s set duration='%s' where srcPath='%s'", kUploadTable, Decimal(duration),
                                  Q::QuoteSql(path)));
}

void ncRelayMgr::UpdateUploadNonius_Pause(const String& path, double ratios, int status) {
  NC_TRACE(u"absPath: %s", path);
  SetRatiosAndStatus(dbMgr_.get(), kUploadTable, path, ratios, status);
}

void ncRelayMgr::DeleteUploadNonius(const String& path) {
  NC_TRACE(u"absPath: %s", path);
  DeleteByPath(dbMgr_.get(), kUploadTable, path);
}

// --- block lists -----------------------------------------------------------------

bool ncRelayMgr::ParseUnuploadBlocks(const String& unUploadBlocks, const int32_t& maxNum, std::set<int32_t>& blocks) {
  NC_TRACE(u"unUploadBlocks: %s", unUploadBlocks);
  blocks.clear();
  JSON::Value root;
  const int64_t limit = maxNum;
  for (const JSON::Value& item : ReadBlockList(unUploadBlocks, root)) {
    if (static_cast<int64_t>(blocks.size()) >= limit) break;
    const BlockElement element = ReadElement(item.as_string());
    if (!element.isRange) {
      blocks.insert(element.first);
      continue;
    }
    if (element.first >= element.last) continue;  // "A-A", a reversed range, or the open "A-"
    // 64-bit counting: a range that ends at the largest block number still ends.
    for (int64_t block = element.first; block <= element.last && static_cast<int64_t>(blocks.size()) < limit;
         ++block)
      blocks.insert(static_cast<int32_t>(block));
  }
  return true;
}

bool ncRelayMgr::GetUnuploadNum(const String& unUploadBlocks, uint32_t& num) {
  if (unUploadBlocks.empty()) return false;
  JSON::Value root;
  for (const JSON::Value& item : ReadBlockList(unUploadBlocks, root)) {
    const BlockElement element = ReadElement(item.as_string());
    if (!element.isRange) ++num;
    else if (element.first < element.last)
      num += static_cast<uint32_t>(static_cast<int64_t>(element.last) - element.first + 1);
  }
  NC_TRACE(u"GetUnuploadNum.unUploadBlocks: %s, Num: %d", unUploadBlocks, num);
  return true;
}

bool ncRelayMgr::DeleteFormUnupload(String& unUploadBlocks, const int32_t& blockId) {
  NC_TRACE(u"oldUnUploadBlocks: %s, blockId: %d ", unUploadBlocks, blockId);
  if (unUploadBlocks.empty()) return false;
  JSON::Value root;
  const JSON::Value::array_type& old = ReadBlockList(unUploadBlocks, root);
  JSON::Value scratch;
  JSON::Value& kept = scratch["UnUploadBlocks"];
  kept = JSON::Value(JSON::ArrayType);
  bool found = false;
  const int64_t before = static_cast<int64_t>(blockId) - 1;
  const int64_t after = static_cast<int64_t>(blockId) + 1;
  for (const JSON::Value& item : old) {
    const std::string& text = item.as_string();
    if (found) {
      kept.push_back(text);
      continue;
    }
    const BlockElement element = ReadElement(text);
    if (!element.isRange) {
      if (element.first != blockId) kept.push_back(text);
      else found = true;
      continue;
    }
    if (blockId < element.first || blockId > element.last) {
      kept.push_back(text);
      continue;
    }
    found = true;
    if (element.first < before) kept.push_back(RangeText(element.first, before));
    else if (element.first == before) kept.push_back(BlockText(element.first));
    if (after < element.last) kept.push_back(RangeText(after, element.last));
    else if (after == element.last) kept.push_back(BlockText(element.last));
  }
  unUploadBlocks = base::FromUtf8(kept.to_string());
  NC_TRACE(u"newUnUploadBlocks: %s", unUploadBlocks);
  return true;
}

bool ncRelayMgr::UpdateUnuploadWithMaxId(const int32_t& maxId, String& unUploadBlocks) {
  int32_t start = 1;
  if (!unUploadBlocks.empty()) {
    JSON::Value root;
    const JSON::Value::array_type& old = ReadBlockList(unUploadBlocks, root);
    if (old.size() != 1) {
      NC_TRACE(u"UpdateUnuploadWithMaxId failed.unUploadBlocks: %s, arrSize: %d", unUploadBlocks, old.size());
      return false;
    }
    const std::string& item = old.front().as_string();
    const size_t dash = item.find('-');
    if (dash == std::string::npos || dash + 1 != item.size()) return false;  // not an open "A-"
    start = ReadElement(item).first;
  }
  if (start > maxId) return false;
  JSON::Value scratch;
  JSON::Value& closed = scratch["oldUnUploadBlocks"];
  closed = JSON::Value(JSON::ArrayType);
  closed.push_back(start < maxId ? RangeText(start, maxId) : BlockText(start));
  unUploadBlocks = base::FromUtf8(closed.to_string());
  return true;
}

// --- downloads -------------------------------------------------------------------

void ncRelayMgr::UpdateDownloadNonius(const ncDownloadNonius& r) {
  NC_TRACE(u"absPath: %s", r.srcPath);
  dbMgr_->ExecuteSql(base::Format(
      u"replace into %s(srcPath, destPath, docId, lastModified, otag, docType, typeName, viewType, viewName, mtime, "
      u"size, attr, range, direcMode, status, taskSrc, delSrc, ratios)\t\t\tvalues('%s', '%s', '%s', '%s', '%s', "
      u"'%d', '%s', '%d', '%s', '%s', '%s', '%d', '%s', '%d', '%d', '%d', '%d', '%d')",
      kDownloadTable, Q::QuoteSql(r.srcPath), Q::QuoteSql(r.destPath), Q::QuoteSql(r.docId), Decimal(r.lastModified),
      Q::QuoteSql(r.otag),
      r.docType, Q::QuoteSql(r.typeName), r.viewType, Q::QuoteSql(r.viewName), Decimal(r.mtime), Decimal(r.size),
      r.attr, Decimal(r.range), r.direcMode, r.status, r.taskSrc, r.delSrc, EncodeRatio(r.ratios)));
}

bool ncRelayMgr::GetDownloadNoniusByPath(const String& path, ncDownloadNonius& info) {
  NC_TRACE(u"absPath: %s", path);
  return ReadByPath(dbMgr_.get(), kDownloadColumns, kDownloadTable, path, info);
}

bool ncRelayMgr::ListDownloadNonius(std::vector<ncDownloadNonius>& list, bool all) {
  NC_TRACE(u"all: %d", all);
  return ReadRows(dbMgr_.get(),
                  all ? base::Format(u"select %s from %s  order by status desc", kDownloadColumns, kDownloadTable)
                      : base::Format(u"select %s from %s  where status!=2", kDownloadColumns, kDownloadTable),
                  list);
}

bool ncRelayMgr::ListDownloadNoniusWithStatus2(std::vector<ncDownloadNonius>& list) {
  NC_TRACE(u"this: 0x%p", this);
  return ReadRows(dbMgr_.get(), base::Format(u"select %s from %s  where status=2", kDownloadColumns, kDownloadTable),
                  list);
}

void ncRelayMgr::UpdateDownloadNoniusRange(const String& path, int64_t range, int status, int64_t lastModified) {
  NC_TRACE(u"absPath: %s", path);
  dbMgr_->ExecuteSql(base::Format(u"update %s set range='%s', status='%d', lastModified='%s' where srcPath='%s'",
                                  kDownloadTable, Decimal(range), status, Decimal(lastModified), Q::QuoteSql(path)));
}

void ncRelayMgr::UpdateDownloadNonius_Pause(const String& path, double ratios, int status) {
  NC_TRACE(u"absPath: %s", path);
  SetRatiosAndStatus(dbMgr_.get(), kDownloadTable, path, ratios, status);
}

void ncRelayMgr::DeleteDownloadNonius(const String& path) {
  NC_TRACE(u"absPath: %s", path);
  DeleteByPath(dbMgr_.get(), kDownloadTable, path);
}
