#include "docmgr/ncMsgMgr.h"

#include "docmgr/ncDocUtils.h"
#include "docmgr/ncModuleAllocator.h"
#include "docmgr/ncQueryResult.h"

using base::String;

namespace {

const char16_t kMsgTable[] = u"tb_msg";

// Writes one cell of a tb_msg row into the field of the same name.
typedef void (*FieldSetter)(ncMsgInfo& info, const ncQueryResult& result, int row, int column);

#define NC_MSG_FIELD(field, getter)                                                     \
  {                                                                                     \
    u"" #field, [](ncMsgInfo& info, const ncQueryResult& result, int row, int column) { \
      info.field = result.getter(row, column);                                          \
    }                                                                                   \
  }
#define NC_MSG_TEXT(field) NC_MSG_FIELD(field, text)
#define NC_MSG_INT32(field) NC_MSG_FIELD(field, int32)
#define NC_MSG_INT64(field) NC_MSG_FIELD(field, int64)

const struct {
  const char16_t* column;
  FieldSetter set;
} kMsgColumns[] = {
    NC_MSG_TEXT(msgId),
    NC_MSG_TEXT(relPath),
    NC_MSG_TEXT(sender),
    NC_MSG_TEXT(recipient),
    NC_MSG_FIELD(isDir, flag),
    NC_MSG_INT32(msgType),
    NC_MSG_INT32(accessorType),
    NC_MSG_INT32(csfLevel),
    NC_MSG_INT32(allowPermValue),
    NC_MSG_INT32(refusePermValue),
    NC_MSG_INT64(shareingTime),
    NC_MSG_INT64(deadlineTime),
    NC_MSG_INT32(state),
    NC_MSG_INT32(perm),
    NC_MSG_TEXT(auditorName),
    NC_MSG_INT32(auditResult),
    NC_MSG_TEXT(auditMsg),
    NC_MSG_TEXT(requester),
    NC_MSG_TEXT(previousAuditor),
    NC_MSG_TEXT(processName),
    NC_MSG_INT32(docAuditType),
    NC_MSG_TEXT(nextAuditor),
    NC_MSG_INT32(nextLevel),
    NC_MSG_INT64(stamp),
    NC_MSG_INT32(applyCsfLevel),
    NC_MSG_TEXT(creator),
    NC_MSG_TEXT(modifier),
    NC_MSG_TEXT(content),
    NC_MSG_TEXT(virusadmin),
    NC_MSG_INT32(operationType),
    NC_MSG_INT64(duedate),
    NC_MSG_TEXT(remindcontent),
    NC_MSG_INT32(isInherit),
};

#undef NC_MSG_TEXT
#undef NC_MSG_INT32
#undef NC_MSG_INT64
#undef NC_MSG_FIELD

FieldSetter FindSetter(const String& column) {
  for (const auto& entry : kMsgColumns)
    if (column == entry.column) return entry.set;
  return nullptr;  // the row id, or a column this release does not know
}

// The rows of a "select *" on tb_msg, each column into the field of the same name, so
// the order of the columns in an upgraded table does not matter.
void ReadMessages(ncDBMgr* db, const String& sql, std::vector<ncMsgInfo>& out) {
  ncQueryResult messages(db, sql);
  if (messages.rows() == 0) return;
  std::vector<FieldSetter> setters(messages.columns());
  for (int column = 0; column < messages.columns(); ++column) setters[column] = FindSetter(messages.columnName(column));
  out.reserve(out.size() + messages.rows());
  for (int row = 0; row < messages.rows(); ++row) {
    ncMsgInfo info;
    for (int column = 0; column < messages.columns(); ++column)
      if (setters[column]) setters[column](info, messages, row, column);
    out.push_back(std::move(info));
  }
}

using Q = ncDocUtils;

}  // namespace

NC_IMPL_POOLED_ISUPPORTS1(ncMsgMgr, ncIMsgMgr)

ncMsgMgr::ncMsgMgr() : dbMgr_(NC_NEW(ncDBMgr)) { NC_TRACE(u"this: 0x%p", this); }

ncMsgMgr::~ncMsgMgr() { NC_TRACE(u"this: 0x%p", this); }

void ncMsgMgr::Init(const String& path) {
  NC_TRACE(u"this: 0x%p, path: %s", this, path);
  NC_CHECK_PATH(path);
  dbMgr_->Open(path);
  dbMgr_->ExecuteSql(u"PRAGMA synchronous=OFF;");
  CreateSchema();
  dbMgr_->ProtectSchema();
}

void ncMsgMgr::CreateSchema() {
  ncDBMgr::SchemaChange setUp(*dbMgr_);
  dbMgr_->ExecuteSql(base::Format(
      u"create table if not exists %s (id INTEGER PRIMARY KEY, msgId text, relPath text, sender text, recipient text, "
      u"isDir int, msgType int, accessorType int, csfLevel int, allowPermValue int, refusePermValue int, "
      u"shareingTime int, deadlineTime int, state int, perm int, auditorName text, auditResult int, auditMsg text, "
      u"requester text, previousAuditor text, processName text, docAuditType int, nextAuditor text, nextLevel int, "
      u"stamp int, applyCsfLevel int, creator text, modifier text, content text, virusadmin text, "
      u"operationType int, duedate int, remindcontent text, isInherit int)",
      kMsgTable));
}

void ncMsgMgr::Close() {
  NC_TRACE(u"this: 0x%p", this);
  dbMgr_->Close();
}

void ncMsgMgr::RecordMsg(const std::vector<ncMsgInfo>& msgs) {
  NC_TRACE(u"this: 0x%p", this);
  for (const ncMsgInfo& m : msgs) {
    // Every text gets its quotes doubled, the server's message id too: an id without an
    // apostrophe reads as before, and one with an apostrophe cannot end its string early.
    dbMgr_->ExecuteSql(base::Format(
        u"insert into %s values(NULL, '%s', '%s', '%s', '%s', '%d', '%d', '%d', '%d', '%d', '%d', '%I64d', '%I64d', "
        u"'%d', '%d', '%s', '%d', '%s', '%s', '%s', '%s', '%d', '%s', '%d', '%I64d', '%d', '%s', '%s', '%s', '%s', "
        u"'%d', '%I64d','%s','%d')",
        kMsgTable, Q::QuoteSql(m.msgId), Q::QuoteSql(m.relPath), Q::QuoteSql(m.sender), Q::QuoteSql(m.recipient), m.isDir,
        m.msgType, m.accessorType, m.csfLevel, m.allowPermValue, m.refusePermValue, m.shareingTime, m.deadlineTime,
        m.state, m.perm, Q::QuoteSql(m.auditorName), m.auditResult, Q::QuoteSql(m.auditMsg), Q::QuoteSql(m.requester),
        Q::QuoteSql(m.previousAuditor), Q::QuoteSql(m.processName), m.docAuditType, Q::QuoteSql(m.nextAuditor),
        m.nextLevel, m.stamp, m.applyCsfLevel, Q::QuoteSql(m.creator), Q::QuoteSql(m.modifier),
        Q::QuoteSql(m.content), Q::QuoteSql(m.virusadmin), m.operationType, m.duedate, Q::QuoteSql(m.remindcontent),
        m.isInherit));
  }
}

void ncMsgMgr::GetMsg(int num, std::vector<ncMsgInfo>& out) {
  NC_TRACE(u"this: 0x%p, num: %d", this, num);
  ReadMessages(dbMgr_.get(), base::Format(u"select * from %s order by id desc limit %d", kMsgTable, num), out);
}

void ncMsgMgr::CleanupMsg(int surplus) {
  NC_TRACE(u"this: 0x%p, surplus: %d", this, surplus);
  dbMgr_->ExecuteSql(base::Format(u"delete from %s where id not in (select id from %s order by id desc limit %d)",
                                  kMsgTable, kMsgTable, surplus));
}

void ncMsgMgr::UpdateUnreadMsg(const std::vector<String>& msgIds) {
  NC_TRACE(u"this: 0x%p", this);
  for (const String& msgId : msgIds)
    dbMgr_->ExecuteSql(
        base::Format(u"update %s set state = '%d' where msgId = '%s'", kMsgTable, 1, Q::QuoteSql(msgId)));
}

int32_t ncMsgMgr::GetUnreadMsgNum() {
  return ncQueryResult(dbMgr_.get(), base::Format(u"select count(*) from %s where state = '%d'", kMsgTable, 0))
      .int32(0, 0);
}

int64_t ncMsgMgr::GetMaxStamp() {
  return ncQueryResult(dbMgr_.get(), base::Format(u"select stamp from %s where stamp = ( select max(stamp) from %s)",
                                                  kMsgTable, kMsgTable))
      .int64(0, 0);
}

void ncMsgMgr::UpdateAndFilterMsg(const std::vector<ncMsgInfo>& msgs, std::vector<ncMsgInfo>& newMsgs) {
  NC_TRACE(u"this: 0x%p", this);
  for (const ncMsgInfo& m : msgs) {
    const String msgId = Q::QuoteSql(m.msgId);
    const bool known =
        ncQueryResult(dbMgr_.get(), base::Format(u"select * from %s where msgId = '%s'", kMsgTable, msgId)).rows() > 0;
    if (known) {
      dbMgr_->ExecuteSql(base::Format(
          u"update %s set stamp = '%I64d', state = '%d' ,duedate = '%I64d', remindcontent = '%s' where msgId = '%s'",
          kMsgTable, m.stamp, m.state, m.duedate, Q::QuoteSql(m.remindcontent), msgId));
    } else {
      newMsgs.push_back(m);
    }
  }
}
