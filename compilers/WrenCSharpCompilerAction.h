// The C# command-line compiler action: the C# switches around the shared response file.
#pragma once

#include <string>
#include <vector>

#include "compilers/WrenDotNetManagedCompilerAction.h"

namespace wren {

/// Section alignment of the output file; faDefault leaves it to the compiler.
enum class TCSharpFileAlign { faDefault, fa512, fa1024, fa2048, fa4096, fa8192 };

const std::vector<std::string>& CSharpFileAlignNames();

/// The C# language base: the switches of csc.exe that the command-line action and the C# project
/// compiler actions share.
class TWrenCustomCSharpCompilerAction : public TWrenManagedCompilerAction {
 public:
  TWrenCustomCSharpCompilerAction();

  static std::string StaticClassName() { return "TWrenCustomCSharpCompilerAction"; }
  static std::string GetActionName() { return "Microsoft C# Compiler"; }
  std::string ClassName() const override { return StaticClassName(); }
  std::string DisplayName() const override { return GetActionName(); }
  std::string GetDotNetTool() const override { return "csc.exe"; }
  int GetHelpTopicID() const override { return 4510; }
  std::string GetQuickHelpFilename() const override { return "csharpcompiler.htm"; }

  void ResetOptions() override;
  bool GenerateResponseFile(const std::string& projectDir, TStrings& lines) override;

  TCSharpFileAlign FileAlign = TCSharpFileAlign::faDefault;
  std::string DocFile;
  bool NoSTDLib = false;
  bool Checked = false;
  bool FullPaths = false;
  bool Incremental = false;
  bool NoConfig = false;
  bool CompileUnsafe = false;
  TDotNetWarningLevels WarningLevel = TDotNetWarningLevels::WarnLevel4;
};

/// Compiles C# sources with the framework's csc.exe, every option from the action's properties.
class TWrenCSharpCompilerAction : public TWrenCustomCSharpCompilerAction {
 public:
  static std::string StaticClassName() { return "TWrenCSharpCompilerAction"; }
  std::string ClassName() const override { return StaticClassName(); }

  static const TPropertyTable& ClassProperties();
  const TPropertyTable& GetPublishedProperties() const override { return ClassProperties(); }
};

}  // namespace wren
