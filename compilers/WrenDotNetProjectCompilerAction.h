// The project compiler actions: build a Visual Studio 2002/2003 (or C#Builder) project file as
// it stands, through the language bases' response files.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "WrenFiles.h"
#include "WrenUtils.h"
#include "compilers/WrenBdsProjectReader.h"
#include "compilers/WrenCSharpCompilerAction.h"
#include "compilers/WrenJSharpDotNetCompilerAction.h"
#include "compilers/WrenVBDotNetCompilerAction.h"
#include "compilers/WrenVSProjectReader.h"

namespace wren {

/// What loading a project leaves beside the option fields: where the output goes and which
/// application configuration file belongs beside it.
struct TProjectLoadState {
  std::string outputFile;  // absolute
  std::string appConfig;   // absolute; "" when the project has none
  TStrings localCopies;    // referenced assemblies copied beside the output after a build
};

/// The user's settings of a project action that loading needs.
struct TProjectLoadSettings {
  std::string configName;  // expanded
  std::string outputDir;   // expanded override of the project's output folder; "" keeps it
  std::string cfResGen;    // expanded resource compiler of Compact Framework projects
};

/// Fills the common option fields of action from a loaded Visual Studio project, resolves its
/// references and runs its resource steps (resgen, lc, tlbimp, aximp) through the action's
/// host. False after one log message when something cannot be resolved or a step fails.
bool ApplyVSProject(TWrenManagedCompilerAction& action, const TVSProject& project,
                    const TProjectLoadSettings& settings, TProjectLoadState& state);

/// Copies the local references and the application configuration file beside the output,
/// as the IDE does after a build; each copy is logged.
void CopyBesideOutput(TWrenManagedCompilerAction& action, const TProjectLoadState& state,
                      bool copyConfig);

/// The "/resource:" line of a "file=manifest name" entry of ProjectResources.
std::string ProjectResourceLine(const std::string& entry);

/// The output file of the project with the given GUID, found through a solution file beside or
/// above fromDir, built in the given configuration. False with the cause in error.
bool ResolveProjectReference(const std::string& fromDir, const std::string& guid,
                             const std::string& configName, std::string& output,
                             std::string& error);

/// The shared part of the four project actions, on the language base that writes the switches.
template <class LanguageBase>
class TWrenDotNetProjectCompilerAction : public LanguageBase {
 public:
  /// Loads the project, then writes the response file from what it holds.
  bool GetCommandLine(ICommandLineBuilder& builder) override {
    if (!LoadFromProperties()) return false;
    return LanguageBase::GetCommandLine(builder);
  }

  void OnSuccess() override {
    LanguageBase::OnSuccess();
    CopyBesideOutput(*this, state_, this->CopyConfigFiles);
  }

  bool Validate(IWrenActionValidationError& errors) override {
    bool valid = true;
    if (Trim(this->ProjectFile).empty()) {
      errors.AddError("Project File", "Project file has not been set");
      valid = false;
    }
    if (Trim(this->ConfigName).empty()) {
      errors.AddError("Configuration", "Configuration has not been set");
      valid = false;
    }
    return valid;
  }

  /// Overrides the project's output folder when set.
  std::string OutputDir;

  /// The same table for every language: the project, its configuration and where the output goes.
  static const TPropertyTable& ClassProperties() {
    static const TPropertyTable table = TWrenManagedCompilerAction::CompilerProperties(
        {"ProjectFile", "ConfigName", "CFResGen", "CopyConfigFiles", "NoLogo", "OutputInUTF8"},
        {StringProperty("OutputDir", &TWrenDotNetProjectCompilerAction::OutputDir)});
    return table;
  }
  const TPropertyTable& GetPublishedProperties() const override { return ClassProperties(); }

 protected:
  /// Sets the language's own fields from the project.
  virtual void ApplyLanguageOptions(const TVSProject& project) = 0;
  virtual TVSLanguage Language() const = 0;

  bool IsCompactFramework() const override { return compactFramework_; }

  bool LoadVisualStudioProject(const std::string& fileName) override {
    TVSProject project;
    std::string error;
    if (!ReadVSProject(fileName, settings_.configName, project, error)) {
      this->SendMessage("Unable to load project " + fileName + ": " + error);
      return false;
    }
    if (project.language != Language()) {
      this->SendMessage("Unable to load project " + fileName + ": it is not a project of " +
                        this->DisplayName());
      return false;
    }
    return ApplyProject(project);
  }

  bool ApplyProject(const TVSProject& project) {
    compactFramework_ = project.smartDevice;
    if (!ApplyVSProject(*this, project, settings_, state_)) return false;
    ApplyLanguageOptions(project);
    return true;
  }

  const TProjectLoadSettings& Settings() const { return settings_; }

  void AddProjectResourceLines(const std::string& expanded, const std::string& projectDir,
                               const std::string& rootNameSpace, TStrings& lines) const override {
    // The reader already named each resource as Visual Studio does.
    (void)projectDir;
    (void)rootNameSpace;
    for (const std::string& entry : SplitToLines(expanded, ","))
      if (!Trim(entry).empty()) lines.push_back(ProjectResourceLine(Trim(entry)));
  }

  bool LoadFromProperties() {
    this->ResetOptions();
    compactFramework_ = false;
    state_ = TProjectLoadState();
    settings_ = TProjectLoadSettings();
    std::string file;
    if (!this->TryExpandExpression("Project File", this->ProjectFile, true, file) ||
        !this->TryExpandExpression("Configuration", this->ConfigName, false, settings_.configName) ||
        !this->TryExpandExpression("Output Folder", OutputDir, false, settings_.outputDir) ||
        !this->TryExpandExpression("CF ResGen", this->CFResGen, false, settings_.cfResGen))
      return false;
    return this->LoadProjectFile(std::filesystem::absolute(file).lexically_normal().string());
  }

  TProjectLoadState state_;

 private:
  TProjectLoadSettings settings_;
  bool compactFramework_ = false;
};

/// Builds a Visual Studio C# project (.csproj, .csdproj).
class TWrenCSProjCompilerAction
    : public TWrenDotNetProjectCompilerAction<TWrenCustomCSharpCompilerAction> {
 public:
  static std::string StaticClassName() { return "TWrenCSProjCompilerAction"; }
  static std::string GetActionName() { return "Microsoft C# Project Compiler"; }
  std::string ClassName() const override { return StaticClassName(); }
  std::string DisplayName() const override { return GetActionName(); }
 protected:
  void ApplyLanguageOptions(const TVSProject& project) override;
  TVSLanguage Language() const override { return TVSLanguage::CSharp; }
};

/// Builds a Visual Studio VB.NET project (.vbproj, .vbdproj).
class TWrenVBProjCompilerAction
    : public TWrenDotNetProjectCompilerAction<TWrenCustomVBDotNetCompilerAction> {
 public:
  static std::string StaticClassName() { return "TWrenVBProjCompilerAction"; }
  static std::string GetActionName() { return "Microsoft VB.Net Project Compiler"; }
  std::string ClassName() const override { return StaticClassName(); }
  std::string DisplayName() const override { return GetActionName(); }
 protected:
  void ApplyLanguageOptions(const TVSProject& project) override;
  TVSLanguage Language() const override { return TVSLanguage::VisualBasic; }
};

/// Builds a Visual Studio J# project (.vjsproj).
class TWrenJSProjCompilerAction
    : public TWrenDotNetProjectCompilerAction<TWrenCustomJSharpCompilerAction> {
 public:
  static std::string StaticClassName() { return "TWrenJSProjCompilerAction"; }
  static std::string GetActionName() { return "Microsoft J# Project Compiler"; }
  std::string ClassName() const override { return StaticClassName(); }
  std::string DisplayName() const override { return GetActionName(); }
 protected:
  void ApplyLanguageOptions(const TVSProject& project) override;
  TVSLanguage Language() const override { return TVSLanguage::JSharp; }
};

/// Builds a C#Builder project (.bdsproj) with the C# compiler. The project holds the options of
/// its active configuration only, so no configuration needs naming.
class TWrenBorlandCSBuilderProjCompilerAction : public TWrenCSProjCompilerAction {
 public:
  static std::string StaticClassName() { return "TWrenBorlandCSBuilderProjCompilerAction"; }
  static std::string GetActionName() { return "Borland C# Builder Compiler"; }
  std::string ClassName() const override { return StaticClassName(); }
  std::string DisplayName() const override { return GetActionName(); }
  bool Validate(IWrenActionValidationError& errors) override;

 protected:
  bool LoadBorlandProject(const std::string& fileName) override;
};

}  // namespace wren
