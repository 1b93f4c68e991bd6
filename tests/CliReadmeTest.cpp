// The README's client example, compiled with the README's own command line against this
// build tree and run, so the documentation cannot drift from the headers.
#include <string>

#include "TestSupport.h"

namespace {

// The example is built with the host's compiler and run by the shell.
using CliReadmeTest = test::PosixShellTest;

std::string Folder(const std::string& path) { return path.substr(0, path.rfind('/')); }

// The text of the first fenced block of the given language after marker.
std::string FencedBlock(const std::string& text, const std::string& marker, const std::string& language) {
  const size_t at = text.find(marker);
  if (at == std::string::npos) return std::string();
  const std::string fence = "```" + language + "\n";
  const size_t begin = text.find(fence, at);
  if (begin == std::string::npos) return std::string();
  const size_t end = text.find("```", begin + fence.size());
  return text.substr(begin + fence.size(), end - begin - fence.size());
}

void ReplaceAll(std::string& text, const std::string& from, const std::string& to) {
  for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
    text.replace(at, from.size(), to);
}

TEST_F(CliReadmeTest, TheClientExampleBuildsAsWrittenAndRuns) {
  const std::string source = Folder(Folder(__FILE__));
  const std::string build = Folder(Folder(DOCMGR_MODULE_PATH));
  const std::string readme = test::ReadFile(source + "/README.md");
  const std::string client = FencedBlock(readme, "A complete client:", "cpp");
  const std::string commands = FencedBlock(readme, "Build and run it", "sh");
  ASSERT_FALSE(client.empty());
  std::string compile = commands.substr(0, commands.find('\n'));
  ASSERT_EQ(0u, compile.find("g++ ")) << commands;

  test::TempDir dir;
  test::WriteFile(dir.path() + "/client.cpp", client);
  ReplaceAll(compile, " client.cpp", " " + dir.path() + "/client.cpp");
  ReplaceAll(compile, "-o client", "-o " + dir.path() + "/client");
  ReplaceAll(compile, " build/", " " + build + "/");
  // The library archive of a sanitizer build is instrumented: the client needs the runtime.
#if defined(__SANITIZE_ADDRESS__)
  compile += " -fsanitize=address,undefined";
#elif defined(__SANITIZE_THREAD__)
  compile += " -fsanitize=thread";
#endif
  int status = 0;
  const std::string compiled = test::RunCommand("cd '" + source + "' && " + compile, &status);
  ASSERT_EQ(0, status) << compile << "\n" << compiled;

  test::MakeDir(dir.path() + "/root");
  const std::string ran = test::RunCommand(dir.path() + "/client " + DOCMGR_MODULE_PATH + " " + dir.path() + "/root", &status);
  EXPECT_EQ(0, status) << ran;
  EXPECT_EQ("Projects\\plan.docx\n", ran);
}

}  // namespace
