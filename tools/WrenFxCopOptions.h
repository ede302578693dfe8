// The user-wide FxCop options: where FxCopCmd.exe (the console program, not the FxCop.exe user
// interface) is installed.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tools/WrenToolOptions.h"

namespace wren {

/// Holds FxCopLocation, the full path of FxCopCmd.exe (the console program, not the FxCop.exe user
/// interface). Defaults to a registered FxCopCmd.exe.
class TWrenFxCopOptions : public TWrenToolOptions {
 public:
  TWrenFxCopOptions() : TWrenToolOptions({"FxCopCmd.exe"}) {}
  static constexpr const char* kOptionKey = "FxCop";
  static constexpr const char* kOptionsName = "FxCop";
  static constexpr const char* kOptionsCategory = ".Net Tools";
  static constexpr const char* kLocationValue = "FxCopLocation";

  static std::string StaticClassName() { return "TWrenFxCopOptions"; }
  std::string GetOptionKey() const override { return kOptionKey; }
  std::string GetOptionsName() const override { return kOptionsName; }
  std::string GetOptionsCategory() const override { return kOptionsCategory; }

 protected:
  std::string LocationValueName() const override { return kLocationValue; }
};

/// The FxCop options the host's options services hold; nullptr when none is registered.
std::shared_ptr<IWrenToolOptions> FxCopOptions();

}  // namespace wren
