// docmgr-cli on trees a person really has: files it must not touch, folders it may not
// read, files it cannot tag, data it may only read, databases another process holds.
#include <grp.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <thread>

#include "TestSupport.h"
#include "dataapi/ncJson.h"

namespace {

using test::Cli;
using test::CliRun;

const uid_t kNobody = 65534;

// docmgr-cli run by an unprivileged user, so that permissions bind as they do for a person
// (the tests run as root, whom no mode bits stop).
CliRun CliAsUser(const std::string& arguments) {
  if (::geteuid() != 0) return Cli(arguments);
  int out[2];
  if (::pipe(out) != 0) return CliRun();
  const pid_t child = ::fork();
  if (child == 0) {
    ::dup2(out[1], STDOUT_FILENO);
    ::dup2(out[1], STDERR_FILENO);
    ::close(out[0]);
    if (::setgroups(0, nullptr) != 0 || ::setgid(kNobody) != 0 || ::setuid(kNobody) != 0) ::_exit(126);
    const std::string command = std::string(DOCMGR_CLI_PATH) + " --quiet " + arguments;
    ::execl("/bin/sh", "sh", "-c", command.c_str(), static_cast<char*>(nullptr));
    ::_exit(127);
  }
  ::close(out[1]);
  CliRun run;
  char buffer[4096];
  for (ssize_t got; (got = ::read(out[0], buffer, sizeof buffer)) > 0;) run.output.append(buffer, got);
  ::close(out[0]);
  int status = 0;
  ::waitpid(child, &status, 0);
  run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return run;
}

// Hands a tree to the unprivileged user (the temporary folder itself included).
void GiveToUser(const std::string& path) {
  if (::geteuid() != 0) return;
  int status = 0;
  test::RunCommand("chown -R 65534:65534 '" + path + "'", &status);
  ASSERT_EQ(0, status);
}

std::string Quoted(const std::string& path) { return "'" + path + "'"; }

bool Has(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

JSON::Value ParseJson(const CliRun& run) { return JSON::Value::parse(run.output.substr(run.output.find('{'))); }

size_t ListedCount(const std::string& root, const std::string& folder) {
  const CliRun ls = Cli("--json ls " + Quoted(root) + " " + folder);
  return ls.status == 0 ? JSON::Value::parse(ls.output).size() : 0;
}

std::string StateOf(const std::string& path) {
  const CliRun info = Cli("--json info " + Quoted(path));
  return info.status == 0 ? std::to_string(ParseJson(info).as_object().at("state").as_integer()) : "none";
}

TEST(CliSafetyTest, DemoBuildsOnlyInANewOrEmptyFolder) {
  test::TempDir dir;
  test::WriteFile(dir.path() + "/readme.txt", "keep");
  test::MakeDir(dir.path() + "/mystuff");
  const CliRun demo = Cli("demo " + Quoted(dir.path()));
  EXPECT_EQ(1, demo.status);
  EXPECT_TRUE(Has(demo.output, "not empty")) << demo.output;
  EXPECT_EQ("keep", test::ReadFile(dir.path() + "/readme.txt"));
  EXPECT_FALSE(test::Exists(dir.path() + "/.kestrove.cache"));
  EXPECT_FALSE(test::Exists(dir.path() + "/Projects"));

  test::MakeDir(dir.path() + "/empty");
  EXPECT_EQ(0, Cli("demo " + Quoted(dir.path() + "/empty")).status);
}

TEST(CliSafetyTest, ReadOnlyCommandsCreateNothingAndReadDataTheyCannotWrite) {
  test::TempDir dir;
  const std::string missing = dir.path() + "/mistyped";
  test::MakeDir(dir.path() + "/plain");
  for (const std::string& folder : {missing, dir.path() + "/plain"}) {
    for (const char* command : {"ls R", "info R/x.txt", "search R x", "unsync R", "log R", "resume R",
                                       "check R"}) {
      std::string line(command);
      line.replace(line.find('R'), 1, Quoted(folder));
      const CliRun run = Cli(line);
      EXPECT_EQ(1, run.status) << line << "\n" << run.output;
      EXPECT_FALSE(run.output.empty()) << line;
    }
  }
  EXPECT_FALSE(test::Exists(missing));
  EXPECT_FALSE(test::Exists(dir.path() + "/plain/.kestrove.cache"));

  // Another user's sync root: readable, not writable.
  const std::string root = dir.path() + "/root";
  test::MakeDir(root);
  test::WriteFile(root + "/a.txt", "a");
  ASSERT_EQ(0, Cli("scan " + Quoted(root)).status);
  ::chmod(dir.path().c_str(), 0755);
  for (const char* command : {"ls R", "info R/a.txt", "search R a", "unsync R", "log R", "resume R", "check R"}) {
    std::string line(command);
    line.replace(line.find('R'), 1, Quoted(root));
    const CliRun run = CliAsUser(line);
    EXPECT_EQ(0, run.status) << line << "\n" << run.output;
  }
  EXPECT_FALSE(test::Exists(root + "/.kestrove.cache/cache.db-shm"));

  // check goes on past a database it cannot read.
  if (::geteuid() != 0) return;
  ::chmod((root + "/.kestrove.cache/msg.db").c_str(), 0600);
  const CliRun check = CliAsUser("check " + Quoted(root));
  EXPECT_EQ(1, check.status);
  EXPECT_TRUE(Has(check.output, "msg.db       unreadable: Permission denied")) << check.output;
  EXPECT_TRUE(Has(check.output, "nonius.db    ok")) << check.output;
}

TEST(CliSafetyTest, AnUnreadableFolderKeepsItsRecordsAndTheFirstScanWaitsForTheWholeTree) {
  test::TempDir dir;
  const std::string root = dir.path();
  test::MakeDir(root + "/open");
  test::WriteFile(root + "/open/a.txt", "a");
  test::MakeDir(root + "/closed");
  test::MakeDir(root + "/closed/inner");
  test::WriteFile(root + "/closed/inner/b.txt", "b");
  GiveToUser(root);
  ::chmod((root + "/closed/inner").c_str(), 0);

  // A first scan that could not read everything does not count as the first scan.
  CliRun scan = CliAsUser("--json scan " + Quoted(root));
  EXPECT_EQ(1, scan.status) << scan.output;
  EXPECT_TRUE(Has(scan.output, "cannot read " + root + "/closed/inner")) << scan.output;
  const JSON::Value report = ParseJson(scan);
  ASSERT_EQ(1u, report.as_object().at("unreadable").size()) << scan.output;
  EXPECT_EQ(root + "/closed/inner", report.as_object().at("unreadable")[0].as_object().at("path").as_string());

  ::chmod((root + "/closed/inner").c_str(), 0755);
  ASSERT_EQ(0, CliAsUser("scan " + Quoted(root)).status);
  EXPECT_EQ("0", StateOf(root + "/closed/inner/b.txt")) << "recorded as synchronised, as in a first scan";

  // Later: a folder that cannot be read is not an empty one.
  ::chmod((root + "/closed").c_str(), 0);
  scan = CliAsUser("scan -v " + Quoted(root));
  EXPECT_EQ(1, scan.status) << scan.output;
  EXPECT_TRUE(Has(scan.output, "0 records removed")) << scan.output;
  EXPECT_TRUE(Has(scan.output, "unreadable: " + root + "/closed (Permission denied")) << scan.output;
  ::chmod((root + "/closed").c_str(), 0755);
  EXPECT_EQ(1u, ListedCount(root, "closed"));
  EXPECT_EQ(1u, ListedCount(root, "closed/inner"));
  EXPECT_EQ("0", StateOf(root + "/closed/inner/b.txt"));
}

TEST(CliSafetyTest, AFileThatCannotBeTaggedIsReportedAndTheScanGoesOn) {
  test::TempDir dir;
  const std::string root = dir.path();
  if (!test::SupportsStreams(root)) GTEST_SKIP() << "no user extended attributes on " << root;
  for (const char* name : {"a.txt", "b.txt", "c.txt"}) test::WriteFile(root + "/" + name, name);
  int status = 0;
  test::RunCommand("chattr +i " + Quoted(root + "/b.txt"), &status);
  if (status != 0) GTEST_SKIP() << "chattr +i is not available on this file system";

  const CliRun scan = Cli("--json scan " + Quoted(root));
  test::RunCommand("chattr -i " + Quoted(root + "/b.txt"), &status);
  EXPECT_EQ(1, scan.status) << scan.output;
  EXPECT_TRUE(Has(scan.output, "could not tag " + root + "/b.txt: Permission denied")) << scan.output;
  const JSON::Value parsed = ParseJson(scan);
  const auto& report = parsed.as_object();
  EXPECT_EQ(3, report.at("recorded").as_integer());
  EXPECT_EQ(2, report.at("tagged").as_integer());
  ASSERT_EQ(1u, report.at("failed").size());
  EXPECT_EQ(5, report.at("failed")[0].as_object().at("code").as_integer());

  const CliRun info = Cli("--json info " + Quoted(root + "/c.txt"));
  EXPECT_TRUE(Has(info.output, "\"tags\": {\"docId\"")) << "the file after the failure is tagged\n" << info.output;
  // Every record was written, so the next scan is no first scan and finds nothing new.
  const CliRun again = Cli("--json scan " + Quoted(root));
  EXPECT_EQ(0, again.status) << again.output;
  EXPECT_EQ(0, ParseJson(again).as_object().at("unsynchronised").as_integer());
  EXPECT_EQ(3, ParseJson(again).as_object().at("tagged").as_integer());
}

TEST(CliSafetyTest, ScanNamesWhatItSkipsLeavesNestedStateAloneAndCountsWholeSubtrees) {
  test::TempDir dir;
  const std::string root = dir.path();
  test::MakeDir(root + "/docs");
  test::MakeDir(root + "/docs/deep");
  test::WriteFile(root + "/docs/deep/x.txt", "x");
  test::WriteFile(root + "/docs/y.txt", "y");
  test::WriteFile(root + "/Makefile", "all:");
  ASSERT_EQ(0, ::symlink("docs", (root + "/link").c_str()));
  ASSERT_EQ(0, ::mkfifo((root + "/pipe").c_str(), 0644));
  test::MakeDir(root + "/nest");
  test::WriteFile(root + "/nest/n.txt", "n");
  const CliRun init = Cli("--json init " + Quoted(root + "/nest"));
  ASSERT_EQ(0, init.status) << init.output;
  const std::string nestedUnsync = ParseJson(init).as_object().at("unsyncDocuments").as_string();
  test::MakeDir(nestedUnsync);
  test::WriteFile(nestedUnsync + "/set-aside.txt", "s");

  const CliRun dry = Cli("scan --dry-run -v " + Quoted(root + "/./docs/..//"));
  ASSERT_EQ(0, dry.status) << dry.output;
  EXPECT_TRUE(Has(dry.output, "Would record 6 items")) << dry.output;
  EXPECT_FALSE(test::Exists(root + "/.kestrove.cache")) << "a dry run writes nothing";

  const CliRun scan = Cli("scan -v " + Quoted(root));
  ASSERT_EQ(0, scan.status) << scan.output;
  for (const std::string& line :
       {"skipped: " + root + "/link (symbolic link", "skipped: " + root + "/pipe (named pipe",
        "skipped: " + root + "/Makefile (ignored: office temporary", "skipped: " + root + "/nest/.kestrove.cache (",
        "skipped: " + nestedUnsync + " (unsynchronised-documents folder"})
    EXPECT_TRUE(Has(scan.output, line)) << line << "\n" << scan.output;
  EXPECT_EQ(3u, ListedCount(root, "nest") + ListedCount(root, "docs")) << "n.txt, deep, y.txt";
  EXPECT_EQ("none", StateOf(nestedUnsync + "/set-aside.txt"));

  // Paths on the command line: ".", ".." and doubled separators, or relative to the folder.
  EXPECT_EQ(0, Cli("info " + Quoted(root + "/docs/./deep/..//y.txt")).status);
  int status = 0;
  const std::string relative =
      test::RunCommand("cd " + Quoted(root + "/docs") + " && " + DOCMGR_CLI_PATH + " info y.txt", &status);
  EXPECT_EQ(0, status) << relative;

  test::RunCommand("rm -r " + Quoted(root + "/docs"), &status);
  const CliRun prune = Cli("scan " + Quoted(root));
  EXPECT_TRUE(Has(prune.output, "4 records removed")) << "docs, deep, x.txt, y.txt\n" << prune.output;
}

TEST(CliSafetyTest, AWaitOnALockedDatabaseIsReportedAndEndsAtTheTimeout) {
  test::TempDir dir;
  test::WriteFile(dir.path() + "/a.txt", "a");
  ASSERT_EQ(0, Cli("scan " + Quoted(dir.path())).status);
  test::WriteFile(dir.path() + "/b.txt", "b");

  sqlite3* other = nullptr;
  ASSERT_EQ(SQLITE_OK, sqlite3_open((dir.path() + "/.kestrove.cache/cache.db").c_str(), &other));
  ASSERT_EQ(SQLITE_OK, sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr));
  const CliRun scan = Cli("--timeout 2 scan " + Quoted(dir.path()));
  sqlite3_exec(other, "ROLLBACK", nullptr, nullptr, nullptr);
  sqlite3_close(other);
  EXPECT_EQ(1, scan.status) << scan.output;
  EXPECT_TRUE(Has(scan.output, "waiting for cache.db: locked by another process")) << scan.output;
  EXPECT_TRUE(Has(scan.output, "gave up waiting for cache.db")) << scan.output;

  // A lock that goes away: the notice, then the scan carries on and leaves sound databases.
  ASSERT_EQ(SQLITE_OK, sqlite3_open((dir.path() + "/.kestrove.cache/cache.db").c_str(), &other));
  ASSERT_EQ(SQLITE_OK, sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr));
  std::thread release([other] {
    std::this_thread::sleep_for(std::chrono::milliseconds(2500));
    sqlite3_exec(other, "ROLLBACK", nullptr, nullptr, nullptr);
  });
  const CliRun after = Cli("scan " + Quoted(dir.path()));
  release.join();
  sqlite3_close(other);
  EXPECT_EQ(0, after.status) << after.output;
  EXPECT_TRUE(Has(after.output, "waiting for cache.db: locked by another process")) << after.output;
  EXPECT_TRUE(Has(after.output, "1 new item recorded")) << after.output;
  EXPECT_EQ(0, Cli("check " + Quoted(dir.path())).status);
}

}  // namespace
