// docmgr-cli on trees a person really has: files it must not touch, folders it may not
// read, files it cannot tag, data it may only read, databases another process holds.
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <thread>

#include "TestSupport.h"
#include "dataapi/ncJson.h"

namespace {

using test::Cli;
using test::CliRun;

// docmgr-cli run by the unprivileged user "nobody", so that permissions bind as they do for
// a person (the tests run as root, whom no mode bits stop).
CliRun CliAsUser(const std::string& arguments) {
  if (::geteuid() != 0) return Cli(arguments);
  CliRun run;
  const std::string asNobody = "setpriv --reuid=65534 --regid=65534 --clear-groups ";
  run.output = test::RunCommand(asNobody + DOCMGR_CLI_PATH + " --quiet " + arguments, &run.status);
  return run;
}

// Lays out folders (names ending in '/') and files holding their own names, in order.
void Lay(const std::string& root, std::initializer_list<std::string> items) {
  for (const std::string& item : items)
    item.back() == '/' ? test::MakeDir(root + "/" + item) : test::WriteFile(root + "/" + item, item);
}

std::string Quoted(const std::string& path) { return "'" + path + "'"; }

// The run ended with the status and printed every part.
void ExpectRun(const CliRun& run, int status, std::initializer_list<std::string> parts = {}) {
  EXPECT_EQ(status, run.status) << run.output;
  for (const std::string& part : parts) EXPECT_NE(std::string::npos, run.output.find(part)) << part << "\n" << run.output;
}

// CliTest builds a demo in a new folder.
TEST(CliSafetyTest, DemoRefusesAFolderThatHoldsSomething) {
  test::TempDir dir;
  Lay(dir.path(), {"readme.txt", "mystuff/"});
  ExpectRun(Cli("demo " + Quoted(dir.path())), 1, {"not empty"});
  EXPECT_EQ("readme.txt", test::ReadFile(dir.path() + "/readme.txt"));
  EXPECT_FALSE(test::Exists(dir.path() + "/.kestrove.cache") || test::Exists(dir.path() + "/Projects"));
}

// Every command that only reads, with R for the root.
const char* const kReadingCommands[] = {"ls R", "info R/a.txt", "search R a", "unsync R", "log R", "resume R", "check R"};

std::string On(const std::string& root, std::string command) { return command.replace(command.find('R'), 1, Quoted(root)); }

TEST(CliSafetyTest, ReadOnlyCommandsCreateNothingAndReadDataTheyCannotWrite) {
  test::TempDir dir;
  const std::string missing = dir.path() + "/mistyped", plain = dir.path() + "/plain", root = dir.path() + "/root";
  Lay(dir.path(), {"plain/", "root/", "root/a.txt"});
  for (const std::string& folder : {missing, plain})
    for (const char* command : kReadingCommands) ExpectRun(Cli(On(folder, command)), 1);
  EXPECT_FALSE(test::Exists(missing) || test::Exists(plain + "/.kestrove.cache"));

  // Another user's sync root: readable, not writable.
  ASSERT_EQ(0, Cli("scan " + Quoted(root)).status);
  ::chmod(dir.path().c_str(), 0755);
  for (const char* command : kReadingCommands) ExpectRun(CliAsUser(On(root, command)), 0);
  EXPECT_FALSE(test::Exists(root + "/.kestrove.cache/cache.db-shm"));

  // check goes on past a database it cannot read.
  if (::geteuid() != 0) return;
  ::chmod((root + "/.kestrove.cache/msg.db").c_str(), 0600);
  ExpectRun(CliAsUser("check " + Quoted(root)), 1, {"msg.db       unreadable: Permission denied", "nonius.db    ok"});
}

TEST(CliSafetyTest, AnUnreadableFolderKeepsItsRecordsAndTheFirstScanWaitsForTheWholeTree) {
  test::TempDir dir;
  const std::string root = dir.path(), inner = root + "/closed/inner";
  Lay(root, {"open/", "open/a.txt", "closed/", "closed/inner/", "closed/inner/b.txt"});
  int status = 0;  // the tree goes to the user CliAsUser runs as, the temporary folder included
  if (::geteuid() == 0) test::RunCommand("chown -R 65534:65534 " + Quoted(root), &status);
  ASSERT_EQ(0, status);
  ::chmod(inner.c_str(), 0);

  // A first scan that could not read everything does not count as the first scan.
  ExpectRun(CliAsUser("scan " + Quoted(root)), 1, {"cannot read " + inner});
  ::chmod(inner.c_str(), 0755);
  ASSERT_EQ(0, CliAsUser("scan " + Quoted(root)).status);
  ExpectRun(Cli("--json info " + Quoted(inner + "/b.txt")), 0, {"\"stateName\": \"synced\""});  // as in a first scan

  // Later: a folder that cannot be read is not an empty one.
  ::chmod((root + "/closed").c_str(), 0);
  ExpectRun(CliAsUser("scan -v " + Quoted(root)), 1,
            {"0 records removed", "unreadable: " + root + "/closed (Permission denied"});
  ::chmod((root + "/closed").c_str(), 0755);
}

TEST(CliSafetyTest, AFileThatCannotBeTaggedIsReportedAndTheScanGoesOn) {
  test::TempDir dir;
  const std::string root = dir.path();
  if (!test::SupportsStreams(root)) GTEST_SKIP() << "no user extended attributes on " << root;
  Lay(root, {"a.txt", "b.txt", "c.txt"});
  int status = 0;
  test::RunCommand("chattr +i " + Quoted(root + "/b.txt"), &status);
  if (status != 0) GTEST_SKIP() << "chattr +i is not available on this file system";

  const CliRun scan = Cli("--json scan " + Quoted(root));
  test::RunCommand("chattr -i " + Quoted(root + "/b.txt"), &status);
  ExpectRun(scan, 1,
            {"could not tag " + root + "/b.txt: Permission denied", "\"tagged\": 2,",
             "\"failed\": [{\"path\": \"" + root + "/b.txt\", \"step\": \"tag\", \"error\": \"Permission denied\", "
             "\"code\": 5}]"});
  // The file after the failure is tagged.
  ExpectRun(Cli("--json info " + Quoted(root + "/c.txt")), 0, {"\"tags\": {\"docId\""});
  // Every record was written, so the next scan is no first scan and finds nothing new.
  ExpectRun(Cli("--json scan " + Quoted(root)), 0, {"\"firstScan\": false,", "\"tagged\": 3,", "\"unsynchronised\": 0,"});
}

TEST(CliSafetyTest, ScanNamesWhatItSkipsLeavesNestedStateAloneAndCountsWholeSubtrees) {
  test::TempDir dir;
  const std::string root = dir.path();
  Lay(root, {"docs/", "docs/deep/", "docs/deep/x.txt", "docs/y.txt", "Makefile", "nest/", "nest/n.txt"});
  ASSERT_EQ(0, ::symlink("docs", (root + "/link").c_str()));
  ASSERT_EQ(0, ::mkfifo((root + "/pipe").c_str(), 0644));
  const CliRun init = Cli("--json init " + Quoted(root + "/nest"));
  ASSERT_EQ(0, init.status) << init.output;
  const std::string nestedUnsync = JSON::Value::parse(init.output).as_object().at("unsyncDocuments").as_string();
  test::MakeDir(nestedUnsync);
  Lay(nestedUnsync, {"set-aside.txt"});

  // The root as given, with "." and ".." and doubled separators, is the same folder.
  ExpectRun(Cli("scan -v " + Quoted(root + "/./docs/..//")), 0,
            {"skipped: " + root + "/link (symbolic link", "skipped: " + root + "/pipe (named pipe",
             "skipped: " + root + "/Makefile (ignored: office temporary", "skipped: " + root + "/nest/.kestrove.cache (",
             "skipped: " + nestedUnsync + " (unsynchronised-documents folder"});
  ExpectRun(Cli("info " + Quoted(nestedUnsync + "/set-aside.txt")), 1);  // never recorded

  int status = 0;
  test::RunCommand("rm -r " + Quoted(root + "/docs"), &status);
  ExpectRun(Cli("scan " + Quoted(root)), 0, {"4 records removed"});  // docs, deep, x.txt, y.txt
}

// A lock that another process holds: the notice, then either the end of --timeout or, once
// the lock is released, a scan that carries on and leaves sound databases.
TEST(CliSafetyTest, AWaitOnALockedDatabaseIsReportedEndsAtTheTimeoutOrCarriesOnWhenReleased) {
  test::TempDir dir;
  Lay(dir.path(), {"a.txt"});
  ASSERT_EQ(0, Cli("scan " + Quoted(dir.path())).status);
  Lay(dir.path(), {"b.txt"});

  sqlite3* other = nullptr;
  sqlite3_open((dir.path() + "/.kestrove.cache/cache.db").c_str(), &other);
  ASSERT_EQ(SQLITE_OK, sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr));
  ExpectRun(Cli("--timeout 2 scan " + Quoted(dir.path())), 1,
            {"waiting for cache.db: locked by another process", "gave up waiting for cache.db"});
  std::thread release([other] {
    std::this_thread::sleep_for(std::chrono::milliseconds(2500));
    sqlite3_close(other);  // rolls the open transaction back
  });
  const CliRun scan = Cli("scan " + Quoted(dir.path()));
  release.join();
  ExpectRun(scan, 0, {"waiting for cache.db: locked by another process", "1 new item recorded"});
  ExpectRun(Cli("check " + Quoted(dir.path())), 0);
}

}  // namespace
