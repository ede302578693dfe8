// The user-wide NDoc options: where NDocConsole.exe is installed.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tools/WrenToolOptions.h"

namespace wren {

/// Holds NDocLocation, the full path of NDocConsole.exe. No default: NDoc's installer records no
/// private assemblies.
class TWrenNDocOptions : public TWrenToolOptions {
 public:
  static constexpr const char* kOptionKey = "NDoc";
  static constexpr const char* kOptionsName = "NDoc";
  static constexpr const char* kOptionsCategory = "Help Compilers";
  static constexpr const char* kLocationValue = "NDocLocation";

  static std::string StaticClassName() { return "TWrenNDocOptions"; }
  std::string GetOptionKey() const override { return kOptionKey; }
  std::string GetOptionsName() const override { return kOptionsName; }
  std::string GetOptionsCategory() const override { return kOptionsCategory; }

 protected:
  std::string LocationValueName() const override { return kLocationValue; }
};

/// The NDoc options the host's options services hold; nullptr when none is registered.
std::shared_ptr<IWrenToolOptions> NDocOptions();

}  // namespace wren
