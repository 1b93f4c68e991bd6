#include "docmgr/ncCacheMgr.h"

#include <charconv>
#include <initializer_list>
#include <string_view>

#include "dataapi/ncGNSUtil.h"
#include "docmgr/ncDBTransaction.h"
#include "docmgr/ncDocMgrLibrary.h"
#include "docmgr/ncDocUtils.h"
#include "docmgr/ncModuleAllocator.h"
#include "docmgr/ncQueryResult.h"

using base::String;

using base::Format;

namespace {

const char16_t kTable[] = u"tb_cacheInfo";

const char16_t kCreateTable[] =
    u"create table if not exists %s (id text PRIMARY KEY, otag text, isDir int, state int, serverMTime text, "
    u"clientMTime text, size text, name text, parentPath text, acronym text, type int, typeName text, viewType int, "
    u"viewName text, parentId text, attr int, errcode int, execTask int, watermark int)";

const char16_t kReplace[] =
    u"replace into %s (id, otag, isDir, state, serverMTime, clientMTime, size, name, parentPath, acronym, type, "
    u"typeName, viewType, viewName, parentId, attr, errcode, execTask, watermark) values ('%s', '%s', '%d', '%d', "
    u"'%s', '%s', '%s', '%s', '%s', '%s', '%d', '%s', '%d', '%s', '%s', '%d', '%d', '%d', '%d')";

// kReplace with parameters, for the bulk path; the values it stores are those kReplace
// stores once SQLite has read the spliced texts.
const char16_t kReplaceBound[] =
    u"replace into tb_cacheInfo (id, otag, isDir, state, serverMTime, clientMTime, size, name, parentPath, acronym, "
    u"type, typeName, viewType, viewName, parentId, attr, errcode, execTask, watermark) values (?, ?, ?, ?, ?, ?, ?, "
    u"?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)";

const char16_t kSelectInfo[] =
    u"select id, otag, type, isDir, state, serverMTime, clientMTime, size, typeName, attr, viewtype, viewname, "
    u"errcode, execTask, watermark from %s where name='%s' and parentPath='%s' limit 1";
const char16_t kSelectLegalInfo[] =
    u"select id, otag, type, isDir, state, serverMTime, clientMTime, size, typeName, attr, viewtype, viewname, "
    u"errcode, execTask, watermark from %s where name='%s' COLLATE NOCASE and parentPath='%s' limit 1";

const char16_t kSearchAcronym[] =
    u"select isDir, name, parentPath, viewName from %s where acronym like '%s' COLLATE NOCASE limit 0, %d";
const char16_t kSearchName[] =
    u"select isDir, name, parentPath, viewName from %s where name like '%s' COLLATE NOCASE limit 0, %d";

const char16_t kClearOtag[] = u"update %s set otag='' where name='%s' and parentPath='%s'";
const char16_t kSelectUnsync[] = u"select state, execTask from %s where name='%s' and parentPath='%s'";

// Every text spliced into a statement has its quotes doubled, server ids and tags too:
// for a value without an apostrophe the statement is the same text, and with one the
// statement writes the value instead of failing or running text of the value's own.
// Most values hold no quote and are used as they are, without a copy.
String Quote(const String& value) {
  return value.find(u'\'') == String::npos ? value : ncDocUtils::QuoteSql(value);
}

// The initials of a name; a plain ASCII name is its own initials.
String Acronym(const String& name) {
  for (char16_t unit : name)
    if (unit >= 0x80) return ncDocUtils::GetAcronym(name);
  return name;
}

// The value a quote-doubled text stands for between quotes in a statement.
String Unquoted(const String& quoted) {
  String value;
  value.reserve(quoted.size());
  for (size_t i = 0; i < quoted.size(); ++i) {
    value += quoted[i];
    if (quoted[i] == u'\'' && i + 1 < quoted.size() && quoted[i + 1] == u'\'') ++i;
  }
  return value;
}

// A whole number as decimal text, without allocating.
class Decimal {
 public:
  explicit Decimal(int64_t value) {
    char digits[24];
    const std::to_chars_result end = std::to_chars(digits, digits + sizeof digits, value);
    size_ = static_cast<size_t>(end.ptr - digits);
    for (size_t i = 0; i < size_; ++i) text_[i] = static_cast<char16_t>(digits[i]);
  }
  operator std::u16string_view() const { return std::u16string_view(text_, size_); }

 private:
  char16_t text_[24];
  size_t size_;
};

// Fills the "%s" and "%d" directives of a statement, in order, with values already written
// as text. Update runs this for every row it writes; the general formatter costs it a few
// percent of the write.
String FillStatement(std::u16string_view format, std::initializer_list<std::u16string_view> values) {
  size_t size = format.size();
  for (const std::u16string_view& value : values) size += value.size();
  String out;
  out.reserve(size);
  auto value = values.begin();
  size_t from = 0;
  for (size_t percent = format.find(u'%'); percent != std::u16string_view::npos;
       percent = format.find(u'%', percent + 2)) {
    if (percent + 1 >= format.size() || (format[percent + 1] != u's' && format[percent + 1] != u'd') ||
        value == values.end())
      continue;
    out.append(format.substr(from, percent - from));
    out.append(*value++);
    from = percent + 2;
  }
  out.append(format.substr(from));
  return out;
}

// The view folder of a relative path: its first component.
String ViewOf(const String& relPath) { return relPath.substr(0, relPath.find(u'\\')); }

// a\b from a and b, leaving out an empty side.
String JoinPath(const String& first, const String& second) {
  if (first.empty()) return second;
  if (second.empty()) return first;
  return first + u'\\' + second;
}

// The columns from otag to watermark of a record, in the order of kSelectInfo, starting at
// column first of the given row.
void ReadRecordColumns(const ncQueryResult& query, int row, int first, ncCacheInfo& info) {
  int column = first;
  info.otag = query.text(row, column++);
  info.type = query.int32(row, column++);
  info.isDir = query.flag(row, column++);
  info.state = query.int32(row, column++);
  info.serverMTime = query.int64(row, column++);
  info.clientMTime = query.int64(row, column++);
  info.size = query.int64(row, column++);
  info.typeName = query.text(row, column++);
  info.attr = query.int32(row, column++);
  info.viewType = static_cast<int32_t>(query.int64(row, column++));
  info.viewName = query.text(row, column++);
  info.errcode = query.int32(row, column++);
  info.execTask = query.int32(row, column++);
  info.watermark = query.flag(row, column);
}

}  // namespace

NC_IMPL_POOLED_ISUPPORTS3(ncCacheMgr, ncICacheMgr, ncIStoreBatch, ncICacheBulkWriter)

ncCacheMgr::ncCacheMgr() : db_(NC_NEW(ncDBMgr)) { NC_TRACE(u"this: 0x%p", this); }

ncCacheMgr::~ncCacheMgr() { NC_TRACE(u"this: 0x%p", this); }

void ncCacheMgr::Init(const String& path, bool viewMode) {
  NC_TRACE(u"path: %s", path);
  NC_CHECK_PATH(path);
  viewMode_ = viewMode;
  db_->Open(path);
  db_->ExecuteSql(u"PRAGMA synchronous=NORMAL;");
  CreateSchema();
  db_->ProtectSchema();
}

void ncCacheMgr::CreateSchema() {
  ncDBMgr::SchemaChange setUp(*db_);
  db_->ExecuteSql(Format(kCreateTable, kTable));
  db_->ExecuteSql(Format(u"create unique index if not exists %s on %s(name, parentPath)",
                         Format(u"%s_name_parent_path_idx", kTable), kTable));
  db_->ExecuteSql(Format(u"create index if not exists %s on %s(parentPath)", Format(u"%s_parent_path_idx", kTable),
                         kTable));
  db_->ExecuteSql(Format(u"create index if not exists %s on %s(parentId)", Format(u"%s_parent_id_idx", kTable),
                         kTable));
  // Earlier builds added a covering index for the search statements. It changes the order in
  // which a search statement returns its rows, and with the rule that a statement stops at
  // its first duplicate hit, which hits a user sees: searches must walk the table in row order.
  db_->ExecuteSql(Format(u"drop index if exists %s", Format(u"%s_search_idx", kTable)));
}

void ncCacheMgr::Close() {
  NC_TRACE(u"this: 0x%p", this);
  if (db_) db_->Close();
}

void ncCacheMgr::SplitPath(const String& relPath, String& name, String& parentPath) {
  NC_TRACE(u"relPath: %s", relPath);
  const String trimmed = base::Trim(relPath, u'\\');
  const size_t last = trimmed.rfind(u'\\');
  if (last == String::npos) {
    name = trimmed;
    parentPath.clear();
  } else {
    name = trimmed.substr(last + 1);
    parentPath = trimmed.substr(0, last);
  }
}

String ncCacheMgr::WithoutView(const String& relPath) const {
  if (!viewMode_) return relPath;
  const size_t separator = relPath.find(u'\\');
  return separator == String::npos ? String() : relPath.substr(separator + 1);
}

String ncCacheMgr::WorkingPath(const String& relPath, String& name, String& parentPath) const {
  const String working = WithoutView(relPath);
  NC_CHECK_PATH(working);
  SplitPath(working, name, parentPath);
  return working;
}

// ---------------------------------------------------------------------------------------
// Writing

void ncCacheMgr::Update(const String& relPath, const ncCacheInfo& info) {
  NC_TRACE(u"relPath: %s", relPath);
  String name, parentPath;
  WorkingPath(relPath, name, parentPath);
  db_->ExecuteSql(UpdateStatement(name, parentPath, info));
}

String ncCacheMgr::AcronymOf(const String& name) { return Acronym(name); }

String ncCacheMgr::ParentIdOf(const String& id, int32_t type) {
  if (type < NC_CACHE_SPECIAL_TYPE && ncGNSUtil::HasGNSPrefix(id))
    return ncGNSUtil::GetNodeName(ncGNSUtil::GetParentPath(id));
  return String();
}

String ncCacheMgr::UpdateStatement(const String& name, const String& parentPath, const ncCacheInfo& info) {
  const String parentId = ParentIdOf(info.id, info.type);
  const String quotedName = Quote(name);
  return FillStatement(kReplace, {kTable, Quote(info.id), Quote(info.otag), Decimal(info.isDir), Decimal(info.state),
                                  Decimal(info.serverMTime), Decimal(info.clientMTime), Decimal(info.size), quotedName,
                                  Quote(parentPath), Acronym(quotedName), Decimal(info.type), Quote(info.typeName),
                                  Decimal(info.viewType), Quote(info.viewName), Quote(parentId), Decimal(info.attr),
                                  Decimal(info.errcode), Decimal(info.execTask), Decimal(info.watermark)});
}

void ncCacheMgr::UpdateBulk(const String& relPath, const ncCacheInfo& info) {
  NC_TRACE(u"relPath: %s", relPath);
  String name, parentPath;
  WorkingPath(relPath, name, parentPath);
  // Update computes the initials of the quote-doubled name; the row holds what that text
  // reads as inside the statement.
  const String acronym = Unquoted(Acronym(Quote(name)));
  db_->RunPrepared(kReplaceBound, {info.id, info.otag, info.isDir, info.state, info.serverMTime, info.clientMTime,
                                   info.size, name, parentPath, acronym, info.type, info.typeName, info.viewType,
                                   info.viewName, ParentIdOf(info.id, info.type), info.attr, info.errcode,
                                   info.execTask, info.watermark});
}

void ncCacheMgr::Rename(const String& relPath, const String& newRelPath) {
  NC_TRACE(u"relPath: %s, newRelPath: %s", relPath, newRelPath);
  const String oldWorking = WithoutView(relPath);
  const String newWorking = WithoutView(newRelPath);
  NC_CHECK_PATH(oldWorking);
  NC_CHECK_PATH(newWorking);
  String oldName, oldParent, newName, newParent;
  SplitPath(oldWorking, oldName, oldParent);
  SplitPath(newWorking, newName, newParent);
  if (oldParent != newParent)
    NC_THROW(NC_ERR_INVALID_ARG, ncDocMgrLibrary::loadString(u"IDS_RENAME_NOT_SAME_PARENT"), relPath, newRelPath);

  // A failed statement or commit rolls the whole rename back before the exception goes on:
  // a transaction left open would hold the lock and take every later write of this cache
  // with it when the connection closes.
  ncDBTransaction rename(*db_);
  const String quotedNewName = Quote(newName);
  db_->ExecuteSql(Format(u"update %s set name='%s', acronym='%s' where name='%s' and parentPath='%s'", kTable,
                         quotedNewName, Acronym(quotedNewName), Quote(oldName), Quote(oldParent)));
  const String oldPath = base::Trim(oldWorking, u'\\');
  const String& newPath = newWorking;
  const String quotedOldPath = Quote(oldPath);
  ncQueryResult subtree(
      db_.get(), Format(u"select distinct parentPath from %s where parentPath='%s' or parentPath like '%s\\%%'", kTable,
                        quotedOldPath, quotedOldPath));
  for (int row = 0; row < subtree.rows(); ++row) {
    const String oldValue = subtree.text(row, 0);
    const String newValue = ncDocUtils::ReplaceStr(oldValue, oldPath, newPath, false);
    db_->ExecuteSql(Format(u"update %s set parentPath='%s' where parentPath='%s'", kTable, Quote(newValue),
                           Quote(oldValue)));
  }
  rename.Commit();
}

void ncCacheMgr::Delete(const String& relPath, bool onlyChild) {
  NC_TRACE(u"relPath: %s, onlyChild: %d", relPath, onlyChild);
  const String working = WithoutView(relPath);
  if (viewMode_ && working.empty() && !relPath.empty()) {
    // A bare view folder: the whole view goes.
    db_->ExecuteSql(Format(u"delete from %s where viewName='%s'", kTable, Quote(relPath)));
    return;
  }
  NC_CHECK_PATH(working);
  String name, parentPath;
  SplitPath(working, name, parentPath);
  // The folder and its subtree go together or not at all: a folder row gone with its
  // children left would orphan them.
  ncDBTransaction removal(*db_);
  if (!onlyChild)
    db_->ExecuteSql(
        Format(u"delete from %s where name='%s' and parentPath='%s'", kTable, Quote(name), Quote(parentPath)));
  const String subtree = Quote(base::Trim(working, u'\\'));
  db_->ExecuteSql(Format(u"delete from %s where parentPath='%s' or parentPath like '%s\\%%'", kTable, subtree, subtree));
  removal.Commit();
}

void ncCacheMgr::UpdateOtag(const String& relPath, const String& otag) {
  NC_TRACE(u"relPath: %s, otag: %s", relPath, otag);
  const String working = WithoutView(relPath);
  if (viewMode_ && working.empty() && !relPath.empty()) return;  // a view folder has no tag
  NC_CHECK_PATH(working);
  UpdateOtagOf(working, otag);
}

void ncCacheMgr::UpdateOtagNoView(const String& relPath, const String& otag) {
  NC_TRACE(u"relPath: %s, otag: %s", relPath, otag);
  NC_CHECK_PATH(relPath);
  UpdateOtagOf(relPath, otag);
}

void ncCacheMgr::UpdateOtagOf(const String& workingPath, const String& otag) {
  String name, parentPath;
  SplitPath(workingPath, name, parentPath);
  if (!otag.empty()) {
    db_->ExecuteSql(Format(u"update %s set otag='%s' where name='%s' and parentPath='%s'", kTable, Quote(otag), Quote(name),
                           Quote(parentPath)));
    return;
  }
  // No known version: the item and every folder up to the top must be compared with the
  // server again, and so must the folders and delayed items below it; all of them or none.
  ncDBTransaction clearing(*db_);
  db_->ExecuteSql(Format(kClearOtag, kTable, Quote(name), Quote(parentPath)));
  while (!parentPath.empty()) {
    String ancestor, ancestorParent;
    SplitPath(parentPath, ancestor, ancestorParent);
    db_->ExecuteSql(Format(kClearOtag, kTable, Quote(ancestor), Quote(ancestorParent)));
    parentPath = ancestorParent;
  }
  const String subtree = Quote(base::Trim(workingPath, u'\\'));
  db_->ExecuteSql(Format(
      u"update %s set otag='' where (parentPath='%s' or parentPath like '%s\\%%') and (isDir='%d' or state='%d')",
      kTable, subtree, subtree, 1, NC_CACHE_STATE_DELAY));
  clearing.Commit();
}

void ncCacheMgr::UpdateColumn(const char16_t* format, const String& relPath, int32_t value) {
  String name, parentPath;
  WorkingPath(relPath, name, parentPath);
  db_->ExecuteSql(Format(format, kTable, value, Quote(name), Quote(parentPath)));
}

void ncCacheMgr::UpdateAttr(const String& relPath, int32_t attr) {
  NC_TRACE(u"relPath: %s, attr: %d", relPath, attr);
  UpdateColumn(u"update %s set attr='%d' where name='%s' and parentPath='%s'", relPath, attr);
}

void ncCacheMgr::UpdateWatermark(const String& relPath, bool downloadWatermark) {
  NC_TRACE(u"relPath: %s, downloadWatermark: %d", relPath, downloadWatermark);
  UpdateColumn(u"update %s set watermark='%d' where name='%s' and parentPath='%s'", relPath,
               downloadWatermark ? 1 : 0);
}

void ncCacheMgr::UpdateState(const String& relPath, int32_t state) {
  NC_TRACE(u"relPath: %s, state: %d", relPath, state);
  UpdateColumn(u"update %s set state='%d' where name='%s' and parentPath='%s'", relPath, state);
}

void ncCacheMgr::UpdateExectask(const String& relPath, int32_t execTask) {
  NC_TRACE(u"relPath: %s, execTask: %d", relPath, execTask);
  UpdateColumn(u"update %s set execTask='%d' where name='%s' and parentPath='%s'", relPath, execTask);
}

void ncCacheMgr::UpdateTypeName(const String& relPath, const String& typeName) {
  NC_TRACE(u"relPath: %s, typeName: %s", relPath, typeName);
  const String working = WithoutView(relPath);
  NC_CHECK_PATH(working);
  if (typeName.empty()) NC_THROW(NC_ERR_INVALID_ARG, u"Argument (%s) is EMPTY.", u"typeName");
  String name, parentPath;
  SplitPath(working, name, parentPath);
  db_->ExecuteSql(Format(u"update %s set typeName='%s' where name='%s' and parentPath='%s'", kTable, Quote(typeName),
                         Quote(name), Quote(parentPath)));
}

void ncCacheMgr::Unlock(const String& relPath) {
  NC_TRACE(u"relPath: %s", relPath);
  String name, parentPath;
  WorkingPath(relPath, name, parentPath);
  // Read and write in one transaction, so that no other thread's change of the attributes
  // falls between them and is lost.
  ncDBTransaction unlock(*db_);
  int32_t attr = 0;
  {
    ncQueryResult query(db_.get(), Format(u"select attr from %s where name='%s' and parentPath='%s'", kTable,
                                          Quote(name), Quote(parentPath)));
    if (query.rows() == 0) return;
    attr = query.int32(0, 0) & ~NC_CACHE_ATTR_LOCKED;
  }
  db_->ExecuteSql(
      Format(u"update %s set attr='%d' where name='%s' and parentPath='%s'", kTable, attr, Quote(name), Quote(parentPath)));
  unlock.Commit();
}

void ncCacheMgr::Unsync_UpdateAllState(int32_t state) {
  NC_TRACE(u"Unsync_UpdateAllState: %d", state);
  db_->ExecuteSql(Format(u"update %s set state = '%d' where state = '%d'", kTable, state, NC_CACHE_STATE_UNSYNC));
}

void ncCacheMgr::Unsync_UpdateAllExecTask(int32_t execTask) {
  NC_TRACE(u"Unsync_UpdateAllExecTask: %d", execTask);
  db_->ExecuteSql(
      Format(u"update %s set execTask = '%d' where state = '%d'", kTable, execTask, NC_CACHE_STATE_UNSYNC));
}

// ---------------------------------------------------------------------------------------
// Lookups and listings

bool ncCacheMgr::ReadInfo(const String& sql, ncCacheInfo& info) {
  ncQueryResult query(db_.get(), sql);
  if (query.rows() == 0) return false;
  info.id = query.text(0, 0);
  ReadRecordColumns(query, 0, 1, info);
  return true;
}

bool ncCacheMgr::GetInfoByPath(const String& relPath, ncCacheInfo& info) {
  NC_TRACE(u"relPath: %s", relPath);
  if (relPath.empty()) return false;
  const String working = WithoutView(relPath);
  if (viewMode_ && working.empty()) {
    const String view = ViewOf(relPath);
    ncQueryResult query(db_.get(), Format(u"select viewType from %s where viewName='%s' limit 1", kTable, Quote(view)));
    if (query.rows() == 0) return false;
    info.viewType = query.int32(0, 0);
    info.viewName = view;
    return true;
  }
  NC_CHECK_PATH(working);
  String name, parentPath;
  SplitPath(working, name, parentPath);
  return ReadInfo(Format(kSelectInfo, kTable, Quote(name), Quote(parentPath)), info);
}

bool ncCacheMgr::GetLegalInfoByPath(const String& relPath, ncCacheInfo& info) {
  NC_TRACE(u"relPath: %s", relPath);
  if (relPath.empty()) return false;
  const String working = WithoutView(relPath);
  if (viewMode_ && working.empty()) return false;  // a view folder is no server document
  NC_CHECK_PATH(working);
  String name, parentPath;
  SplitPath(working, name, parentPath);
  ncCacheInfo found;
  if (!ReadInfo(Format(kSelectLegalInfo, kTable, Quote(name), Quote(parentPath)), found)) return false;
  if (!ncGNSUtil::HasGNSPrefix(found.id)) return false;
  info = found;
  return true;
}

bool ncCacheMgr::GetInfoByDocId(const String& docId, ncCacheDocInfo& info) {
  NC_TRACE(u"docId: %s", docId);
  if (!ncGNSUtil::HasGNSPrefix(docId)) NC_THROW(NC_ERR_INVALID_ARG, u"Gns (%s) is INVALID.", docId);
  ncQueryResult query(
      db_.get(), Format(u"select name, parentPath, otag, type, isDir, state, serverMTime, clientMTime, size, typeName, "
                        u"attr, viewType, viewName, errcode, execTask , watermark from %s where id='%s' limit 1",
                        kTable, Quote(docId)));
  if (query.rows() == 0) return false;
  info.id = docId;
  info.name = query.text(0, 0);
  info.parentPath = query.text(0, 1);
  ReadRecordColumns(query, 0, 2, info);
  return true;
}

void ncCacheMgr::GetViewNames(std::vector<String>& names) {
  NC_TRACE(u"this: 0x%p", this);
  ncQueryResult query(db_.get(), Format(u"select viewName from %s group by viewName", kTable));
  for (int row = 0; row < query.rows(); ++row) names.push_back(query.text(row, 0));
}

bool ncCacheMgr::HasInfoByView(const String& viewName) {
  NC_TRACE(u"viewName: %s", viewName);
  ncQueryResult query(db_.get(), Format(u"select id from %s where viewName='%s' limit 1", kTable, Quote(viewName)));
  return query.rows() != 0;
}

bool ncCacheMgr::GetViewRelPathByRelPath(const String& relPath, String& viewName, String& viewRelPath) {
  NC_TRACE(u"relPath: %s", relPath);
  if (!viewMode_ || relPath.empty()) {
    viewRelPath = relPath;
    return true;
  }
  const String top = Quote(ViewOf(relPath));
  String view;
  {
    ncQueryResult query(db_.get(),
                        Format(u"select viewname from %s where name='%s' and parentPath='' limit 1", kTable, top));
    if (query.rows() != 0) view = query.text(0, 0);
    else {
      ncQueryResult below(db_.get(),
                          Format(u"select viewname from %s where parentId='' and (parentPath='%s' or parentPath like "
                                 u"'%s\\%%') limit 1",
                                 kTable, top, top));
      if (below.rows() == 0) return false;
      view = below.text(0, 0);
    }
  }
  viewName = view;
  viewRelPath = JoinPath(view, relPath);
  return true;
}

void ncCacheMgr::GetScanSubInfos(const String& relPath, std::map<String, ncCacheScanInfo>& children) {
  NC_TRACE(u"relPath: %s", relPath);
  children.clear();
  const String folder = base::Trim(WithoutView(relPath), u'\\');
  String sql = Format(u"select id, name, isDir, clientMTime, size, attr from %s where parentPath='%s'", kTable,
                      Quote(folder));
  if (viewMode_) sql += u" and viewName='" + Quote(ViewOf(relPath)) + u"'";
  ncQueryResult query(db_.get(), sql);
  for (int row = 0; row < query.rows(); ++row) {
    ncCacheScanInfo child;
    child.id = query.text(row, 0);
    child.name = query.text(row, 1);
    child.isDir = query.flag(row, 2);
    child.clientMTime = query.int64(row, 3);
    child.size = query.int64(row, 4);
    // attr (column 5) is read with the row but the scan has no use for it.
    children[child.name] = child;
  }
}

void ncCacheMgr::GetDetectSubInfos(const String& relPath, const String& docId,
                                   std::map<String, ncCacheDocInfo>& children, std::map<String, String>& topPaths) {
  NC_TRACE(u"relPath: %s", relPath);
  children.clear();
  topPaths.clear();
  const String folder = base::Trim(WithoutView(relPath), u'\\');
  const String nodeName = ncGNSUtil::GetNodeName(docId);

  // Columns: id, name, then the record from otag on; parentPath sits between them in the
  // root listing.
  auto readChildren = [&](const ncQueryResult& query, bool withParentPath) {
    for (int row = 0; row < query.rows(); ++row) {
      ncCacheDocInfo child;
      int column = 0;
      child.id = query.text(row, column++);
      child.name = query.text(row, column++);
      child.parentPath = withParentPath ? query.text(row, column++) : folder;
      child.otag = query.text(row, column++);
      child.type = query.int32(row, column++);
      child.isDir = query.flag(row, column++);
      child.state = query.int32(row, column++);
      child.serverMTime = query.int64(row, column++);
      child.clientMTime = query.int64(row, column++);
      child.size = query.int64(row, column++);
      child.typeName = query.text(row, column++);
      child.attr = query.int32(row, column++);
      child.viewType = static_cast<int32_t>(query.int64(row, column++));
      child.viewName = query.text(row, column++);
      child.watermark = query.flag(row, column++);
      children[child.id] = child;
    }
  };
  auto readTopPaths = [&](const ncQueryResult& query) {
    for (int row = 0; row < query.rows(); ++row) topPaths[query.text(row, 1)] = query.text(row, 0);
  };

  if (!nodeName.empty()) {
    // A server object: its children carry its node name as parentId and its id as prefix.
    ncQueryResult query(db_.get(),
                        Format(u"select id, name, otag, type, isDir, state, serverMTime, clientMTime, size, "
                               u"typeName, attr, viewType, viewName, watermark from %s where parentId='%s'and id "
                               u"like '%s/%%'",
                               kTable, Quote(nodeName), Quote(docId)));
    readChildren(query, false);
  } else if (folder.empty()) {
    ncQueryResult direct(db_.get(),
                         Format(u"select id, name, parentPath, otag, type, isDir, state, serverMTime, clientMTime, "
                                u"size, typeName, attr, viewType, viewName, watermark from %s where parentId='' "
                                u"and parentPath=''",
                                kTable));
    readChildren(direct, true);
    ncQueryResult deeper(
        db_.get(),
        Format(u"select id, parentPath from %s where parentId='' and parentPath <>'' group by parentPath", kTable));
    readTopPaths(deeper);
  } else {
    ncQueryResult deeper(db_.get(),
                         Format(u"select id, parentPath from %s where parentId='' and parentPath like '%s\\%%' "
                                u"group by parentPath",
                                kTable, Quote(folder)));
    readTopPaths(deeper);
  }
}

void ncCacheMgr::GetNoDelayFileInfos(std::vector<ncCacheFileInfo>& files) {
  NC_TRACE(u"this: 0x%p", this);
  files.clear();
  ncQueryResult query(
      db_.get(),
      Format(u"select name, parentPath, size, viewName from %s where isDir = '%d' and (state = '%d' or state = '%d')",
             kTable, 0, NC_CACHE_STATE_NORMAL, NC_CACHE_STATE_UNSYNC));
  for (int row = 0; row < query.rows(); ++row) {
    ncCacheFileInfo file;
    const String parentPath = viewMode_ ? JoinPath(query.text(row, 3), query.text(row, 1)) : query.text(row, 1);
    file.relPath = JoinPath(parentPath, query.text(row, 0));
    file.size = query.int64(row, 2);
    files.push_back(file);
  }
}

int64_t ncCacheMgr::GetCountByStates(const std::vector<int32_t>& states) {
  NC_TRACE(u"states: %u", states.size());
  int64_t count = 0;
  for (int32_t state : states) {
    ncQueryResult query(db_.get(), Format(u"select count(*) from %s where state=%d", kTable, state));
    if (query.rows() != 0) count += query.int64(0, 0);
  }
  return count;
}

void ncCacheMgr::GetCacheSubInfos(const String& relPath, std::vector<ncCacheDocInfo>& infos) {
  NC_TRACE(u"relPath: %s", relPath);
  infos.clear();
  const String folder = Quote(base::Trim(WithoutView(relPath), u'\\'));
  String sql = Format(u"select id, name, parentPath, otag, type, isDir, state, serverMTime, clientMTime, size, "
                      u"typeName, attr, viewType, viewName, errcode, execTask, watermark from %s",
                      kTable);
  std::vector<String> conditions;
  if (!folder.empty()) conditions.push_back(Format(u"(parentPath='%s' or parentPath like '%s\\%%')", folder, folder));
  if (viewMode_) conditions.push_back(u"viewName='" + Quote(ViewOf(relPath)) + u"'");
  for (size_t i = 0; i < conditions.size(); ++i) sql += (i == 0 ? u" where " : u" and ") + conditions[i];
  sql += u" order by parentPath, name";
  ncQueryResult query(db_.get(), sql);
  infos.reserve(query.rows());
  for (int row = 0; row < query.rows(); ++row) {
    ncCacheDocInfo info;
    info.id = query.text(row, 0);
    info.name = query.text(row, 1);
    info.parentPath = query.text(row, 2);
    ReadRecordColumns(query, row, 3, info);
    infos.push_back(info);
  }
}

// ---------------------------------------------------------------------------------------
// Name search

void ncCacheMgr::Search(const String& key, const String& prefix, const String& suffix,
                        std::vector<ncCacheSearchInfo>& hits, uint32_t maxNum) {
  NC_TRACE(u"key: %s, prefix: %s, suffix: %s, maxNum: %u)", key, prefix, suffix, maxNum);
  hits.clear();
  if (key.empty()) return;
  const String quotedKey = Quote(key);
  const String contains = u"%" + quotedKey + u"%";
  String scatter = u"%";
  for (char16_t unit : quotedKey) {
    scatter += unit;
    scatter += u'%';
  }
  const bool initials = ncDocUtils::IsAcronymKey(key);
  const uint64_t room = 2 * static_cast<uint64_t>(maxNum);  // space for duplicates of earlier hits

  if (initials)
    SearchInfo(true, true, Format(kSearchAcronym, kTable, Quote(contains), maxNum), key, prefix, suffix, hits, maxNum);
  if (hits.size() < maxNum)
    SearchInfo(false, true, Format(kSearchName, kTable, Quote(contains), room), key, prefix, suffix, hits, maxNum);
  if (initials && hits.size() < maxNum)
    SearchInfo(true, false, Format(kSearchAcronym, kTable, Quote(scatter), room), key, prefix, suffix, hits, maxNum);
  if (hits.size() < maxNum)
    SearchInfo(false, false, Format(kSearchName, kTable, Quote(scatter), room), key, prefix, suffix, hits, maxNum);
}

void ncCacheMgr::SearchInfo(bool byAcronym, bool contiguous, const String& sql, const String& key,
                            const String& prefix, const String& suffix, std::vector<ncCacheSearchInfo>& hits,
                            uint32_t maxNum) {
  NC_TRACE(u"sql: %s, key: %s, prefix: %s, suffix: %s)", sql, key, prefix, suffix);
  ncQueryResult query(db_.get(), sql);
  bool duplicate = false;  // stays set for the rest of the statement once a row repeats a hit
  for (int row = 0; row < query.rows(); ++row) {
    if (hits.size() >= maxNum) break;
    ncCacheSearchInfo hit;
    hit.isDir = query.flag(row, 0);
    hit.name = query.text(row, 1);
    hit.parentPath = viewMode_ ? JoinPath(query.text(row, 3), query.text(row, 2)) : query.text(row, 2);
    for (const ncCacheSearchInfo& held : hits) {
      if (held.name == hit.name && held.parentPath == hit.parentPath) {
        duplicate = true;
        break;
      }
    }
    if (duplicate) continue;
    hit.displayName = ncDocUtils::MarkMatch(hit.name, byAcronym, contiguous, key, prefix, suffix);
    hits.push_back(hit);
  }
}

// ---------------------------------------------------------------------------------------
// Unsynchronised items

bool ncCacheMgr::IsUnsyncRow(const String& name, const String& parentPath) {
  ncQueryResult query(db_.get(), Format(kSelectUnsync, kTable, Quote(name), Quote(parentPath)));
  return query.rows() != 0 && query.int32(0, 0) == NC_CACHE_STATE_UNSYNC && query.int32(0, 1) == 0;
}

bool ncCacheMgr::Unsync_IsPathUnsync(const String& relPath, bool withAncestors) {
  NC_TRACE(u"relPath: %s", relPath);
  String name, parentPath;
  WorkingPath(relPath, name, parentPath);
  if (IsUnsyncRow(name, parentPath)) return true;
  if (!withAncestors) return false;
  while (!parentPath.empty()) {
    String ancestor, ancestorParent;
    SplitPath(parentPath, ancestor, ancestorParent);
    if (IsUnsyncRow(ancestor, ancestorParent)) return true;
    parentPath = ancestorParent;
  }
  return false;
}

bool ncCacheMgr::Unsync_GetInfo(const String& relPath, ncCacheUnsyncInfo& info) {
  NC_TRACE(u"relPath: %s", relPath);
  String name, parentPath;
  WorkingPath(relPath, name, parentPath);
  ncQueryResult query(db_.get(),
                      Format(u"select state, isDir, errcode, size from %s where name='%s' and parentPath='%s'", kTable,
                             Quote(name), Quote(parentPath)));
  if (query.rows() == 0) return false;
  info.state = query.int32(0, 0);
  info.isDir = query.flag(0, 1);
  info.errcode = query.int32(0, 2);
  info.size = query.int64(0, 3);
  return true;
}

int64_t ncCacheMgr::Unsync_CountUnexec(const String& path) {
  NC_TRACE(u"absPath: %s", path);
  String sql;
  if (path.empty()) {
    sql = Format(u"select count(*) from %s where state = %d and execTask = 0", kTable, NC_CACHE_STATE_UNSYNC);
  } else {
    const String working = WithoutView(path);
    NC_CHECK_PATH(working);
    const String folder = Quote(base::Trim(working, u'\\'));
    sql = Format(u"select count(*) from %s where (parentPath='%s' or parentPath like '%s\\%%') and state = %d and "
                 u"execTask = 0",
                 kTable, folder, folder, NC_CACHE_STATE_UNSYNC);
  }
  ncQueryResult query(db_.get(), sql);
  return query.rows() != 0 ? query.int64(0, 0) : 0;
}

void ncCacheMgr::Unsync_GetUnexecInfoVec(const String& path, std::vector<ncCacheUnexecInfo>& infos, uint32_t limit) {
  NC_TRACE(u"absPath: %s", path);
  const String folder = Quote(base::Trim(WithoutView(path), u'\\'));
  String sql;
  if (folder.empty() && limit != 0)
    sql = Format(u"select parentPath, name, isDir, errCode, size , viewName from %s where state = %d and execTask = 0 "
                 u"limit %d",
                 kTable, NC_CACHE_STATE_UNSYNC, limit);
  else if (folder.empty())
    sql = Format(u"select parentPath, name, isDir, errCode, size , viewName from %s where state = %d and execTask = 0",
                 kTable, NC_CACHE_STATE_UNSYNC);
  else if (limit != 0)
    // A plain prefix: also the rows of sibling folders whose names begin with the folder's.
    sql = Format(u"select parentPath, name, isDir, errCode, size, viewName from %s where parentPath like '%s%%' and "
                 u"state = %d and execTask = 0 limit %d",
                 kTable, folder, NC_CACHE_STATE_UNSYNC, limit);
  else
    sql = Format(u"select parentPath, name, isDir, errCode, size, viewName from %s where (parentPath='%s' or "
                 u"parentPath like '%s\\%%') and state = %d and execTask = 0",
                 kTable, folder, folder, NC_CACHE_STATE_UNSYNC);
  ncQueryResult query(db_.get(), sql);
  for (int row = query.rows() - 1; row >= 0; --row) {
    ncCacheUnexecInfo info;
    const String parentPath = viewMode_ ? JoinPath(query.text(row, 5), query.text(row, 0)) : query.text(row, 0);
    info.name = query.text(row, 1);
    info.relPath = JoinPath(parentPath, info.name);
    info.isDir = query.flag(row, 2);
    info.errcode = query.int32(row, 3);
    info.size = query.int64(row, 4);
    infos.push_back(info);
  }
}

void ncCacheMgr::BeginBatch() {
  NC_TRACE(u"this: 0x%p", this);
  db_->BeginTransaction();
}

void ncCacheMgr::CommitBatch() {
  NC_TRACE(u"this: 0x%p", this);
  ncDBTransaction::CommitOrRollBack(*db_);
}

void ncCacheMgr::RollbackBatch() {
  NC_TRACE(u"this: 0x%p", this);
  db_->RollbackTransaction();
}
