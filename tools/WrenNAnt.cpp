#include "tools/WrenNAnt.h"

#include "WrenFiles.h"
#include "WrenUtils.h"
#include "tools/WrenNAntOptions.h"

namespace wren {

namespace {

std::string NAntLocation() {
  const std::shared_ptr<IWrenNAntOptions> options = NAntOptions();
  return options ? options->GetNAntLocation() : "";
}

/// The name of a name=value line; a line without '=' has none.
std::string NameOf(const std::string& line) {
  const size_t eq = line.find('=');
  return eq == std::string::npos ? "" : line.substr(0, eq);
}

/// The value of the first line with that name (compared without regard to case).
std::string ValueOf(const TStrings& lines, const std::string& name) {
  for (const std::string& line : lines) {
    const size_t eq = line.find('=');
    if (eq != std::string::npos && SameText(line.substr(0, eq), name)) return line.substr(eq + 1);
  }
  return "";
}

}  // namespace

const TPropertyTable& TNAntAction::ClassProperties() {
  using A = TNAntAction;
  static const TPropertyTable table = ChainProperties(
      TWrenExecuteAbstractAction::ClassProperties(),
      {StringProperty("BuildFile", &A::BuildFile),
       StringListProperty("Properties", &A::Properties), StringProperty("PropFile", &A::PropFile),
       EnumProperty("LogLevel", &A::LogLevel, {"llQuiet", "llNormal", "llVerbose", "llDebug"}),
       BoolProperty("OutputToLog", &A::OutputToLog), StringProperty("LogFile", &A::LogFile),
       StringProperty("Targets", &A::Targets),
       EnumProperty("IndentLevel", &A::IndentLevel,
                    {"iDefault", "i0", "i1", "i2", "i3", "i4", "i5", "i6"}),
       BoolProperty("NoLogo", &A::NoLogo), StringProperty("Framework", &A::Framework)});
  return table;
}

std::string TNAntAction::GetExecutable() { return NAntLocation(); }

bool TNAntAction::GetCommandLine(ICommandLineBuilder& builder) {
  if (!FileExists(NAntLocation())) {
    SendMessage("NAnt.exe not found, check location in Options");
    return false;
  }
  switch (LogLevel) {
    case TNAntLogLevel::llQuiet: builder.AddArgument("-quiet", "", 2); break;
    case TNAntLogLevel::llNormal: break;
    case TNAntLogLevel::llVerbose: builder.AddArgument("-verbose", "", 2); break;
    case TNAntLogLevel::llDebug: builder.AddArgument("-debug", "", 2); break;
  }

  std::string buildFile;
  if (!TryExpandExpression("Build File", BuildFile, false, buildFile)) return false;
  if (!FileExists(buildFile)) {
    SendMessage("Build file does not exist : " + buildFile);
    return false;
  }
  builder.AddArgument("-buildfile:", buildFile, 2);

  std::string framework;
  if (!TryExpandExpression("Default Framework", Framework, false, framework)) return false;
  if (!framework.empty()) builder.AddArgument("-defaultframework:", framework, 2);

  for (const std::string& line : Properties) {
    const std::string rawName = NameOf(line);
    if (Trim(rawName).empty()) continue;
    // Looked up by name, so a name given twice passes the value of its first line both times.
    const std::string rawValue = ValueOf(Properties, rawName);
    std::string name, value;
    if (!TryExpandExpression("Property", rawName, false, name)) return false;
    if (!TryExpandExpression("Value", rawValue, false, value)) return false;
    builder.AddArgument("-D:", name + "=" + value, 2);
  }

  if (OutputToLog) {
    std::string logFile;
    if (!TryExpandExpression("Logfile", LogFile, false, logFile)) return false;
    builder.AddArgument("-logfile:", logFile, 2);
  }
  if (NoLogo) builder.AddArgument("-nologo", "", 2);
  if (IndentLevel != TNAntIndent::iDefault) {
    const int level = static_cast<int>(IndentLevel) - static_cast<int>(TNAntIndent::i0);
    builder.AddArgument("-indent:", std::to_string(level), 2);
  }

  std::string targets;
  if (!TryExpandExpression("Targets", Targets, false, targets)) return false;
  // Unquoted, so that blank-separated targets reach NAnt as separate words.
  if (!targets.empty()) builder.AddArgument("", targets, 0);
  return true;
}

bool TNAntAction::Validate(IWrenActionValidationError& errors) {
  bool ok = true;
  auto report = [&](const char* field, const char* message) {
    errors.AddError(field, message);
    ok = false;
  };
  const std::string location = NAntLocation();
  if (location.empty())
    report("NAnt Options", "Path to nant.exe not defined, please check Tools->Options");
  else if (!FileExists(location))
    report("Options", "Path to nant.exe not correct, please check Tools->Options");
  if (BuildFile.empty()) report("Build File", "Build file has not been set");
  return ok;
}

}  // namespace wren
