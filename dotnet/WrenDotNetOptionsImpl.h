// The user-wide .NET options: the default SDK version every .NET tool action uses.
#pragma once

#include <memory>
#include <string>

#include "WrenOptionsAPI.h"

namespace wren {

/// What actions ask of the .NET options.
class IWrenDotNetOptions {
 public:
  static constexpr const char* GUID = "{cf5e16e4-1944-4def-a421-470a1f55505d}";
  virtual ~IWrenDotNetOptions() = default;
  virtual std::string GetDefaultSDKVersion() const = 0;
};

/// The options object holding DefaultSDKVersion. A new one defaults to the SDK version of the last
/// detected framework ("" when none is installed); loading replaces it with the stored value.
class TWrenDotNetOptions : public TWrenOptionsObject, public IWrenDotNetOptions {
 public:
  static constexpr const char* kOptionKey = "Microsoft.NET";
  static constexpr const char* kOptionsName = "Microsoft .NET SDK";
  static constexpr const char* kOptionsCategory = "Compilers";

  TWrenDotNetOptions();

  static std::string StaticClassName() { return "TWrenDotNetOptions"; }
  std::string GetOptionKey() const override { return kOptionKey; }
  std::string GetOptionsName() const override { return kOptionsName; }
  std::string GetOptionsCategory() const override { return kOptionsCategory; }
  void LoadOptions(IWrenOptionsReader& reader) override;
  void SaveOptions(IWrenOptionsWriter& writer) override;

  std::string GetDefaultSDKVersion() const override { return defaultSDKVersion_; }
  void SetDefaultSDKVersion(const std::string& version);

 private:
  std::string defaultSDKVersion_;
};

/// Registers the options object (icon "DOTNETOPT"), the script object "DotNetOptionsObject" and,
/// at design time, the options page.
void RegisterOptions(bool designTime);

/// The options object the host's options services hold; nullptr when none is registered.
std::shared_ptr<IWrenDotNetOptions> DotNetOptions();

}  // namespace wren
