// The user-wide XenoCode options: where Xenocode's command-line program is installed.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tools/WrenToolOptions.h"

namespace wren {

/// Holds XenoCodeLocation, the full path of Xenocode's command-line program. Defaults to the first
/// registered file under a path naming Xenocode, as its console program's file name is not
/// published; check it.
class TWrenXenoCodeOptions : public TWrenToolOptions {
 public:
  TWrenXenoCodeOptions() : TWrenToolOptions({"Xenocode"}) {}
  static constexpr const char* kOptionKey = "XenoCode";
  static constexpr const char* kOptionsName = "XenoCode";
  static constexpr const char* kOptionsCategory = ".Net Tools";
  static constexpr const char* kLocationValue = "XenoCodeLocation";

  static std::string StaticClassName() { return "TWrenXenoCodeOptions"; }
  std::string GetOptionKey() const override { return kOptionKey; }
  std::string GetOptionsName() const override { return kOptionsName; }
  std::string GetOptionsCategory() const override { return kOptionsCategory; }

 protected:
  std::string LocationValueName() const override { return kLocationValue; }
};

/// The XenoCode options the host's options services hold; nullptr when none is registered.
std::shared_ptr<IWrenToolOptions> XenoCodeOptions();

}  // namespace wren
