#include "tools/WrenDotfuscatorAction.h"

#include "WrenFiles.h"
#include "WrenUtils.h"

namespace wren {

bool IsDotfuscatorUserInterface(const std::string& path) {
  const std::string name = ExtractFileName(path);
  if (SameText(name, "dotfuscatorUI.exe")) return true;
  return SameText(name, "dotfuscator.exe") &&
         FileExists(ExtractFilePath(path) + "dotfuscatorCLI.exe");
}

const TPropertyTable& TWrenDotfuscatorAction::ClassProperties() {
  using A = TWrenDotfuscatorAction;
  static const TPropertyTable table = ChainProperties(
      TWrenExecuteAbstractAction::ClassProperties(),
      {StringProperty("ConfigFile", &A::ConfigFile), BoolProperty("Quiet", &A::Quiet),
       BoolProperty("Verbose", &A::Verbose), BoolProperty("Investigate", &A::Investigate),
       StringListProperty("Properties", &A::Properties),
       StringListProperty("InputAssemblies", &A::InputAssemblies),
       StringProperty("OutputDirectory", &A::OutputDirectory),
       StringProperty("MakeConfig", &A::MakeConfig), BoolProperty("DisableAll", &A::DisableAll),
       EnumProperty("Rename", &A::Rename, {"dsDefault", "dsOn", "dsOff"}),
       EnumProperty("Keep", &A::Keep, {"dkDefault", "dkNamespace", "dkHierarchy", "dkNone"}),
       StringProperty("MapFile", &A::MapFile), BoolProperty("OverwriteMap", &A::OverwriteMap),
       StringListProperty("ExtraSwitches", &A::ExtraSwitches)});
  return table;
}

bool TWrenDotfuscatorAction::GetCommandLine(ICommandLineBuilder& builder) {
  if (IsDotfuscatorUserInterface(ToolLocation()))
    SendMessage("Warning: " + ToolLocation() +
                " is Dotfuscator's user interface, which does not protect anything from a build; "
                "set the console program in Tools->Options");
  // Quiet overrides verbose in Dotfuscator, so only one is passed.
  if (Quiet)
    builder.AddArgument("/q", "", 2);
  else if (Verbose)
    builder.AddArgument("/v", "", 2);
  if (Investigate) builder.AddArgument("/i", "", 2);

  std::string value, joined;
  for (const std::string& line : Properties) {
    const size_t eq = line.find('=');
    if (eq == std::string::npos || Trim(line.substr(0, eq)).empty()) continue;
    std::string name;
    if (!TryExpandExpression("Property", Trim(line.substr(0, eq)), false, name) ||
        !TryExpandExpression("Value", line.substr(eq + 1), false, value))
      return false;
    // Properties are separated by commas, so a comma inside a value would split it.
    if (value.find(',') != std::string::npos) {
      SendMessage("Dotfuscator cannot take a property value containing a comma: " + name);
      return false;
    }
    joined += (joined.empty() ? "" : ",") + name + "=" + value;
  }
  if (!joined.empty()) builder.AddArgument("/p=", joined, 2);

  joined.clear();
  for (const std::string& line : InputAssemblies) {
    if (Trim(line).empty()) continue;
    if (!TryExpandExpression("Input Assembly", Trim(line), false, value)) return false;
    joined += (joined.empty() ? "" : ",") + value;
  }
  if (!joined.empty()) builder.AddArgument("/in:", joined, 2);

  const struct {
    const char* caption;
    const std::string& property;
    const char* switchText;
  } folders[] = {{"Output Directory", OutputDirectory, "/out:"},
                 {"Make Config", MakeConfig, "/makeconfig:"}};
  for (const auto& f : folders) {
    if (!TryExpandExpression(f.caption, f.property, false, value)) return false;
    if (!value.empty()) builder.AddArgument(f.switchText, value, 2);
  }
  if (DisableAll) builder.AddArgument("/disable", "", 2);
  if (Rename != TDotfuscatorSwitch::dsDefault)
    builder.AddArgument("/rename:", Rename == TDotfuscatorSwitch::dsOn ? "on" : "off", 2);
  static const char* const kKeep[] = {"", "namespace", "hierarchy", "none"};
  if (Keep != TDotfuscatorKeep::dkDefault)
    builder.AddArgument("/keep:", kKeep[static_cast<int>(Keep)], 2);
  if (!TryExpandExpression("Map File", MapFile, false, value)) return false;
  if (!value.empty()) builder.AddArgument("/mapout:", value, 2);
  // Otherwise Dotfuscator keeps the old map as map.0.xml, map.1.xml, ...
  if (OverwriteMap) builder.AddArgument("/clobbermap:", "on", 2);
  if (!AddExtraSwitches(*this, builder, ExtraSwitches)) return false;

  if (!TryExpandExpression("Config File", ConfigFile, false, value)) return false;
  if (!value.empty()) builder.AddArgument("", value, 2);
  SendMessage("Command Line: " + builder.GetCommandLineText());
  return true;
}

std::string TWrenDotfuscatorAction::GetStartingDir(const std::string& fileName) {
  if (!Trim(ConfigFile).empty()) return FirstPathDir(*this, {ConfigFile}, fileName);
  return FirstPathDir(*this, InputAssemblies, fileName);
}

bool TWrenDotfuscatorAction::Validate(IWrenActionValidationError& errors) {
  bool ok = ValidateLocation(errors);
  // With neither, Dotfuscator opens its user interface instead of building.
  bool inputs = false;
  for (const std::string& line : InputAssemblies) inputs = inputs || !Trim(line).empty();
  if (Trim(ConfigFile).empty() && !inputs) {
    errors.AddError("Config File", "Configuration file has not been set");
    ok = false;
  }
  return ok;
}

}  // namespace wren
