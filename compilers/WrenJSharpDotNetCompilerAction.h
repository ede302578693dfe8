// The J# command-line compiler action: the J# switches around the shared response file.
#pragma once

#include <string>

#include "compilers/WrenDotNetManagedCompilerAction.h"

namespace wren {

/// The J# language base: the switches of vjc.exe that the command-line action and the J# project
/// compiler action share, and the package-to-assembly map written to "jcpa.rsp".
class TWrenCustomJSharpCompilerAction : public TWrenManagedCompilerAction {
 public:
  static constexpr const char* kJCPAFileName = "jcpa.rsp";

  TWrenCustomJSharpCompilerAction();

  static std::string StaticClassName() { return "TWrenCustomJSharpCompilerAction"; }
  static std::string GetActionName() { return "Microsoft J# Compiler"; }
  std::string ClassName() const override { return StaticClassName(); }
  std::string DisplayName() const override { return GetActionName(); }
  std::string GetDotNetTool() const override { return "vjc.exe"; }
  int GetHelpTopicID() const override { return 4530; }
  std::string GetQuickHelpFilename() const override { return "jsharpcompiler.htm"; }

  void ResetOptions() override;
  bool GenerateResponseFile(const std::string& projectDir, TStrings& lines) override;

  TDotNetWarningLevels WarningLevel = TDotNetWarningLevels::WarnLevel4;
  /// Stored and shown, but neither reaches the compiler (see GenerateResponseFile).
  bool SecureScoping = false;
  bool DisableLangExt = false;
  /// Lines of the /jcpa package-to-assembly map.
  TStrings JCPA;
};

/// Compiles J# sources with the framework's vjc.exe, every option from the action's properties.
class TWrenJSharpCompilerAction : public TWrenCustomJSharpCompilerAction {
 public:
  static std::string StaticClassName() { return "TWrenJSharpCompilerAction"; }
  std::string ClassName() const override { return StaticClassName(); }

  static const TPropertyTable& ClassProperties();
  const TPropertyTable& GetPublishedProperties() const override { return ClassProperties(); }
};

}  // namespace wren
