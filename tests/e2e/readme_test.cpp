// What the README and examples/ show is what happens: the walk-through runs as written, every
// project they contain loads and validates, and the example build runs on Mono.
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "TestSupport.h"

namespace wren {
namespace {

const std::string kSource = std::string(SOURCE_DIR) + "/";

/// The fenced blocks of a language in the markdown text, between the heading and the next one.
std::vector<std::string> CodeBlocks(const std::string& markdown, const std::string& language,
                                    const std::string& heading = "") {
  std::string text = markdown;
  if (!heading.empty()) {
    const size_t start = text.find("\n" + heading + "\n");
    if (start == std::string::npos) return {};
    const size_t end = text.find("\n## ", start + heading.size() + 2);
    text = text.substr(start, end == std::string::npos ? std::string::npos : end - start);
  }
  std::vector<std::string> blocks;
  const std::string open = "```" + language + "\n";
  for (size_t at = text.find(open); at != std::string::npos; at = text.find(open, at)) {
    const size_t body = at + open.size();
    const size_t close = text.find("\n```", body);
    if (close == std::string::npos) break;
    blocks.push_back(text.substr(body, close + 1 - body));
    at = close + 4;
  }
  return blocks;
}

/// marrowby, with HOME and the config folder in the temporary dir and no registry from outside.
std::vector<std::string> Isolated(const test::TempDir& home, std::vector<std::string> command) {
  const std::string bin = std::filesystem::path(MARROWBY_EXE).parent_path().string();
  const char* path = std::getenv("PATH");
  command.insert(command.begin(), {"/usr/bin/env", "-u", "MARROWBY_REGISTRY",
                                   "HOME=" + home.path(), "XDG_CONFIG_HOME=" + home / ".config",
                                   "PATH=" + bin + ":" + (path ? path : "/usr/bin:/bin")});
  return command;
}

TEST(Readme, WalkThroughBuildsTheSignedLibraryAndRunsItsTests) {
  const std::vector<std::string> blocks =
      CodeBlocks(test::ReadFile(kSource + "README.md"), "sh", "## A first build");
  ASSERT_EQ(blocks.size(), 3u) << "the walk-through's command blocks";
  std::string script;
  for (const std::string& block : blocks) script += block;
  test::TempDir home;
  std::string out;
  ASSERT_EQ(test::RunProgram(Isolated(home, {"bash", "-euo", "pipefail", "-c", script}), &out,
                             kSource),
            0)
      << out;
  EXPECT_NE(out.find("Build succeeded: 6 step(s)"), std::string::npos) << out;
  EXPECT_NE(out.find("Tests run: 3, Errors: 0, Failures: 0"), std::string::npos) << out;
  EXPECT_TRUE(test::Exists(home / "greeter/bin/TestResult.xml"));
  EXPECT_NE(test::ReadFile(home / "greeter/src/Greeter/AssemblyInfo.cs")
                .find("AssemblyVersion(\"1.2.0.0\")"),
            std::string::npos);
  // The walk-through worked on a copy.
  EXPECT_NE(test::ReadFile(kSource + "examples/hello/src/Greeter/AssemblyInfo.cs")
                .find("AssemblyVersion(\"0.0.0.0\")"),
            std::string::npos);
}

TEST(Readme, EveryProjectShownLoadsAndValidatesAndTheExampleRuns) {
  test::TempDir home;
  std::string out;
  ASSERT_EQ(test::RunProgram(Isolated(home, {MARROWBY_EXE, "setup-mono"}), &out), 0) << out;

  std::vector<std::string> projects;
  int n = 0;
  for (const std::string& block : CodeBlocks(test::ReadFile(kSource + "README.md"), "xml")) {
    if (block.find("<MarrowbyProject") == std::string::npos) continue;
    projects.push_back(home / ("readme" + std::to_string(++n) + ".mbproj"));
    test::WriteFile(projects.back(), block);
  }
  EXPECT_GE(projects.size(), 1u) << "the README shows a project";
  for (const auto& entry : std::filesystem::recursive_directory_iterator(kSource + "examples"))
    if (entry.path().extension() == ".mbproj") projects.push_back(entry.path().string());
  for (const std::string& project : projects) {
    std::string err;
    EXPECT_EQ(test::RunProgram(Isolated(home, {MARROWBY_EXE, "validate", project}), &out, "",
                               &err),
              0)
        << project << "\n" << out << err;
  }

  // The example runs as examples/hello/README.md says, on a copy.
  std::filesystem::copy(kSource + "examples/hello", home / "hello",
                        std::filesystem::copy_options::recursive);
  ASSERT_EQ(test::RunProgram(Isolated(home, {MARROWBY_EXE, "run", home / "hello/hello.mbproj",
                                             "--var", "VERSION=2.0.0.0"}),
                             &out),
            0)
      << out;
  EXPECT_NE(out.find("Build succeeded"), std::string::npos) << out;
  EXPECT_TRUE(test::Exists(home / "hello/bin/Greeter.Tests.dll"));
}

}  // namespace
}  // namespace wren
