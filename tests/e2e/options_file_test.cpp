// The user's options file through the marrowby executable: a build leaves it as it was.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "CliMachine.h"
#include "TestSupport.h"

namespace wren {
namespace {

/// Inode, modification time and bytes: a rewrite with the same bytes still shows.
std::string FileState(const std::string& path) {
  struct stat st {};
  EXPECT_EQ(::stat(path.c_str(), &st), 0) << path;
  return std::to_string(st.st_ino) + " " + std::to_string(st.st_mtim.tv_sec) + "." +
         std::to_string(st.st_mtim.tv_nsec) + "\n" + test::ReadFile(path);
}

TEST(OptionsFile, BuildsLeaveItAloneAndOnlyChangedSettingsRewriteIt) {
  CliMachine m;
  const std::string options = m.dir / "options.xml";
  // A layout no save writes, so that a rewrite shows in the bytes as well.
  test::WriteFile(options,
                  "<MarrowbyOptions version=\"1\">\n\t<Options key=\"NUnit\">"
                  "<Value name=\"NUnitLocation\">/opt/nunit</Value></Options>\n"
                  "</MarrowbyOptions>\n");
  m.WriteProject("p.mbproj", SnStep("-k key.snk"));
  const std::string before = FileState(options);

  std::string out, err;
  ASSERT_EQ(m.Run({"run", m.dir / "p.mbproj"}, &out, &err), 0) << out << err;
  EXPECT_EQ(FileState(options), before) << "a build changed no setting";
  ASSERT_EQ(m.Run({"options", "set", "NUnit", "NUnitLocation", "/opt/nunit"}, &out, &err), 0)
      << err;
  EXPECT_EQ(FileState(options), before) << "the value it already had";

  ASSERT_EQ(m.Run({"options", "set", "NUnit", "NUnitLocation", "/usr/bin/nunit"}, &out, &err), 0)
      << err;
  const std::string after = FileState(options);
  EXPECT_NE(after, before);
  EXPECT_NE(after.find("/usr/bin/nunit"), std::string::npos) << after;
  ASSERT_EQ(m.Run({"run", m.dir / "p.mbproj"}, &out, &err), 0) << out << err;
  EXPECT_EQ(FileState(options), after);
}

}  // namespace
}  // namespace wren
