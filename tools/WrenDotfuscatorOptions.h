// The user-wide Dotfuscator options: where the console Dotfuscator is installed.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tools/WrenToolOptions.h"

namespace wren {

/// Holds DotfuscatorLocation, the full path of the console Dotfuscator. Defaults to a registered
/// dotfuscatorCLI.exe (version 5), else dotfuscator.exe (the console program from version 6).
class TWrenDotfuscatorOptions : public TWrenToolOptions {
 public:
  TWrenDotfuscatorOptions() : TWrenToolOptions({"dotfuscatorCLI.exe", "dotfuscator.exe"}) {}
  static constexpr const char* kOptionKey = "Dotfuscator";
  static constexpr const char* kOptionsName = "Dotfuscator";
  static constexpr const char* kOptionsCategory = ".Net Tools";
  static constexpr const char* kLocationValue = "DotfuscatorLocation";

  static std::string StaticClassName() { return "TWrenDotfuscatorOptions"; }
  std::string GetOptionKey() const override { return kOptionKey; }
  std::string GetOptionsName() const override { return kOptionsName; }
  std::string GetOptionsCategory() const override { return kOptionsCategory; }

 protected:
  std::string LocationValueName() const override { return kLocationValue; }
};

/// The Dotfuscator options the host's options services hold; nullptr when none is registered.
std::shared_ptr<IWrenToolOptions> DotfuscatorOptions();

}  // namespace wren
