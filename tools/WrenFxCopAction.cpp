#include "tools/WrenFxCopAction.h"

#include <cstdio>
#include <filesystem>
#include <pugixml.hpp>

#include "WrenFiles.h"
#include "WrenUtils.h"

namespace wren {

namespace {

std::string Hex(uint32_t value) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%X", value);
  return text;
}

bool AnyLine(const TStrings& lines) {
  for (const std::string& line : lines)
    if (!Trim(line).empty()) return true;
  return false;
}

}  // namespace

const std::vector<TFxCopExitFlag>& FxCopExitFlags() {
  static const std::vector<TFxCopExitFlag> flags = {
      {0x1, "analysis error"},
      {0x2, "rule exceptions"},
      {0x4, "project load error"},
      {0x8, "assembly load error"},
      {0x10, "rule library load error"},
      {0x20, "import report load error"},
      {0x40, "output error"},
      {0x80, "command line switch error"},
      {0x100, "initialization error"},
      {kFxCopAssemblyReferencesError, "assembly references error"},
      {0x400, "build-breaking message"},
      {0x1000000, "unknown error"}};
  return flags;
}

const TPropertyTable& TWrenFxCopAction::ClassProperties() {
  using A = TWrenFxCopAction;
  static const TPropertyTable table =
      ChainProperties(TWrenExecuteAbstractAction::ClassProperties(),
                      {BoolProperty("UseProjectFile", &A::UseProjectFile),
                       StringProperty("ProjectFile", &A::ProjectFile),
                       StringListProperty("Targets", &A::Targets),
                       StringListProperty("DependencyDirectories", &A::DependencyDirectories),
                       StringProperty("PlatformDirectory", &A::PlatformDirectory),
                       BoolProperty("SearchGac", &A::SearchGac),
                       StringListProperty("Imports", &A::Imports),
                       StringListProperty("RuleLibraries", &A::RuleLibraries),
                       StringListProperty("RuleIds", &A::RuleIds),
                       StringProperty("Dictionary", &A::Dictionary),
                       StringProperty("OutputFile", &A::OutputFile),
                       StringProperty("OutputXsl", &A::OutputXsl),
                       BoolProperty("ApplyOutputXsl", &A::ApplyOutputXsl),
                       BoolProperty("ForceOutput", &A::ForceOutput),
                       BoolProperty("ToConsole", &A::ToConsole),
                       StringProperty("ConsoleXsl", &A::ConsoleXsl),
                       BoolProperty("Summary", &A::Summary),
                       BoolProperty("Verbose", &A::Verbose),
                       BoolProperty("Quiet", &A::Quiet),
                       BoolProperty("UpdateProject", &A::UpdateProject),
                       BoolProperty("IgnoreGeneratedCode", &A::IgnoreGeneratedCode),
                       StringProperty("Timeout", &A::Timeout),
                       StringListProperty("Types", &A::Types),
                       StringListProperty("ExtraSwitches", &A::ExtraSwitches),
                       BoolProperty("ReferenceErrorsFail", &A::ReferenceErrorsFail),
                       BoolProperty("FailOnMessages", &A::FailOnMessages)});
  return table;
}

bool TWrenFxCopAction::GetCommandLine(ICommandLineBuilder& builder) {
  std::string value;
  // A single valued switch, added when its expanded value is not empty.
  auto single = [&](const char* caption, const std::string& property, const char* switchText,
                    std::string* expanded = nullptr) {
    if (!TryExpandExpression(caption, property, false, value)) return false;
    if (!value.empty()) builder.AddArgument(switchText, value, 2);
    if (expanded) *expanded = value;
    return true;
  };
  auto flag = [&](bool on, const char* switchText) {
    if (on) builder.AddArgument(switchText, "", 2);
  };

  if (UseProjectFile) {
    if (!single("Project File", ProjectFile, "/project:")) return false;
  } else if (!AddEachLine(*this, builder, Targets, "Target", "/file:")) {
    return false;
  }
  if (!AddEachLine(*this, builder, RuleLibraries, "Rule Library", "/rule:") ||
      !AddEachLine(*this, builder, RuleIds, "Rule Id", "/ruleid:") ||
      !AddEachLine(*this, builder, Imports, "Import", "/import:") ||
      !AddEachLine(*this, builder, DependencyDirectories, "Dependency Directory", "/directory:") ||
      !single("Platform Directory", PlatformDirectory, "/platform:"))
    return false;

  std::string types;
  for (const std::string& line : Types) {
    if (Trim(line).empty()) continue;
    if (!TryExpandExpression("Type", Trim(line), false, value)) return false;
    types += (types.empty() ? "" : ",") + value;
  }
  if (!types.empty()) builder.AddArgument("/types:", types, 2);

  std::string consoleXsl;
  if (!single("Output File", OutputFile, "/out:", &report_) ||
      !single("Output XSL", OutputXsl, "/outxsl:"))
    return false;
  flag(ApplyOutputXsl, "/applyoutxsl");
  flag(ToConsole, "/console");
  if (!single("Console XSL", ConsoleXsl, "/consolexsl:", &consoleXsl)) return false;
  flag(Summary, "/summary");
  flag(Verbose, "/verbose");
  flag(Quiet, "/quiet");
  flag(UpdateProject, "/update");
  flag(ForceOutput, "/forceoutput");
  flag(SearchGac, "/searchgac");
  flag(IgnoreGeneratedCode, "/ignoregeneratedcode");
  if (!single("Dictionary", Dictionary, "/dictionary:") ||
      !single("Timeout", Timeout, "/timeout:") || !AddExtraSwitches(*this, builder, ExtraSwitches))
    return false;

  // FxCopCmd refuses to run with nowhere to put its findings.
  if (report_.empty() && !ToConsole && consoleXsl.empty() && !(UpdateProject && UseProjectFile)) {
    SendMessage("FxCop needs somewhere to report: set an output file or console output");
    return false;
  }
  if (UpdateProject && !UseProjectFile) {
    SendMessage("Updating the project needs an FxCop project file");
    return false;
  }
  if (FailOnMessages && report_.empty()) {
    SendMessage("Failing on messages needs an output file to read them from");
    return false;
  }
  startDir_ = GetStartingDir(ToolLocation());
  SendMessage("Command Line: " + builder.GetCommandLineText());
  return true;
}

std::string TWrenFxCopAction::GetStartingDir(const std::string& fileName) {
  return FirstPathDir(*this, UseProjectFile ? TStrings{ProjectFile} : Targets, fileName);
}

std::string TWrenFxCopAction::ReportPath() const {
  if (report_.empty() || std::filesystem::path(report_).is_absolute()) return report_;
  return IncludeTrailingPathDelimiter(startDir_) + report_;
}

void TWrenFxCopAction::BeforeExecute() {
  // Without /forceoutput FxCop writes no report when it finds nothing, so a report left by an
  // earlier run would be read as this run's.
  if (FailOnMessages && !ReportPath().empty()) {
    std::error_code ec;
    std::filesystem::remove(ReportPath(), ec);
  }
}

bool TWrenFxCopAction::InterpretResult(int32_t exitCode) {
  const uint32_t code = static_cast<uint32_t>(exitCode);
  uint32_t known = 0;
  for (const TFxCopExitFlag& f : FxCopExitFlags()) {
    known |= f.bit;
    if (code & f.bit) SendMessage("FxCop: " + std::string(f.name) + " (" + Hex(f.bit) + ")");
  }
  if (code & ~known) SendMessage("FxCop: unknown flags (" + Hex(code & ~known) + ")");

  if (code == kFxCopAssemblyReferencesError && !ReferenceErrorsFail) {
    SendMessage(
        "Warning: FxCop could not resolve some indirect references but analysed the "
        "targets");
  } else if (code != 0) {
    SendMessage("FxCop failed with exit code " + Hex(code));
    return false;
  }

  if (!FailOnMessages) return true;
  const std::string report = ReportPath();
  if (!FileExists(report)) return true;  // FxCop writes no report when it has nothing to say
  pugi::xml_document doc;
  if (!doc.load_file(report.c_str())) {
    SendMessage("Could not read the FxCop report " + report);
    return false;
  }
  const size_t messages = doc.select_nodes("//Message").size();
  if (messages == 0) return true;
  SendMessage("FxCop reported " + std::to_string(messages) + " message(s) in " + report);
  return false;
}

bool TWrenFxCopAction::Validate(IWrenActionValidationError& errors) {
  bool ok = ValidateLocation(errors);
  auto report = [&](const char* field, const char* message) {
    errors.AddError(field, message);
    ok = false;
  };
  if (UseProjectFile && Trim(ProjectFile).empty())
    report("Project File", "Project file has not been set");
  if (!UseProjectFile && !AnyLine(Targets))
    report("Targets", "Target assemblies have not been set");
  const bool otherOutput =
      ToConsole || !Trim(ConsoleXsl).empty() || (UpdateProject && UseProjectFile);
  // Failing on messages reads them from the report.
  if (Trim(OutputFile).empty() && (FailOnMessages || !otherOutput))
    report("Output File", "Output file has not been set");
  return ok;
}

}  // namespace wren
