// Test helpers of the .NET environment: registry fixtures over temporary framework trees, a clean
// detection singleton and options per test, scoped environment variables.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <memory>
#include <optional>
#include <string>

#include "TestSupport.h"
#include "WrenRegistry.h"
#include "dotnet/WrenDotNetFrameWorkAPI.h"
#include "dotnet/WrenDotNetOptionsImpl.h"
#include "runtime/WrenOptionsStore.h"
#include "runtime/WrenRegistryHive.h"

namespace wren::test {

/// Loads tests/fixtures/dotnet/<name> as the host's registry, with "@ROOT@" standing for root
/// without its trailing '/' (fixtures write the delimiter), escaped as .reg strings need.
inline void UseRegistryFixture(const std::string& name, std::string root = "") {
  if (root.size() > 1 && root.back() == '/') root.pop_back();
  std::string text = ReadFile(std::string(SOURCE_DIR) + "/tests/fixtures/dotnet/" + name);
  std::string escaped;
  for (char c : root)
    escaped += (c == '\\' || c == '"') ? std::string("\\") + c : std::string(1, c);
  for (size_t at = text.find("@ROOT@"); at != std::string::npos; at = text.find("@ROOT@", at))
    text.replace(at, 6, escaped);
  std::string error;
  std::shared_ptr<IWrenRegistry> registry = ParseRegistryText(text, name, error);
  ASSERT_NE(registry, nullptr) << error;
  SetWrenRegistry(registry);
}

/// Gives each test a fresh detection singleton and no registered options, and puts the empty
/// registry back afterwards.
class TDotNetEnvironment {
 public:
  TDotNetEnvironment() { Reset(); }
  ~TDotNetEnvironment() {
    SetWrenRegistry(nullptr);
    Reset();
  }
  TDotNetEnvironment(const TDotNetEnvironment&) = delete;
  TDotNetEnvironment& operator=(const TDotNetEnvironment&) = delete;

  /// Registers the .NET options through the host's options services and sets their default.
  std::shared_ptr<TWrenDotNetOptions> RegisterOptions(const std::string& defaultSDKVersion) {
    WrenOptionsServices().RegisterOptions(OptionsClassOf<TWrenDotNetOptions>(), "DOTNETOPT");
    auto options = std::dynamic_pointer_cast<TWrenDotNetOptions>(DotNetOptions());
    EXPECT_NE(options, nullptr);
    if (options) options->SetDefaultSDKVersion(defaultSDKVersion);
    return options;
  }

 private:
  static void Reset() {
    ReleaseWrenDotNetInfo();
    ClearRegisteredOptions();
  }
};

/// Sets an environment variable for the life of the object.
class TScopedEnv {
 public:
  TScopedEnv(const std::string& name, const std::optional<std::string>& value) : name_(name) {
    if (const char* old = std::getenv(name.c_str())) old_ = old;
    if (value)
      ::setenv(name.c_str(), value->c_str(), 1);
    else
      ::unsetenv(name.c_str());
  }
  ~TScopedEnv() {
    if (old_)
      ::setenv(name_.c_str(), old_->c_str(), 1);
    else
      ::unsetenv(name_.c_str());
  }
  TScopedEnv(const TScopedEnv&) = delete;
  TScopedEnv& operator=(const TScopedEnv&) = delete;

 private:
  std::string name_;
  std::optional<std::string> old_;
};

}  // namespace wren::test
