// docmgr-cli's journal commands, run as a support engineer runs them: through the module file.
#include <gtest/gtest.h>
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
  run.out = test::RunCommand(std::string(DOCMGR_CLI_PATH) + " --quiet " + arguments, &run.status);
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
  // The demo's scans log first; its five journal entries are the newest.
  const int64_t total = page.as_object().at("logs")[0].as_object().at("total").as_integer();
  EXPECT_GE(total, 5);
  ASSERT_EQ(2u, entries.size());
  EXPECT_EQ(total - 2, entries[0].as_object().at("id").as_integer());
  EXPECT_EQ("项目\\会议纪要.docx", entries[0].as_object().at("relPath").as_string());

  EXPECT_EQ(2, Cli("log '" + root + "' --type x 2>/dev/null").status);
  EXPECT_EQ(1, Cli("log '" + root + "' --type 0 --page 9 2>/dev/null").status);
  EXPECT_EQ(1, Cli("resume '" + dir.path() + "/missing' 2>/dev/null").status);
}

}  // namespace
