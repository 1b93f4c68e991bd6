// docmgr-cli's journal commands, run as a support engineer runs them: through the module file.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <string>

#include "TestSupport.h"
#include "dataapi/ncJson.h"

namespace {

struct CliRun {
  int status = -1;
  std::string out;
};

CliRun Cli(const std::string& arguments) {
  CliRun run;
  FILE* pipe = ::popen((std::string(DOCMGR_CLI_PATH) + " --quiet " + arguments).c_str(), "r");
  if (!pipe) return run;
  char buffer[4096];
  while (size_t got = std::fread(buffer, 1, sizeof buffer, pipe)) run.out.append(buffer, got);
  const int status = ::pclose(pipe);
  run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return run;
}

TEST(JournalCliTest, DemoResumesAnUploadAndTheLogReadsBack) {
  test::TempDir dir;
  const std::string root = dir.path() + "/demo";
  const CliRun demo = Cli("demo '" + root + "'");
  ASSERT_EQ(0, demo.status) << demo.out;
  for (const char* step : {"0 + open range", "blocks [\"1-3\"]", "block 2 sent: [\"3\"]", "no interrupted transfers"})
    EXPECT_NE(std::string::npos, demo.out.find(step)) << step << "\n" << demo.out;

  const CliRun log = Cli("--json log '" + root + "' --type 0 --size 2 --page 2");
  ASSERT_EQ(0, log.status) << log.out;
  const JSON::Value page = JSON::Value::parse(log.out);
  const JSON::Value& entries = page.as_object().at("logs")[0].as_object().at("entries");
  EXPECT_EQ(5, page.as_object().at("logs")[0].as_object().at("total").as_integer());
  ASSERT_EQ(2u, entries.size());
  EXPECT_EQ(3, entries[0].as_object().at("id").as_integer());
  EXPECT_EQ("项目\\会议纪要.docx", entries[0].as_object().at("relPath").as_string());

  EXPECT_EQ(2, Cli("log '" + root + "' --type x 2>/dev/null").status);
  EXPECT_EQ(1, Cli("log '" + root + "' --type 0 --page 9 2>/dev/null").status);
  EXPECT_EQ(1, Cli("resume '" + dir.path() + "/missing' 2>/dev/null").status);
}

}  // namespace
