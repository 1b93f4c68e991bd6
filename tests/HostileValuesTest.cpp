// Values as a hostile server or an odd file system sends them, through every method of the
// stores that takes text: each one is stored exactly, or its call fails alone (code 1, or 2
// for a path the path rules refuse); no other row, table, index or trigger changes.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <set>

#include "TestSupport.h"
#include "docmgr/ncCacheMgr.h"
#include "docmgr/ncLogMgr.h"
#include "docmgr/ncModuleAllocator.h"
#include "docmgr/ncMsgMgr.h"
#include "docmgr/ncRelayMgr.h"

using base::String;

namespace {

String LargeValue() {
  String value;
  while (value.size() < 100 * 1024) value += u"O'Brien %_文档 ";
  return value;
}

const std::vector<String>& HostileValues() {
  static const std::vector<String> values = {
      u"x'; DROP TABLE tb_cacheInfo; --", u"v' OR '1'='1", u"O'Brien", u"%n%s", String(u"a\0b';", 5),
      u"lone \xD800 high", u"lone \xDC00 low", LargeValue()};
  return values;
}

ncUploadNonius Upload(const String& path, const String& text) {
  ncUploadNonius r;
  r.srcPath = path;
  r.destPath = r.docId = r.md5 = r.crc32 = r.sliceMd5 = r.uploadId = r.otag = r.unUploadBlocks = r.csf = text;
  return r;
}

ncDownloadNonius Download(const String& path, const String& text) {
  ncDownloadNonius r;
  r.srcPath = path;
  r.destPath = r.docId = r.otag = r.typeName = r.viewName = text;
  return r;
}

ncMsgInfo Message(const String& id, const String& text) {
  ncMsgInfo m;
  m.msgId = id;
  m.relPath = m.sender = m.recipient = m.auditorName = m.auditMsg = m.requester = m.previousAuditor = text;
  m.processName = m.nextAuditor = m.creator = m.modifier = m.content = m.virusadmin = m.remindcontent = text;
  return m;
}

bool AllAre(const String& value, std::initializer_list<String> fields) {
  return std::all_of(fields.begin(), fields.end(), [&value](const String& field) { return field == value; });
}

// The methods of one store under test, returning whether what they wrote reads back exactly.
struct Case {
  const char* name;
  std::function<bool(const String&)> run;
};

class HostileValuesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    cache_->Init(dir_.child("cache.db"), false);
    views_->Init(dir_.child("views.db"), true);
    relay_->Init(dir_.child("nonius.db"));
    log_->Init(dir_.child("log.db"));
    msg_->Init(dir_.child("msg.db"));
  }
  void Seed() {
    for (const char16_t* path : {u"a", u"a\\b", u"a\\b\\f.txt", u"target", u"target\\child"}) {
      ncCacheInfo info;
      info.id = u"gns://SEED/" + String(path);
      info.isDir = String(path).find(u'.') == String::npos;
      cache_->Update(path, info);
      info.viewName = u"view";
      views_->Update(u"view\\" + String(path), info);
    }
    for (const char16_t* path : {u"/seed", u"/target"}) {
      relay_->UpdateUploadNonius(Upload(path, u"seed"));
      relay_->UpdateDownloadNonius(Download(path, u"seed"));
    }
    log_->RecordSyncLog(1, ncSyncLogInfo());
    msg_->RecordMsg({Message(u"seed", u"seed"), Message(u"target", u"seed")});
  }

  std::vector<ncDBMgr*> Databases() {
    return {cache_->GetDBMgr(), views_->GetDBMgr(), relay_->GetDBMgr(), log_->GetDBMgr(), msg_->GetDBMgr()};
  }

  // The schema whole, and every row that holds neither the target marker nor the value.
  std::multiset<std::string> Dump(const String& value) {
    const std::string bytes = base::ToUtf8(value);
    std::multiset<std::string> dump;
    int database = 0;
    for (ncDBMgr* db : Databases()) {
      const std::string prefix = std::to_string(database++) + "|";
      for (const auto& object : test::Query(db, "select type, name, tbl_name, sql from sqlite_master")) {
        dump.insert(prefix + object[0] + "|" + object[1] + "|" + object[2] + "|" + object[3]);
        if (object[0] != "table" || object[1] == "tb_logstat") continue;  // counters follow the log
        for (const auto& row : test::Query(db, "select * from \"" + object[1] + "\"")) {
          std::string line = prefix + object[1];
          for (const std::string& cell : row) line += "|" + cell;
          if (line.find("target") == std::string::npos && line.find(bytes) == std::string::npos) dump.insert(line);
        }
      }
    }
    return dump;
  }

  std::vector<Case> Cases();

  test::TempDir dir_;  // the stores close as they go, before it
  nsCOMPtr<ncCacheMgr> cache_{NC_NEW(ncCacheMgr)}, views_{NC_NEW(ncCacheMgr)};
  nsCOMPtr<ncRelayMgr> relay_{NC_NEW(ncRelayMgr)};
  nsCOMPtr<ncLogMgr> log_{NC_NEW(ncLogMgr)};
  nsCOMPtr<ncMsgMgr> msg_{NC_NEW(ncMsgMgr)};
};

std::vector<Case> HostileValuesTest::Cases() {
  ncCacheMgr* cache = cache_.get();
  auto cacheInfo = [cache](const String& path) {
    ncCacheInfo info;
    cache->GetInfoByPath(path, info);
    return info;
  };
  // Every value but one is stored by every method, and that one (a NUL inside) is refused by
  // the first call already: so one case per store, each write read back before the next.
  return {
      {"cache writes, lookups, updates and deletes",
       [=](const String& v) {
         cache->Rename(u"target\\child", u"target\\" + v);  // before the row it would collide with
         bool exact = !cacheInfo(u"target\\" + v).id.empty();
         ncCacheInfo info;
         info.id = info.otag = info.typeName = info.viewName = v;
         cache->Update(u"target\\" + v, info);
         info = cacheInfo(u"target\\" + v);
         exact = exact && AllAre(v, {info.id, info.otag, info.typeName, info.viewName});
         cache->UpdateOtag(u"target", v);
         cache->UpdateTypeName(u"target", v);
         exact = exact && AllAre(v, {cacheInfo(u"target").otag, cacheInfo(u"target").typeName});
         ncCacheInfo server;  // clears the tag again
         server.id = u"gns://T/" + v;
         cache->Update(u"target", server);
         exact = exact && cacheInfo(u"target").id.substr(8) == v;
         cache->UpdateOtagNoView(u"target", v);
         exact = exact && cacheInfo(u"target").otag == v;
         // No row lies at the value itself: a lookup that finds one took the value for SQL.
         ncCacheDocInfo docInfo;
         EXPECT_FALSE(cache->GetInfoByPath(v, info) || cache->GetLegalInfoByPath(v, info) ||
                      cache->GetInfoByDocId(u"gns://" + v, docInfo) || cache->Unsync_IsPathUnsync(v, false));
         std::map<String, ncCacheScanInfo> scan;
         std::vector<ncCacheDocInfo> subtree;
         std::vector<ncCacheUnexecInfo> unexec;
         cache->GetScanSubInfos(v, scan);
         cache->GetCacheSubInfos(v, subtree);
         cache->Unsync_GetUnexecInfoVec(v, unexec, 0);
         EXPECT_TRUE(scan.empty() && subtree.empty() && unexec.empty() && cache->Unsync_CountUnexec(v) == 0);
         std::vector<ncCacheSearchInfo> hits;
         cache->Search(v, v, v, hits, 10);
         cache->UpdateOtag(v, String());
         cache->UpdateAttr(v, 1);
         cache->UpdateState(v, 1);
         cache->UpdateExectask(v, 1);
         cache->UpdateWatermark(v, true);
         cache->Unlock(v);
         views_->Delete(v, false);
         cache->Delete(v, true);
         cache->Delete(v, false);
         EXPECT_FALSE(cache->GetDBMgr()->IsTableExists(v));
         cache->GetDBMgr()->IsColumnExists(v, v);
         cache->GetDBMgr()->IsColumnExists(u"tb_cacheInfo", v);  // may match: the loose test takes "%" as a wildcard
         return exact;
       }},
      {"relay writes, then path updates and deletes",
       [this](const String& v) {
         ncUploadNonius up;
         ncDownloadNonius down;
         relay_->UpdateUploadNonius(Upload(v, v));
         relay_->GetUploadNoniusByPath(v, up);
         bool exact = AllAre(v, {up.srcPath, up.destPath, up.docId, up.md5, up.crc32, up.sliceMd5, up.uploadId, up.otag,
                                 up.unUploadBlocks, up.csf});
         relay_->UpdateUploadNoniusUnuploadBlocks(u"/target", v, 1);
         relay_->GetUploadNoniusByPath(u"/target", up);
         relay_->UpdateDownloadNonius(Download(u"/target", v));
         relay_->GetDownloadNoniusByPath(u"/target", down);
         exact = exact &&
                 AllAre(v, {up.unUploadBlocks, down.destPath, down.docId, down.otag, down.typeName, down.viewName});
         relay_->UpdateUploadNoniusUnuploadBlocks(v, u"[]", 1);
         relay_->UpdateUploadNoniusDuration(v, 5);
         relay_->UpdateUploadNonius_Pause(v, 0.5, 1);
         relay_->UpdateDownloadNoniusRange(v, 1, 1, 1);
         relay_->UpdateDownloadNonius_Pause(v, 0.5, 1);
         relay_->DeleteUploadNonius(v);
         relay_->DeleteDownloadNonius(v);
         return exact && !relay_->GetUploadNoniusByPath(v, up) && !relay_->HasUploadNoniusWithPath(v) &&
                !relay_->GetDownloadNoniusByPath(v, down);
       }},
      {"log RecordSyncLog",
       [this](const String& v) {
         ncSyncLogInfo entry;
         entry.relPath = entry.newName = entry.remark = v;
         log_->RecordSyncLog(2, entry);
         std::vector<ncSyncLogInfo> out;
         uint32_t total = 0;
         log_->GetSyncLogById(2, out, 0, total);
         return AllAre(v, {out.at(0).relPath, out.at(0).newName, out.at(0).remark});
       }},
      {"msg RecordMsg and updates by id",
       [this](const String& v) {
         std::vector<ncMsgInfo> fresh, newest;
         msg_->RecordMsg({Message(v, v)});
         msg_->UpdateUnreadMsg({v});
         msg_->UpdateAndFilterMsg({Message(v, v)}, fresh);
         msg_->GetMsg(1, newest);
         const ncMsgInfo& m = newest.at(0);
         return AllAre(v, {m.msgId, m.relPath, m.sender, m.content, m.remindcontent});
       }},
  };
}

// Every method with every value: each stores it exactly or fails alone.
TEST_F(HostileValuesTest, EachValueIsStoredExactlyOrFailsItsCallAloneAndNothingElseChanges) {
  for (const String& value : HostileValues()) {
    for (const Case& method : Cases()) {
      SCOPED_TRACE(std::string(method.name) + " with " + base::ToUtf8(value).substr(0, 40));
      Seed();  // the target rows as they were before any earlier case
      const std::multiset<std::string> before = Dump(value);
      try {
        EXPECT_TRUE(method.run(value)) << "not stored exactly";
      } catch (const base::Exception& e) {
        EXPECT_TRUE(e.getCode() == 1 || e.getCode() == 2) << base::ToUtf8(e.getMessage()).substr(0, 200);
      }
      EXPECT_TRUE(before == Dump(value)) << "another row, table, index or trigger changed";
    }
  }
}

}  // namespace
