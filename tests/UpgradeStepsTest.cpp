// The upgrade chain on old databases made here from the current schema with columns,
// indexes, tables and triggers taken away, as earlier releases left them: every row
// survives with its values and the schema ends as a fresh root's.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <chrono>
#include <map>
#include <sys/xattr.h>

#include <algorithm>
#include <cstdio>
#include <thread>

#include "FileTestSupport.h"
#include "TestSupport.h"
#include "UpgradeTestSupport.h"
#include "docmgr/ncCacheMgr.h"
#include "docmgr/ncConfigDBInfo.h"
#include "docmgr/ncDocUtils.h"
#include "docmgr/ncLogMgr.h"
#include "docmgr/ncModuleAllocator.h"
#include "docmgr/ncMsgMgr.h"
#include "docmgr/ncRelayMgr.h"
#include "docmgr/ncUpgradeMgr.h"
#include "docmgr/ncVerUpgrader.h"

using base::String;

namespace {

struct OldTable {
  const char* file;
  const char* name;
  const char* columns;  // the column definitions of the old release
};

const char kCacheColumnsV24[] =
    "id text PRIMARY KEY, otag text, isDir int, state int, serverMTime text, clientMTime text, size text, name text, "
    "parentPath text, acronym text, type int, typeName text, viewType int, viewName text, parentId text, attr int, "
    "errcode int, execTask int, watermark int";
const char kBrokenDeleteTrigger[] =
    "create trigger trg_deletelog after delete on tb_synclog begin update tb_logstat set logCount = logCount - 1 "
    "where logType = new.logType; end";

// What each old release had. Columns missing in the middle of a table make the upgrade
// rebuild it; missing tables, indexes and triggers come from the stores' own set-up.
std::vector<OldTable> OldTables(int version) {
  switch (version) {
    case 4:
      return {{"cache.db", "tb_cacheInfo", "id text PRIMARY KEY, otag text, isDir int, state int, serverMTime text, "
                                           "clientMTime text, size text, name text, parentPath text, type int"},
              {"nonius.db", "tb_upload_nonius", "srcPath text PRIMARY KEY, destPath text, docId text, md5 text, "
                                                "uploadId text, size text, unUploadBlocks text, status int"},
              {"log.db", "tb_synclog", "id INTEGER PRIMARY KEY, logType int, taskType int, relPath text, size int, "
                                       "time int"},
              {"msg.db", "tb_msg", "id INTEGER PRIMARY KEY, msgId text, relPath text, sender text, isDir int, "
                                   "msgType int, state int"}};
    case 7:
      return {{"cache.db", "tb_cacheInfo", "id text PRIMARY KEY, otag text, isDir int, state int, serverMTime text, "
                                           "clientMTime text, size text, name text, parentPath text, type int, "
                                           "typeName text, viewType int, viewName text, attr int"},
              {"nonius.db", "tb_upload_nonius", "srcPath text PRIMARY KEY, destPath text, docId text, md5 text, "
                                                "crc32 text, uploadId text, otag text, size text, unUploadBlocks "
                                                "text, status int, ratios int"},
              {"nonius.db", "tb_download_nonius", "srcPath text PRIMARY KEY, destPath text, docId text, otag text, "
                                                  "docType int, typeName text, size text, status int"},
              {"log.db", "tb_synclog", "id INTEGER PRIMARY KEY, logType int, taskType int, relPath text, newName "
                                       "text, size int, time int, remark text"},
              {"log.db", "tb_logstat", "logCount int, logType int PRIMARY KEY"},
              {"msg.db", "tb_msg", "id INTEGER PRIMARY KEY, msgId text, relPath text, sender text, recipient text, "
                                   "isDir int, msgType int, state int, perm int, content text"}};
    case 12:
      return {{"cache.db", "tb_cacheInfo", "id text PRIMARY KEY, otag text, isDir int, state int, serverMTime text, "
                                           "clientMTime text, size text, name text, parentPath text, acronym text, "
                                           "type int, typeName text, viewType int, viewName text, attr int, "
                                           "errcode int"},
              {"nonius.db", "tb_upload_nonius", "srcPath text PRIMARY KEY, destPath text, docId text, md5 text, "
                                                "crc32 text, sliceMd5 text, uploadId text, lastModified text, otag "
                                                "text, partSize text, size text, unUploadBlocks text, direcMode int, "
                                                "status int, taskSrc int, onDup int, delSrc int, ratios int"},
              {"log.db", "tb_synclog", "id INTEGER PRIMARY KEY, logType int, taskType int, relPath text, newName "
                                       "text, size int, time int, remark text, visible bool"},
              {"msg.db", "tb_msg", "id INTEGER PRIMARY KEY, msgId text, relPath text, sender text, recipient text, "
                                   "isDir int, msgType int, accessorType int, csfLevel int, state int, perm int, "
                                   "auditorName text, content text, creator text"}};
    default:  // 23: the tables of today; an index missing, the old delete trigger, counters astray
      return {{"cache.db", "tb_cacheInfo", kCacheColumnsV24},
              {"nonius.db", "tb_upload_nonius", "srcPath text PRIMARY KEY, destPath text, docId text, md5 text, "
                                                "crc32 text, sliceMd5 text, uploadId text, lastModified text, otag "
                                                "text, partSize text, size text, unUploadBlocks text, direcMode int, "
                                                "status int, taskSrc int, onDup int, delSrc int, ratios int, "
                                                "duration text"},
              {"log.db", "tb_synclog", "id INTEGER PRIMARY KEY, logType int, taskType int, relPath text, newName "
                                       "text, size int, time int, remark text, visible bool"},
              {"log.db", "tb_logstat", "logType int PRIMARY KEY, logCount int"},
              {"msg.db", "tb_msg", "id INTEGER PRIMARY KEY, msgId text, relPath text, sender text"}};
  }
}

// Column names of a definition list.
std::vector<std::string> ColumnNames(const std::string& definitions) {
  std::vector<std::string> names;
  for (size_t from = 0; from < definitions.size();) {
    size_t comma = definitions.find(',', from);
    if (comma == std::string::npos) comma = definitions.size();
    std::string part = definitions.substr(from, comma - from);
    part.erase(0, part.find_first_not_of(' '));
    names.push_back(part.substr(0, part.find(' ')));
    from = comma + 1;
  }
  return names;
}

const char* const kNames[] = {"report.doc", "\xE5\xB9\xB4\xE5\xBA\xA6\xE6\x8A\xA5\xE5\x91\x8A.doc", "O''Brien"};

// A value of the old row: names and ids as the client writes them, anything else numbered.
std::string Value(const std::string& table, const std::string& column, int row) {
  if (column == "id" && table == "tb_cacheInfo") return "'gns://ROOT/DIR/N" + std::to_string(row) + "'";
  if (column == "name") return std::string("'") + kNames[row % 3] + "'";
  if (column == "logType") return std::to_string(table == "tb_logstat" ? row : row % 2);
  if (column == "type" || column == "docType") return std::to_string(row % 2 + 1);
  if (column == "id" || column == "logCount") return std::to_string(row + 1);
  return "'" + column + std::to_string(row) + "'";
}

void Exec(sqlite3* db, const std::string& sql) {
  char* error = nullptr;
  ASSERT_EQ(SQLITE_OK, sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &error)) << sql << ": " << error;
}

const int kRows = 3;

// cache.db and nonius.db live in the data directory of the main root, the journals in the
// second root's.
std::string StoreFile(const test::TempDir& dir, const std::string& file) {
  return dir.path() + (file == "cache.db" || file == "nonius.db" ? "/main" : "/logs") + "/.kestrove.cache/" + file;
}


// A root (data directories of main and logs) as the given release left it, with rows.
void MakeOldRoot(const test::TempDir& dir, int version) {
  std::map<std::string, sqlite3*> files;
  for (const OldTable& table : OldTables(version)) {
    for (const char* root : {"/main", "/logs"}) {
      test::MakeDir(dir.path() + root);
      test::MakeDir(dir.path() + root + "/.kestrove.cache");
    }
    sqlite3*& db = files[StoreFile(dir, table.file)];
    if (!db) {
      ASSERT_EQ(SQLITE_OK, sqlite3_open(StoreFile(dir, table.file).c_str(), &db));
    }
    Exec(db, std::string("create table ") + table.name + " (" + table.columns + ")");
    const std::vector<std::string> columns = ColumnNames(table.columns);
    for (int row = 0; row < kRows; ++row) {
      std::string values;
      for (const std::string& column : columns) values += (values.empty() ? "" : ", ") + Value(table.name, column, row);
      Exec(db, std::string("insert into ") + table.name + " values (" + values + ")");
    }
  }
  if (version >= 7) Exec(files[StoreFile(dir, "log.db")], kBrokenDeleteTrigger);
  for (auto& file : files) sqlite3_close(file.second);
  for (const char* root : {"main", "logs"}) {
    ncConfigDBInfo config;
    config.Init(dir.child(root), false);
    config.UpdateVersionNum(version);
    config.UpdateViewVer(1);
    config.Close();
  }
}

// Every table with its columns, every index with its columns and every trigger of a file.
std::vector<std::string> Schema(const std::string& path) {
  nsCOMPtr<ncDBMgr> db(NC_NEW(ncDBMgr));
  db->Open(base::FromUtf8(path));
  std::vector<std::string> schema;
  for (const auto& object :
       test::Query(db.get(), "select type, name, tbl_name, coalesce(sql, '') from sqlite_master order by type, name")) {
    std::string entry = object[0] + " " + object[1] + " on " + object[2] + ":";
    if (object[0] == "table")
      for (const auto& column : test::Query(db.get(), "PRAGMA table_info(" + object[1] + ")"))
        entry += " " + column[1] + " " + column[2] + " " + column[3] + " " + column[4] + " " + column[5] + ",";
    else if (object[0] == "index")
      for (const auto& column : test::Query(db.get(), "PRAGMA index_info(" + object[1] + ")")) entry += " " + column[2];
    else
      entry += object[3];
    schema.push_back(entry);
  }
  db->Close();
  return schema;
}

// The stores of a root as the current release creates them.
std::string FreshDataDir(const test::TempDir& dir) {
  const std::string data = dir.path() + "/fresh";
  test::MakeDir(data);
  const String path = base::FromUtf8(data);
  nsCOMPtr<ncCacheMgr> cache(NC_NEW(ncCacheMgr));
  cache->Init(path + u"/cache.db", false);
  cache->Close();
  nsCOMPtr<ncRelayMgr> relay(NC_NEW(ncRelayMgr));
  relay->Init(path + u"/nonius.db");
  relay->Close();
  nsCOMPtr<ncLogMgr> log(NC_NEW(ncLogMgr));
  log->Init(path + u"/log.db");
  log->Close();
  nsCOMPtr<ncMsgMgr> msg(NC_NEW(ncMsgMgr));
  msg->Init(path + u"/msg.db");
  msg->Close();
  return data;
}

// The old columns of every old table, row by row in key order.
std::map<std::string, test::Rows> OldValues(const test::TempDir& dir, int version) {
  std::map<std::string, test::Rows> values;
  for (const OldTable& table : OldTables(version)) {
    nsCOMPtr<ncDBMgr> db(NC_NEW(ncDBMgr));
    db->Open(base::FromUtf8(StoreFile(dir, table.file)));
    std::string columns;
    for (const std::string& column : ColumnNames(table.columns)) columns += (columns.empty() ? "" : ", ") + column;
    if (std::string(table.name) != "tb_logstat")  // recounted by design
      values[table.name] = test::Query(db.get(), "select " + columns + " from " + table.name + " order by 1");
    db->Close();
  }
  return values;
}

ncUpgradeData TypeNames() {
  ncUpgradeData data;
  data.typeNames = {{1, u"Document"}, {2, u"Folder"}};
  return data;
}

TEST(UpgradeStepsTest, OldRootsReachTheFreshSchemaWithEveryRowAndARerunChangesNothing) {
  for (int version : {4, 7, 12, 23}) {
    SCOPED_TRACE(version);
    test::TempDir dir;
    MakeOldRoot(dir, version);
    const std::map<std::string, test::Rows> before = OldValues(dir, version);
    nsCOMPtr<ncIUpgradeMgr> upgrade(new ncUpgradeMgr);
    upgrade->Init(dir.child("main"), dir.child("logs"), {}, 1);
    EXPECT_EQ(version < 7, upgrade->NeedData());
    upgrade->SetData(TypeNames());
    const ncUpgradeSummary summary = test::RunUpgradeToEnd(upgrade.get());
    EXPECT_EQ(2, summary.state) << base::ToUtf8(summary.message);
    EXPECT_EQ(2.0 * (24 - version), summary.total);
    EXPECT_EQ(summary.total, summary.done);
    upgrade->Close();

    EXPECT_EQ(before, OldValues(dir, version));
    const std::string fresh = FreshDataDir(dir);
    std::map<std::string, std::vector<std::string>> upgraded;
    for (const char* file : {"cache.db", "nonius.db", "log.db", "msg.db"}) {
      upgraded[file] = Schema(StoreFile(dir, file));
      EXPECT_EQ(Schema(fresh + "/" + file), upgraded[file]) << file;
    }

    nsCOMPtr<ncDBMgr> cache(NC_NEW(ncDBMgr));
    cache->Open(base::FromUtf8(StoreFile(dir, "cache.db")));
    const test::Rows derived =
        test::Query(cache.get(), "select name, acronym, parentId, typeName, errcode, watermark from tb_cacheInfo "
                                 "order by id");
    cache->Close();
    ASSERT_EQ(3u, derived.size());
    if (version < 12) {  // no initials kept yet
      EXPECT_EQ("report.doc", derived[0][1]);
      EXPECT_EQ(base::ToUtf8(ncDocUtils::GetAcronym(base::FromUtf8(derived[1][0]))), derived[1][1]);
      EXPECT_EQ("O'Brien", derived[2][1]);
    }
    if (version < 23) {
      EXPECT_EQ("DIR", derived[0][2]);
    }
    if (version < 7) {
      EXPECT_EQ((std::vector<std::string>{"Document", "0", "0"}),
                std::vector<std::string>(derived[0].begin() + 3, derived[0].end()));
    }

    nsCOMPtr<ncDBMgr> log(NC_NEW(ncDBMgr));
    log->Open(base::FromUtf8(StoreFile(dir, "log.db")));
    EXPECT_EQ((test::Rows{{"0", "2"}, {"1", "1"}, {"2", "0"}, {"3", "0"}}),
              test::Query(log.get(), "select logType, logCount from tb_logstat order by logType"));
    log->ExecuteSql(u"delete from tb_synclog where logType = 0");  // the repaired trigger counts it
    EXPECT_EQ((test::Rows{{"0"}}), test::Query(log.get(), "select logCount from tb_logstat where logType = 0"));
    log->Close();

    // Every step again, as a run interrupted before recording would: nothing moves.
    const std::map<std::string, test::Rows> after = OldValues(dir, version);
    ncConfigDBInfo main;
    main.Init(dir.child("main"), false);
    ncUpgradeSummary counted;
    std::mutex lock;
    const ncUpgradeData data = TypeNames();
    const std::vector<ncUpgradeView> views;
    for (int step = version; step < 24; ++step) {
      nsCOMPtr<ncIVerUpgrader> upgrader(GetUpgrader(step, {&main, &counted, &lock, &data, &views}));
      upgrader->Upgrade();
    }
    main.Close();
    EXPECT_EQ(24.0 - version, counted.done);
    EXPECT_EQ(after, OldValues(dir, version));
    for (const char* file : {"cache.db", "nonius.db"}) EXPECT_EQ(upgraded[file], Schema(StoreFile(dir, file)));
  }
}

TEST(UpgradeStepsTest, FactoriesMakeOneStepPerVersionAndTheTwoViewSteps) {
  ncUpgradeContext context;
  for (int version : {3, 24, -1}) EXPECT_EQ(nullptr, GetUpgrader(version, context));
  for (int version = 4; version < 24; ++version) {
    nsCOMPtr<ncIVerUpgrader> step(GetUpgrader(version, context));
    EXPECT_NE(nullptr, step.get()) << version;
  }
  for (const auto& pair : std::vector<std::pair<int, int>>{{1, 1}, {2, 2}, {3, 1}, {1, 3}, {0, 2}})
    EXPECT_EQ(nullptr, GetViewUpgrader(pair.first, pair.second, context));
  nsCOMPtr<ncIVerUpgrader> forward(GetViewUpgrader(1, 2, context));
  nsCOMPtr<ncIVerUpgrader> back(GetViewUpgrader(2, 1, context));
  EXPECT_NE(dynamic_cast<ncViewUpgrader_1to2*>(forward.get()), nullptr);
  EXPECT_NE(dynamic_cast<ncViewUpgrader_2to1*>(back.get()), nullptr);
}

TEST(UpgradeStepsTest, AStepThatFailsLeavesTheEarlierVersionsAndTheNextRunFinishes) {
  test::TempDir dir;
  MakeOldRoot(dir, 4);
  nsCOMPtr<ncIUpgradeMgr> upgrade(new ncUpgradeMgr);
  upgrade->Init(dir.child("main"), dir.child("logs"), {}, 1);
  ASSERT_TRUE(upgrade->NeedData());
  // Without the type names the step from 6 cannot name the cache's documents.
  ncUpgradeSummary summary = test::RunUpgradeToEnd(upgrade.get());
  EXPECT_EQ(3, summary.state);
  EXPECT_NE(String::npos, summary.message.find(u"names of the document types")) << base::ToUtf8(summary.message);
  EXPECT_EQ(20.0 + 2.0, summary.done);  // the journals' root, then steps 4 and 5 of the main root
  ncConfigDBInfo main;
  main.Init(dir.child("main"), false);
  EXPECT_EQ(6, main.GetVersionNum());
  main.Close();

  upgrade->SetData(TypeNames());
  summary = test::RunUpgradeToEnd(upgrade.get());
  EXPECT_EQ(2, summary.state);
  EXPECT_EQ(summary.total, summary.done);
  upgrade->Close();
  ncConfigDBInfo reopened;
  reopened.Init(dir.child("main"), false);
  EXPECT_EQ(24, reopened.GetVersionNum());
}

}  // namespace

namespace {

// A root in layout 1: top folders with files, tags on the files, and cache rows for all.
class LayoutRoot {
 public:
  LayoutRoot() {
    for (const char* root : {"main", "logs"}) {
      ncConfigDBInfo config;
      config.Init(dir_.child(root), false);
      config.UpdateVersionNum(24);
      config.UpdateViewVer(1);
      config.Close();
    }
    nsCOMPtr<ncCacheMgr> cache(NC_NEW(ncCacheMgr));
    cache->Init(dir_.child("main/.kestrove.cache/cache.db"), false);
    for (const auto& top : std::vector<std::pair<std::string, std::string>>{{"A", "Work"}, {"B", ""}, {"C", "Work"}}) {
      test::MakeDir(dir_.path() + "/main/" + top.first);
      test::WriteFile(dir_.path() + "/main/" + top.first + "/f.txt", top.first);
      ncCacheInfo info;
      info.id = base::FromUtf8("gns://ROOT/" + top.first);
      info.isDir = 1;
      info.viewName = base::FromUtf8(top.second);
      info.viewType = top.second.empty() ? 0 : 3;
      cache->Update(base::FromUtf8(top.first), info);
      info.id += u"/F";
      info.isDir = 0;
      cache->Update(base::FromUtf8(top.first + "\\f.txt"), info);
      tagged_ = test::SupportsUserXattrs(dir_.path()) &&
                setxattr((dir_.path() + "/main/" + top.first + "/f.txt").c_str(), "user.kestrove.docId",
                         top.first.data(), top.first.size(), 0) == 0;
    }
    cache->Close();
  }

  // Runs the upgrade manager to the layout; B's view comes from the client.
  ncUpgradeSummary ConvertTo(int layout) {
    nsCOMPtr<ncIUpgradeMgr> upgrade(new ncUpgradeMgr);
    upgrade->Init(dir_.child("main"), dir_.child("logs"), {}, layout);
    ncUpgradeView shared;
    shared.name = u"Shared";
    shared.topFolders = {u"B"};
    upgrade->SetViews({shared});
    const ncUpgradeSummary summary = test::RunUpgradeToEnd(upgrade.get());
    upgrade->Close();
    return summary;
  }

  // Each file where the layout puts it, with its content and tag, and found by the cache.
  void ExpectFilesAt(const std::map<std::string, std::string>& places, bool viewMode) {
    nsCOMPtr<ncCacheMgr> cache(NC_NEW(ncCacheMgr));
    cache->Init(dir_.child("main/.kestrove.cache/cache.db"), viewMode);
    for (const auto& place : places) {
      SCOPED_TRACE(place.second);
      EXPECT_EQ(place.first, test::ReadFile(dir_.path() + "/main/" + place.second + "/f.txt"));
      std::string tag;
      if (tagged_) {
        EXPECT_TRUE(test::GetXattr(dir_.path() + "/main/" + place.second + "/f.txt", "user.kestrove.docId", tag));
        EXPECT_EQ(place.first, tag);
      }
      std::string relPath = place.second;
      std::replace(relPath.begin(), relPath.end(), '/', '\\');
      ncCacheInfo info;
      EXPECT_TRUE(cache->GetInfoByPath(base::FromUtf8(relPath + "\\f.txt"), info));
      EXPECT_EQ(base::FromUtf8("gns://ROOT/" + place.first + "/F"), info.id);
    }
    cache->Close();
  }

  const test::TempDir& dir() const { return dir_; }

 private:
  test::TempDir dir_;
  bool tagged_ = false;
};

TEST(UpgradeStepsTest, TopFoldersGoUnderTheirViewsAndBackWithTheirTagsAndTheCacheFollows) {
  LayoutRoot root;
  EXPECT_EQ(2, root.ConvertTo(2).state);
  root.ExpectFilesAt({{"A", "Work/A"}, {"B", "Shared/B"}, {"C", "Work/C"}}, true);

  EXPECT_EQ(2, root.ConvertTo(1).state);
  root.ExpectFilesAt({{"A", "A"}, {"B", "B"}, {"C", "C"}}, false);
  EXPECT_FALSE(test::Exists(root.dir().path() + "/main/Work"));
  EXPECT_FALSE(test::Exists(root.dir().path() + "/main/Shared"));
}

TEST(UpgradeStepsTest, AnInterruptedViewStepCompletesAndAClashGetsANumberedName) {
  LayoutRoot root;
  // A earlier run moved A before it stopped; a stray folder holds C's name in its view.
  test::MakeDir(root.dir().path() + "/main/Work");
  ASSERT_EQ(0, std::rename((root.dir().path() + "/main/A").c_str(), (root.dir().path() + "/main/Work/A").c_str()));
  test::MakeDir(root.dir().path() + "/main/Work/C");
  const ncUpgradeSummary summary = root.ConvertTo(2);
  EXPECT_EQ(2, summary.state);
  EXPECT_EQ(summary.total, summary.done);
  root.ExpectFilesAt({{"A", "Work/A"}, {"B", "Shared/B"}, {"C", "Work/C (2)"}}, true);
}

}  // namespace

namespace {

TEST(UpgradeStepsTest, CliShowsTheVersionsItChangedAndRefusesWhatItCannotDo) {
  test::TempDir dir;
  const test::CliRun bare = test::Cli("upgrade " + dir.path());
  EXPECT_EQ(1, bare.status);
  EXPECT_NE(std::string::npos, bare.output.find("no local state")) << bare.output;
  EXPECT_FALSE(test::Exists(dir.path() + "/.kestrove.cache"));

  MakeOldRoot(dir, 12);
  const std::string root = dir.path() + "/main";
  for (const char* layout : {"7", "abc", "-3", ""}) EXPECT_EQ(2, test::Cli("upgrade " + root + " --view " + layout).status);
  const test::CliRun run = test::Cli("upgrade " + root + " --view 2");
  EXPECT_EQ(0, run.status) << run.output;
  EXPECT_NE(std::string::npos, run.output.find("schema version  12 -> 24")) << run.output;
  EXPECT_NE(std::string::npos, run.output.find("view layout     1 -> 2")) << run.output;
  EXPECT_NE(std::string::npos, test::Cli("upgrade " + root).output.find("Nothing to change"));

  sqlite3* db = nullptr;
  ASSERT_EQ(SQLITE_OK, sqlite3_open((root + "/.kestrove.cache/config.db").c_str(), &db));
  Exec(db, "update tb_version set versionId = 25");
  sqlite3_close(db);
  const test::CliRun tooNew = test::Cli("upgrade " + root);
  EXPECT_EQ(1, tooNew.status);
  EXPECT_NE(std::string::npos, tooNew.output.find("schema version 25; only versions 4 to 24")) << tooNew.output;
}

}  // namespace
