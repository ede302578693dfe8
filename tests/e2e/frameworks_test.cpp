// End to end: the marrowby executable builds a framework from the local Mono, then detects it
// through the registry hive it wrote.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "TestSupport.h"

namespace wren {
namespace {

using test::TempDir;

TEST(FrameworksE2E, SetupMonoThenListTheFrameworkItMade) {
  TempDir tmp;
  const std::string dir = tmp / "mono";
  const std::string options = tmp / "options.xml";
  std::string output;
  ASSERT_EQ(test::RunProgram({MARROWBY_EXE, "setup-mono", "--dir", dir}, &output), 0) << output;
  ASSERT_TRUE(test::Exists(dir + "/registry.reg")) << output;

  ASSERT_EQ(test::RunProgram({MARROWBY_EXE, "--registry", dir + "/registry.reg", "--options",
                              options, "frameworks", "--json"},
                             &output),
            0)
      << output;
  const nlohmann::json listing = nlohmann::json::parse(output, nullptr, false);
  ASSERT_FALSE(listing.is_discarded()) << output;
  ASSERT_EQ(listing["frameworks"].size(), 1u) << output;
  const nlohmann::json& framework = listing["frameworks"][0];
  EXPECT_EQ(framework["frameworkVersion"], "v4.0.30319");
  EXPECT_EQ(framework["sdkVersion"], "v4.0");
  EXPECT_EQ(framework["frameworkLocation"], dir + "/framework/v4.0.30319");
  const std::string sdk = framework["sdkLocation"];
  EXPECT_EQ(sdk, dir + "/sdk/v4.0/Bin/");
  EXPECT_TRUE(test::Exists(sdk + "sn.exe"));
  EXPECT_TRUE(listing.contains("defaultSdkVersion")) << output;

  // The human-readable form names the same framework.
  ASSERT_EQ(test::RunProgram({MARROWBY_EXE, "frameworks", "--registry", dir + "/registry.reg",
                              "--options", options},
                             &output),
            0)
      << output;
  EXPECT_NE(output.find("v4.0.30319 (SDK v4.0)"), std::string::npos) << output;
  EXPECT_NE(output.find("Default SDK version:"), std::string::npos) << output;
}

}  // namespace
}  // namespace wren
