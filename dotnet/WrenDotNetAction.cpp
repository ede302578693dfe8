#include "dotnet/WrenDotNetAction.h"

#include <cctype>
#include <charconv>

#include "WrenUtils.h"
#include "dotnet/WrenDotNetFrameWorkAPI.h"
#include "dotnet/WrenDotNetOptionsImpl.h"

namespace wren {

namespace {

/// The options' default SDK version; "" when the options are not registered.
std::string OptionsDefaultSDKVersion() {
  const std::shared_ptr<IWrenDotNetOptions> options = DotNetOptions();
  return options ? options->GetDefaultSDKVersion() : "";
}

/// True when text is a plain decimal number: sign, digits with at most one point, exponent.
bool IsDecimalNumber(const std::string& text) {
  size_t i = 0;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) ++i;
  size_t digits = 0;
  bool point = false;
  for (; i < text.size(); ++i) {
    const char c = text[i];
    if (std::isdigit(static_cast<unsigned char>(c))) {
      ++digits;
    } else if (c == '.' && !point) {
      point = true;
    } else {
      break;
    }
  }
  if (digits == 0) return false;
  if (i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
    ++i;
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) ++i;
    const size_t start = i;
    while (i < text.size() && std::isdigit(static_cast<unsigned char>(text[i]))) ++i;
    if (i == start) return false;
  }
  return i == text.size();
}

}  // namespace

const std::vector<std::string>& DotNetToolTypeNames() {
  static const std::vector<std::string> names = {"ttNone", "ttFramework", "ttSDK"};
  return names;
}

double DotNetVersionNumber(const std::string& version) {
  std::string text = version;
  const size_t v = FindText(text, "v");
  if (v != std::string::npos) text.erase(v, 1);
  if (!IsDecimalNumber(text)) return 1.0;
  const char* first = text.data() + (text[0] == '+' ? 1 : 0);
  double value = 1.0;
  const auto [end, ec] = std::from_chars(first, text.data() + text.size(), value);
  return (ec == std::errc() && end == text.data() + text.size()) ? value : 1.0;
}

TWrenDotNetAction::TWrenDotNetAction() {
  CaptureOutput = true;
  UseStartingDir = true;
  OverrideSDKDefault = false;
  MinimumSDKVersion = "v1.0";
  SetDefaultSDKVersion("v1.0");
}

const TPropertyTable& TWrenDotNetAction::ClassProperties() {
  // The tool type is a fact of the class: it is published so users see it, and a stored value
  // is not applied.
  static const TPropertyTable table = ChainProperties(
      TWrenExecuteAbstractAction::ClassProperties(),
      {BoolProperty("OverrideSDKDefault", &TWrenDotNetAction::OverrideSDKDefault),
       StringProperty("SDKVersion", &TWrenDotNetAction::GetDefaultSDKVersion,
                      &TWrenDotNetAction::SetDefaultSDKVersion),
       StringProperty("MinimumSDKVersion", &TWrenDotNetAction::MinimumSDKVersion),
       TPublishedProperty{"DotNetToolType", TPropertyKind::pkEnumeration, DotNetToolTypeNames(),
                          [](const TCustomWrenAction& a) -> TPropertyValue {
                            return static_cast<int32_t>(
                                static_cast<const TWrenDotNetAction&>(a).GetDotNetToolType());
                          },
                          [](TCustomWrenAction&, const TPropertyValue&) {}}});
  return table;
}

std::string TWrenDotNetAction::GetDefaultSDKVersion() const {
  return OverrideSDKDefault ? sdkVersion_ : OptionsDefaultSDKVersion();
}

void TWrenDotNetAction::SetDefaultSDKVersion(const std::string& version) {
  sdkVersion_ = OverrideSDKDefault ? version : OptionsDefaultSDKVersion();
}

bool TWrenDotNetAction::BeforeGetCommandLine() {
  const std::string sdkVersion = GetDefaultSDKVersion();
  if (DotNetVersionNumber(MinimumSDKVersion) > DotNetVersionNumber(sdkVersion)) {
    SendMessage("The current SDK version (" + sdkVersion +
                ") is less than the minimum version required (" + MinimumSDKVersion + ")");
    return false;
  }
  switch (GetDotNetToolType()) {
    case TWrenDotNetToolType::ttNone:
      return true;
    case TWrenDotNetToolType::ttFramework:
      if (GetFrameWorkPath().empty()) {
        SendMessage("The .NET framework version you are trying to use is not installed");
        return false;
      }
      return true;
    case TWrenDotNetToolType::ttSDK:
      if (GetSDKPath().empty()) {
        SendMessage("The .NET SDK version you are trying to use is not installed");
        return false;
      }
      return true;
  }
  return true;
}

std::string TWrenDotNetAction::GetExecutable() {
  switch (GetDotNetToolType()) {
    case TWrenDotNetToolType::ttFramework:
      return IncludeTrailingPathDelimiter(GetFrameWorkPath()) + GetDotNetTool();
    case TWrenDotNetToolType::ttSDK:
      return IncludeTrailingPathDelimiter(GetSDKPath()) + GetDotNetTool();
    case TWrenDotNetToolType::ttNone:
      break;
  }
  return GetDotNetTool();
}

std::string TWrenDotNetAction::GetStartingDir(const std::string& fileName) {
  return ExtractFilePath(fileName);
}

void TWrenDotNetAction::GetHiddenProperties(TStrings& list) const {
  TWrenExecuteAbstractAction::GetHiddenProperties(list);
  list.push_back("MinimumSDKVersion");
  list.push_back("DotNetToolType");
  list.push_back("SDKVersion");
}

std::string TWrenDotNetAction::GetFrameWorkPath() const {
  const auto frameWork = WrenDotNetInfo()->GetFrameWorkBySDKVersion(GetDefaultSDKVersion());
  return frameWork ? frameWork->GetFrameWorkLocation() : "";
}

std::string TWrenDotNetAction::GetSDKPath() const {
  const auto frameWork = WrenDotNetInfo()->GetFrameWorkBySDKVersion(GetDefaultSDKVersion());
  return frameWork ? frameWork->GetSDKLocation() : "";
}

bool GetFile(TEditModel& edit, const std::string& filter) {
  std::string fileName = WrenDesignApplicationServices().ExpandText(edit.text);
  if (!WrenDesignApplicationServices().BrowseForFile("Select File", filter, fileName)) return false;
  edit.text = fileName;
  return true;
}

}  // namespace wren
