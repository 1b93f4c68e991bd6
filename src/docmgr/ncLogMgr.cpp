#include "docmgr/ncLogMgr.h"

#include "docmgr/ncDBTransaction.h"
#include "docmgr/ncDocUtils.h"
#include "docmgr/ncModuleAllocator.h"
#include "docmgr/ncQueryResult.h"

using base::String;

namespace {

const char16_t kLogTable[] = u"tb_synclog";
const char16_t kStatTable[] = u"tb_logstat";
const char16_t kCleanTrigger[] = u"trg_cleanlog";
const char16_t kInsertTrigger[] = u"trg_insertlog";
const char16_t kDeleteTrigger[] = u"trg_deletelog";

// A type is trimmed when it reaches kLogCap entries; the trim removes its oldest kLogTrim.
const int kLogCap = 50000;
const int kLogTrim = 25000;

const char16_t kDeleteTriggerSql[] =
    u"create trigger if not exists %s after delete on %s begin update %s set logCount = logCount - 1 "
    u"where logType = old.logType; end";

// True for a stored trigger text whose body reads new.logType, whatever the spacing and case.
bool ReadsNewLogType(const String& sql) {
  String compact;
  for (char16_t unit : base::ToLower(sql))
    if (unit != u' ' && unit != u'\t' && unit != u'\r' && unit != u'\n') compact += unit;
  return compact.find(u"new.logtype") != String::npos;
}

}  // namespace

NC_IMPL_POOLED_ISUPPORTS3(ncLogMgr, ncILogMgr, ncIStoreBatch, ncILogBulkWriter)

ncLogMgr::ncLogMgr() : dbMgr_(NC_NEW(ncDBMgr)) { NC_TRACE(u"this: 0x%p", this); }

ncLogMgr::~ncLogMgr() { NC_TRACE(u"this: 0x%p", this); }

void ncLogMgr::Init(const String& path) {
  NC_TRACE(u"path: %s", path);
  NC_CHECK_PATH(path);
  dbMgr_->Open(path);
  dbMgr_->ExecuteSql(u"PRAGMA synchronous=OFF;");
  CreateSchema();
  dbMgr_->ProtectSchema();
}

void ncLogMgr::CreateSchema() {
  ncDBMgr::SchemaChange setUp(*dbMgr_);
  dbMgr_->ExecuteSql(base::Format(u"create table if not exists %s ( id INTEGER PRIMARY KEY, logType int, "
                                  u"taskType int, relPath text, newName text, size int, time int, remark text, "
                                  u"visible bool)",
                                  kLogTable));
  CreateStatTable();
  CreateTrigger();
  RepairDeleteTrigger();
}

void ncLogMgr::Close() {
  NC_TRACE(u"this: 0x%p", this);
  dbMgr_->Close();
}

void ncLogMgr::CreateStatTable() {
  NC_TRACE(u"this: 0x%p", this);
  dbMgr_->ExecuteSql(base::Format(u"create table if not exists %s ( logType int PRIMARY KEY, logCount int)", kStatTable));
  // Seeded only when a counter is missing: a database opened read-only already has them
  // all and takes no write.
  {
    ncQueryResult seeded(dbMgr_.get(), base::Format(u"select count(*) from %s where logType >= 0 and logType < %d",
                                                    kStatTable, NC_SYNCLOG_COUNTED_TYPES));
    if (seeded.rows() > 0 && seeded.int64(0, 0) == NC_SYNCLOG_COUNTED_TYPES) return;
  }
  for (int logType = 0; logType < NC_SYNCLOG_COUNTED_TYPES; ++logType)
    dbMgr_->ExecuteSql(base::Format(u"insert or ignore into %s values ('%d', 0)", kStatTable, logType));
}

void ncLogMgr::CreateTrigger() {
  NC_TRACE(u"this: 0x%p", this);
  dbMgr_->ExecuteSql(base::Format(u"create trigger if not exists %s after insert on %s when (select logCount from %s "
                                  u"where logType = new.logType) >= %d begin delete from %s where id in (select id "
                                  u"from %s where logType = new.logType limit %d); end",
                                  kCleanTrigger, kLogTable, kStatTable, kLogCap, kLogTable, kLogTable, kLogTrim));
  dbMgr_->ExecuteSql(base::Format(u"create trigger if not exists %s after insert on %s begin update %s set logCount "
                                  u"= logCount + 1 where logType = new.logType; end",
                                  kInsertTrigger, kLogTable, kStatTable));
  // The counter of the deleted row's type: old.logType. (A delete trigger has no new row;
  // current SQLite refuses every statement that would fire one that reads it.)
  dbMgr_->ExecuteSql(base::Format(kDeleteTriggerSql, kDeleteTrigger, kLogTable, kStatTable));
}

// Databases written by earlier releases hold a delete trigger that reads new.logType.
// "create trigger if not exists" leaves it in place, so it is replaced here, and the
// counters, which it has not kept, are recounted from the entries. No entry is touched.
void ncLogMgr::RepairDeleteTrigger() {
  const String stored =
      ncQueryResult(dbMgr_.get(),
                    base::Format(u"select sql from sqlite_master where type='trigger' and name='%s'", kDeleteTrigger))
          .text(0, 0);
  if (!ReadsNewLogType(stored)) return;
  NC_TRACE(u"repairing %s: %s", kDeleteTrigger, stored);
  ncDBTransaction repair(*dbMgr_);
  dbMgr_->ExecuteSql(base::Format(u"drop trigger if exists %s", kDeleteTrigger));
  dbMgr_->ExecuteSql(base::Format(kDeleteTriggerSql, kDeleteTrigger, kLogTable, kStatTable));
  dbMgr_->ExecuteSql(base::Format(u"update %s set logCount = (select count(*) from %s where %s.logType = "
                                  u"%s.logType)",
                                  kStatTable, kLogTable, kLogTable, kStatTable));
  repair.Commit();
}

void ncLogMgr::RecordSyncLog(int logType, const ncSyncLogInfo& info) {
  NC_TRACE(u"logType: %d, taskType: %d, relPath: %s", logType, info.taskType, info.relPath);
  dbMgr_->ExecuteSql(base::Format(u"insert into %s values(NULL,'%d', '%d', '%s', '%s', '%I64d', '%I64d', '%s',1)",
                                  kLogTable, logType, info.taskType, ncDocUtils::QuoteSql(info.relPath),
                                  ncDocUtils::QuoteSql(info.newName), info.size, info.time,
                                  ncDocUtils::QuoteSql(info.remark)));
}

void ncLogMgr::RecordSyncLogBulk(int logType, const ncSyncLogInfo& info) {
  NC_TRACE(u"logType: %d, taskType: %d, relPath: %s", logType, info.taskType, info.relPath);
  dbMgr_->RunPrepared(u"insert into tb_synclog values(NULL, ?, ?, ?, ?, ?, ?, ?, 1)",
                      {logType, info.taskType, info.relPath, info.newName, info.size, info.time, info.remark});
}

uint32_t ncLogMgr::CountVisible(int logType, const char16_t* tableInMessage) {
  ncQueryResult count(
      dbMgr_.get(), base::Format(u"select count(*) from %s where logType = '%d' and visible = 1", kLogTable, logType));
  if (count.rows() == 0) NC_THROW(NC_ERR_DATABASE, u"Failed to get logCount from %s.", tableInMessage);
  return static_cast<uint32_t>(count.int64(0, 0));
}

void ncLogMgr::ReadEntries(const String& sql, std::vector<ncSyncLogInfo>& out) {
  ncQueryResult entries(dbMgr_.get(), sql);
  out.reserve(out.size() + entries.rows());
  for (int row = 0; row < entries.rows(); ++row) {
    ncSyncLogInfo info;
    info.id = entries.int64(row, 0);
    info.taskType = entries.int32(row, 1);
    info.relPath = entries.text(row, 2);
    info.newName = entries.text(row, 3);
    info.size = entries.int64(row, 4);
    info.time = entries.int64(row, 5);
    info.remark = entries.text(row, 6);
    out.push_back(std::move(info));
  }
}

void ncLogMgr::GetSyncLog(int logType, std::vector<ncSyncLogInfo>& out, uint32_t begin, uint32_t end,
                          uint32_t& total) {
  NC_TRACE(u"logType: %d, begin: %u, end: %u", logType, begin, end);
  out.clear();
  total = CountVisible(logType, kStatTable);
  if (begin > end || begin > total)
    NC_THROW(NC_ERR_INVALID_ARG, u"Invalid param: begin\uFF1A%u\uFF0Cend\uFF1A%u, total\uFF1A%u", begin, end, total);
  // The page is counted back from the newest entry. Both numbers are written as the 32-bit
  // signed values they wrap to, so a limit beyond 2^31 reads as "no limit".
  const uint32_t limit = end - begin + 1;
  const uint32_t offset = total > end ? total - end : 0;
  ReadEntries(base::Format(u"select id, taskType, relPath, newName, size, time, remark from %s where (logType = '%d' "
                           u"and visible=1) limit %d offset %d",
                           kLogTable, logType, static_cast<int32_t>(limit), static_cast<int32_t>(offset)),
              out);
}

void ncLogMgr::ClearSyncLog(int logType) {
  NC_TRACE(u"logType: %d", logType);
  dbMgr_->ExecuteSql(base::Format(u"delete from %s where logType='%d'", kLogTable, logType));
}

void ncLogMgr::HideAllSyncLog(int logType) {
  NC_TRACE(u"logType: %d", logType);
  dbMgr_->ExecuteSql(base::Format(u"update %s set visible=0 where logType='%d'", kLogTable, logType));
}

void ncLogMgr::HideSyncLog(const int64_t& id) {
  dbMgr_->ExecuteSql(base::Format(u"update %s set visible=0 where id = '%I64d'", kLogTable, id));
}

void ncLogMgr::GetSyncLogById(int logType, std::vector<ncSyncLogInfo>& out, const int64_t& id, uint32_t& total) {
  NC_TRACE(u"logType: %d, id: %I64d", logType, id);
  total = CountVisible(logType, kLogTable);
  if (id != 0) {
    ReadEntries(base::Format(u"select id, taskType, relPath, newName, size, time, remark from %s where (logType = "
                             u"'%d' and visible=1 and id > '%I64d') order by id desc",
                             kLogTable, logType, id),
                out);
  } else {
    ReadEntries(base::Format(u"select id, taskType, relPath, newName, size, time, remark from %s where (logType = "
                             u"'%d' and visible=1) order by id desc limit 200 ",
                             kLogTable, logType),
                out);
  }
}

void ncLogMgr::BeginBatch() {
  NC_TRACE(u"this: 0x%p", this);
  dbMgr_->BeginTransaction();
}

void ncLogMgr::CommitBatch() {
  NC_TRACE(u"this: 0x%p", this);
  ncDBTransaction::CommitOrRollBack(*dbMgr_);
}

void ncLogMgr::RollbackBatch() {
  NC_TRACE(u"this: 0x%p", this);
  dbMgr_->RollbackTransaction();
}
