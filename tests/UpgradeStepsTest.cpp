// The upgrade chain on old databases made here from the stores' current schema with
// columns, indexes, tables and triggers taken away, as earlier releases left them: every
// row survives with its values and the schema ends as a fresh root's.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <map>

#include "FileTestSupport.h"
#include "TestSupport.h"
#include "UpgradeTestSupport.h"
#include "dataapi/ncJson.h"
#include "docmgr/ncCacheMgr.h"
#include "docmgr/ncDocUtils.h"
#include "docmgr/ncLogMgr.h"
#include "docmgr/ncModuleAllocator.h"
#include "docmgr/ncMsgMgr.h"
#include "docmgr/ncRelayMgr.h"
#include "docmgr/ncUpgradeMgr.h"
#include "platform/ncPlatform.h"

using base::String;

namespace {

const char* const kStores[] = {"cache.db", "nonius.db", "log.db", "msg.db"};

// What an old release lacked, per table: the columns named ("x+" also every column after
// x), the whole table ("*"), or a table of its own ("=definition"). A column missing in the
// middle makes the upgrade rebuild the table in order.
std::map<std::string, std::string> Lacking(int version) {
  switch (version) {
    case 4:
      return {{"tb_cacheInfo", "acronym typeName viewType viewName parentId+"}, {"tb_download_nonius", "*"},
              {"tb_upload_nonius", "crc32 sliceMd5 lastModified partSize ratios+"}, {"tb_logstat", "*"},
              {"tb_synclog", "newName remark+"},
              {"tb_msg", "recipient accessorType csfLevel allowPermValue refusePermValue perm+"}};
    case 7:
      return {{"tb_cacheInfo", "acronym parentId errcode+"}, {"tb_upload_nonius", "sliceMd5 partSize duration+"},
              {"tb_download_nonius", "viewType viewName mtime attr range+"}, {"tb_synclog", "visible"},
              {"tb_logstat", "=logCount int, logType int PRIMARY KEY"},
              {"tb_msg", "accessorType csfLevel operationType+"}};
    case 12:
      return {{"tb_cacheInfo", "parentId execTask watermark"}, {"tb_upload_nonius", "duration csf"},
              {"tb_download_nonius", "range"}, {"tb_msg", "remindcontent isInherit"}};
    default:  // the tables of today, without their indexes, with the old delete trigger
      return {{"tb_upload_nonius", "csf"}, {"tb_msg", "isInherit"}};
  }
}

// cache.db and nonius.db live in the data directory of the main root, the journals in the
// second root's.
std::string StoreFile(const test::TempDir& dir, const std::string& file) {
  return dir.path() + (file == "cache.db" || file == "nonius.db" ? "/main" : "/logs") + "/.kestrove.cache/" + file;
}

nsCOMPtr<ncDBMgr> OpenStore(const std::string& path) {
  nsCOMPtr<ncDBMgr> db(NC_NEW(ncDBMgr));
  db->Open(base::FromUtf8(path));
  return db;
}

test::Rows Read(const std::string& path, const std::string& sql) { return test::Query(OpenStore(path).get(), sql); }

// The stores of a root as the current release creates them (each closes when released).
std::string FreshDataDir(const test::TempDir& dir) {
  const std::string data = dir.path() + "/fresh";
  test::MakeDir(data);
  const String path = base::FromUtf8(data);
  nsCOMPtr<ncCacheMgr>(NC_NEW(ncCacheMgr))->Init(path + u"/cache.db", false);
  nsCOMPtr<ncRelayMgr>(NC_NEW(ncRelayMgr))->Init(path + u"/nonius.db");
  nsCOMPtr<ncLogMgr>(NC_NEW(ncLogMgr))->Init(path + u"/log.db");
  nsCOMPtr<ncMsgMgr>(NC_NEW(ncMsgMgr))->Init(path + u"/msg.db");
  return data;
}

const char* const kNames[] = {"report.doc", "\xE5\xB9\xB4\xE5\xBA\xA6\xE6\x8A\xA5\xE5\x91\x8A.doc", "O''Brien"};

// A value of an old row: names and ids as the client writes them, anything else numbered.
std::string Value(const std::string& table, const std::string& column, int row) {
  if (column == "id" && table == "tb_cacheInfo") return "'gns://ROOT/DIR/N" + std::to_string(row) + "'";
  if (column == "name") return std::string("'") + kNames[row % 3] + "'";
  if (column == "logType") return std::to_string(table == "tb_logstat" ? row : row % 2);
  if (column == "type" || column == "docType") return std::to_string(row % 2 + 1);
  if (column == "id" || column == "logCount") return std::to_string(row + 1);
  return "'" + column + std::to_string(row) + "'";
}

// Both roots at the version, in layout 1.
void StampVersions(const test::TempDir& dir, int version) {
  for (const char* root : {"main", "logs"}) test::StampVersion(dir.child(root), version, 1);
}

// A root (data directories of main and logs) as the given release left it, with three
// rows in every table; returns the columns each table kept.
std::map<std::string, std::string> MakeOldRoot(const test::TempDir& dir, int version) {
  const std::string fresh = FreshDataDir(dir);
  const std::map<std::string, std::string> lacking = Lacking(version);
  std::map<std::string, std::string> kept;
  StampVersions(dir, version);  // creates both data directories
  for (const char* file : kStores) {
    nsCOMPtr<ncDBMgr> old = OpenStore(StoreFile(dir, file));
    const auto exec = [&old](const std::string& sql) { old->ExecuteSql(base::FromUtf8(sql)); };
    nsCOMPtr<ncDBMgr> model = OpenStore(fresh + "/" + file);
    for (const auto& table : test::Query(model.get(), "select name from sqlite_master where type = 'table'")) {
      const std::string name = table[0];
      const std::string gone = lacking.count(name) ? lacking.at(name) : "";
      if (gone == "*") continue;
      const bool ownDefinition = !gone.empty() && gone[0] == '=';
      std::string definitions = ownDefinition ? gone.substr(1) : "", names, values[3];
      bool rest = false;  // "x+": x and every column after it
      for (const auto& column : test::Query(model.get(), "PRAGMA table_info(" + name + ")")) {
        rest = rest || (!ownDefinition && gone.find(column[1] + "+") != std::string::npos);
        if (rest || (!ownDefinition && (" " + gone + " ").find(" " + column[1] + " ") != std::string::npos)) continue;
        const std::string comma = names.empty() ? "" : ", ";
        if (!ownDefinition) definitions += comma + column[1] + " " + column[2] + (column[5] == "1" ? " PRIMARY KEY" : "");
        names += comma + column[1];
        for (int row = 0; row < 3; ++row) values[row] += comma + Value(name, column[1], row);
      }
      exec("create table " + name + " (" + definitions + ")");
      for (const std::string& row : values) exec("insert into " + name + " (" + names + ") values (" + row + ")");
      if (name != "tb_logstat") kept[name] = names;  // the counters are recounted by design
    }
    if (version >= 7 && std::string(file) == "log.db")
      exec("create trigger trg_deletelog after delete on tb_synclog begin update tb_logstat set logCount = "
           "logCount - 1 where logType = new.logType; end");
  }
  return kept;
}

// Every table with its columns, every index with its columns and every trigger of a file.
test::Rows Schema(const std::string& path) {
  return Read(path,
              "select type, name, case type when 'trigger' then sql end, (select group_concat(cid || ' ' || name || ' ' || "
              "type || ' ' || \"notnull\" || ' ' || quote(dflt_value) || ' ' || pk, '|') from pragma_table_info(m.name)), "
              "(select group_concat(seqno || ' ' || cid || ' ' || name, '|') from pragma_index_info(m.name)) "
              "from sqlite_master m order by 1, 2");
}

// The kept columns of every old table, row by row in key order.
std::map<std::string, test::Rows> OldValues(const test::TempDir& dir, const std::map<std::string, std::string>& kept) {
  std::map<std::string, test::Rows> values;
  for (const char* file : kStores)
    for (const auto& table : Read(StoreFile(dir, file), "select name from sqlite_master where type = 'table'"))
      if (kept.count(table[0]))
        values[table[0]] = Read(StoreFile(dir, file), "select " + kept.at(table[0]) + " from " + table[0] + " order by 1");
  return values;
}

// Below version 7 a first run without the type names stops where the step from 6 would
// name the cache's documents, with the earlier versions recorded; the next run finishes.
ncUpgradeSummary UpgradeRoot(const test::TempDir& dir, int version, bool rerun = false) {
  nsCOMPtr<ncIUpgradeMgr> upgrade(new ncUpgradeMgr);
  upgrade->Init(dir.child("main"), dir.child("logs"), {}, 1);
  EXPECT_EQ(version < 7, upgrade->NeedData());
  if (upgrade->NeedData() && !rerun) {
    const ncUpgradeSummary failed = test::RunUpgradeToEnd(upgrade.get());
    EXPECT_EQ(3, failed.state);
    EXPECT_NE(String::npos, failed.message.find(u"names of the document types")) << base::ToUtf8(failed.message);
    EXPECT_EQ((24.0 - version) + (6 - version), failed.done);  // the journals' root first
    EXPECT_EQ(6, test::StoredVersion(dir.child("main")));
  }
  ncUpgradeData data;
  data.typeNames = {{1, u"Document"}, {2, u"Folder"}};
  upgrade->SetData(data);
  const ncUpgradeSummary summary = test::RunUpgradeToEnd(upgrade.get());
  upgrade->Close();
  return summary;
}

TEST(UpgradeStepsTest, OldRootsReachTheFreshSchemaWithEveryRowAndARerunChangesNothing) {
  for (int version : {4, 7, 12, 23}) {
    SCOPED_TRACE(version);
    test::TempDir dir;
    const std::map<std::string, std::string> kept = MakeOldRoot(dir, version);
    const std::map<std::string, test::Rows> before = OldValues(dir, kept);
    const ncUpgradeSummary summary = UpgradeRoot(dir, version);
    EXPECT_EQ(2, summary.state) << base::ToUtf8(summary.message);
    EXPECT_EQ(2.0 * (24 - version), summary.total);
    EXPECT_EQ(summary.total, summary.done);
    // Every step again, as a run interrupted before recording would: nothing moves.
    StampVersions(dir, version);
    EXPECT_EQ(2, UpgradeRoot(dir, version, true).state);

    EXPECT_EQ(before, OldValues(dir, kept));
    for (const char* file : kStores) EXPECT_EQ(Schema(dir.path() + "/fresh/" + file), Schema(StoreFile(dir, file)));

    // Values a fresh row would have: derived as the cache derives them, or the defaults.
    const test::Rows derived = Read(StoreFile(dir, "cache.db"),
        "select name, acronym, parentId, typeName, errcode, watermark from tb_cacheInfo order by id");
    ASSERT_EQ(3u, derived.size());
    for (size_t row = 0; version < 12 && row < derived.size(); ++row) {
      const std::vector<std::string>& cells = derived[row];
      EXPECT_EQ(base::ToUtf8(ncDocUtils::GetAcronym(base::FromUtf8(cells[0]))) + "|DIR", cells[1] + "|" + cells[2]);
    }
    if (version < 7) {
      EXPECT_EQ((std::vector<std::string>{"report.doc", "report.doc", "DIR", "Document", "0", "0"}), derived[0]);
    }

    const std::string log = StoreFile(dir, "log.db");
    EXPECT_EQ((test::Rows{{"0", "2"}, {"1", "1"}, {"2", "0"}, {"3", "0"}}),
              Read(log, "select logType, logCount from tb_logstat order by logType"));
    OpenStore(log)->ExecuteSql(u"delete from tb_synclog where logType = 0");  // the repaired trigger counts it
    EXPECT_EQ((test::Rows{{"0"}}), Read(log, "select logCount from tb_logstat where logType = 0"));
  }
}

// A root in layout 1: top folders A and C of the view Work (known to the cache) and B (of
// the view Shared, known to the client only), each with a tagged file; cache rows for all.
class LayoutRoot {
 public:
  LayoutRoot() {
    StampVersions(dir_, 24);
    nsCOMPtr<ncCacheMgr> cache(NC_NEW(ncCacheMgr));
    cache->Init(dir_.child("main/.kestrove.cache/cache.db"), false);
    for (const std::string top : {"A", "B", "C"}) {
      test::MakeDir(dir_.path() + "/main/" + top);
      const std::string file = dir_.path() + "/main/" + top + "/f.txt";
      test::WriteFile(file, top);
      tagged_ = test::SupportsStreams(dir_.path()) && platform::WriteStream(base::FromUtf8(file), u"docId", top);
      ncCacheInfo info;
      info.id = base::FromUtf8("gns://ROOT/" + top);
      info.viewName = top == "B" ? u"" : u"Work";
      cache->Update(info.id.substr(11), info);
      info.id += u"/F";
      cache->Update(info.id.substr(11, 1) + u"\\f.txt", info);
    }
  }

  ncUpgradeSummary ConvertTo(int layout) {
    nsCOMPtr<ncIUpgradeMgr> upgrade(new ncUpgradeMgr);
    upgrade->Init(dir_.child("main"), dir_.child("logs"), {}, layout);
    upgrade->SetViews({ncUpgradeView{u"Shared", 0, {u"B"}}});
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
      const std::string file = dir_.path() + "/main/" + place.second + "/f.txt";
      std::string tag;
      EXPECT_EQ(place.first, test::ReadFile(file));
      EXPECT_EQ(tagged_, test::GetXattr(file, "user.kestrove.docId", tag));
      EXPECT_EQ(tagged_ ? place.first : "", tag);
      std::string relPath = place.second + "/f.txt";
      std::replace(relPath.begin(), relPath.end(), '/', '\\');
      ncCacheInfo info;
      EXPECT_TRUE(cache->GetInfoByPath(base::FromUtf8(relPath), info));
      EXPECT_EQ(base::FromUtf8("gns://ROOT/" + place.first + "/F"), info.id);
    }
  }

  const test::TempDir dir_;

 private:
  bool tagged_ = false;
};

TEST(UpgradeStepsTest, TopFoldersGoUnderTheirViewsAndBackWithTheirTagsAndTheCacheFollows) {
  LayoutRoot root;
  EXPECT_EQ(2, root.ConvertTo(2).state);
  root.ExpectFilesAt({{"A", "Work/A"}, {"B", "Shared/B"}, {"C", "Work/C"}}, true);

  EXPECT_EQ(2, root.ConvertTo(1).state);
  root.ExpectFilesAt({{"A", "A"}, {"B", "B"}, {"C", "C"}}, false);
  EXPECT_FALSE(test::Exists(root.dir_.path() + "/main/Work"));
  EXPECT_FALSE(test::Exists(root.dir_.path() + "/main/Shared"));
}

TEST(UpgradeStepsTest, AnInterruptedViewStepCompletesAndAClashGetsANumberedName) {
  LayoutRoot root;
  // A earlier run moved A before it stopped; a stray folder holds C's name in its view.
  test::MakeDir(root.dir_.path() + "/main/Work");
  ASSERT_EQ(0, std::rename((root.dir_.path() + "/main/A").c_str(), (root.dir_.path() + "/main/Work/A").c_str()));
  test::MakeDir(root.dir_.path() + "/main/Work/C");
  EXPECT_EQ(2, root.ConvertTo(2).state);
  root.ExpectFilesAt({{"A", "Work/A"}, {"B", "Shared/B"}, {"C", "Work/C (2)"}}, true);
}

TEST(UpgradeStepsTest, CliReportsTheVersionsItChangedAndRefusesWhatItCannotDo) {
  if (!test::kPosixBackend) GTEST_SKIP() << test::kNoPosixShellReason;
  test::TempDir dir;
  const auto expectRefused = [](const std::string& arguments, int status, const std::string& text) {
    const test::CliRun run = test::Cli(arguments);
    EXPECT_EQ(status, run.status) << arguments;
    EXPECT_NE(std::string::npos, run.output.find(text)) << run.output;
  };
  MakeOldRoot(dir, 4);
  const std::string root = dir.path() + "/main";
  expectRefused("upgrade " + root, 1, "--type-name N=NAME");  // below version 7 the type names are given
  const test::CliRun run = test::Cli("--json upgrade " + root + " --view 2 --type-name 1=Document --type-name 2=Folder");
  ASSERT_EQ(0, run.status) << run.output;
  const JSON::Value::object_type report = JSON::Value::parse(run.output).as_object();
  EXPECT_EQ(6, report.at("schema")[0].as_integer());  // 4 and 5 ran before
  EXPECT_EQ(24, report.at("schema")[1].as_integer());
  EXPECT_EQ(2, report.at("view")[1].as_integer());

  test::StampVersion(dir.child("main"), 25, 0);
  expectRefused("upgrade " + root, 1, "schema version 25; only versions 4 to 24");
}

}  // namespace
