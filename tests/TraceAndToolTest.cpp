// Tracing on and off, and the tool driving the module from outside the process.
#include <gtest/gtest.h>

#include "TestSupport.h"
#include "base/Trace.h"
#include "docmgr/ncDocUtils.h"

namespace {

TEST(TraceTest, LinesNameTheModuleSourceMethodAndArguments) {
  test::TempDir dir;
  const std::string file = dir.path() + "/trace.log";
  base::Trace::configure(file);
  ncDocUtils::ReplaceStr(u"a'b", u"'", u"''", true);
  base::Trace::configure("");
  ncDocUtils::ReplaceStr(u"not traced", u"x", u"y", true);
  const std::string trace = test::ReadFile(file);
  EXPECT_NE(std::string::npos, trace.find(" docmgr src/docmgr/ncDocUtils.cpp:")) << trace;
  EXPECT_NE(std::string::npos,
            trace.find(" ncDocUtils::ReplaceStr srcStr: a'b, oldSubStr: ', newSubStr: '', replaceAll: 1\n"))
      << trace;
  EXPECT_EQ(std::string::npos, trace.find("not traced"));
  EXPECT_FALSE(base::Trace::isOn());
  EXPECT_EQ("ncPathMgr::ncPathMgr", base::Trace::qualifiedName("ncPathMgr::ncPathMgr()"));
  EXPECT_EQ("ns::Foo::bar", base::Trace::qualifiedName("std::map<int, int> ns::Foo::bar(const int&) const"));
}

TEST(ToolTest, InitShowsTheDataDirectoryThroughTheModule) {
  test::TempDir dir;
  int status = 0;
  const std::string output = test::RunCommand(std::string(DOCMGR_CLI_PATH) + " init " + dir.path(), &status);
  EXPECT_EQ(0, status) << output;
  EXPECT_NE(std::string::npos, output.find(dir.path() + "/.kestrove.cache")) << output;
  EXPECT_TRUE(test::Exists(dir.path() + "/.kestrove.cache"));

  const std::string json = test::RunCommand(std::string(DOCMGR_CLI_PATH) + " --json init " + dir.path(), &status);
  EXPECT_EQ(0, status);
  EXPECT_EQ(0u, json.find("{\"root\": \"" + dir.path() + "\""));

  test::RunCommand(std::string(DOCMGR_CLI_PATH) + " nonsense", &status);
  EXPECT_EQ(2, status);
  const std::string missing = test::RunCommand("KESTROVE_MODULE=/nonexistent.so " + std::string(DOCMGR_CLI_PATH) + " init /tmp", &status);
  EXPECT_EQ(1, status);
  EXPECT_NE(std::string::npos, missing.find("cannot load the module")) << missing;
}

TEST(ToolTest, CheckReportsDatabasesThatAreNotSound) {
  test::TempDir dir;
  int status = 0;
  test::RunCommand(std::string(DOCMGR_CLI_PATH) + " upgrade " + dir.path(), &status);  // writes config.db
  ASSERT_EQ(0, status);
  std::string output = test::RunCommand(std::string(DOCMGR_CLI_PATH) + " check " + dir.path(), &status);
  EXPECT_EQ(0, status) << output;
  EXPECT_NE(std::string::npos, output.find("config.db    ok")) << output;
  test::WriteFile(dir.path() + "/.kestrove.cache/junk.db", std::string(4096, 'x'));
  output = test::RunCommand(std::string(DOCMGR_CLI_PATH) + " check " + dir.path(), &status);
  EXPECT_EQ(1, status) << output;
  EXPECT_NE(std::string::npos, output.find("junk.db      Execute sql failed")) << output;
}

}  // namespace
