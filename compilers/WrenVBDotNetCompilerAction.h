// The VB.NET command-line compiler action: the VB.NET switches around the shared response file.
#pragma once

#include <string>
#include <vector>

#include "compilers/WrenDotNetManagedCompilerAction.h"

namespace wren {

/// How VB.NET compares strings by default.
enum class TVBDotNetOptionCompare { OptCompareBinary, OptCompareText };

const std::vector<std::string>& VBDotNetOptionCompareNames();

/// The VB.NET language base: the switches of vbc.exe that the command-line action and the VB.NET
/// project compiler action share.
class TWrenCustomVBDotNetCompilerAction : public TWrenManagedCompilerAction {
 public:
  TWrenCustomVBDotNetCompilerAction();

  static std::string StaticClassName() { return "TWrenCustomVBDotNetCompilerAction"; }
  static std::string GetActionName() { return "Microsoft VB.NET Compiler"; }
  std::string ClassName() const override { return StaticClassName(); }
  std::string DisplayName() const override { return GetActionName(); }
  std::string GetDotNetTool() const override { return "vbc.exe"; }
  int GetHelpTopicID() const override { return 4520; }
  std::string GetQuickHelpFilename() const override { return "vbdotnetcompiler.htm"; }

  void ResetOptions() override;
  bool GenerateResponseFile(const std::string& projectDir, TStrings& lines) override;

  bool Verbose = false;
  bool TargetCF = false;
  bool DelaySign = false;
  std::string Imports;
  std::string KeyContainer;
  std::string KeyFile;
  bool Quiet = false;
  bool RemoveIntChecks = false;
  bool OptionExplicit = false;
  bool OptionStrict = false;
  TVBDotNetOptionCompare OptionCompare = TVBDotNetOptionCompare::OptCompareBinary;
  /// The framework directory vbc.exe is told to use; kept across resets.
  std::string SDKPath;
};

/// Compiles VB.NET sources with the framework's vbc.exe, every option from the action's
/// properties.
class TWrenVBDotNetCompilerAction : public TWrenCustomVBDotNetCompilerAction {
 public:
  static std::string StaticClassName() { return "TWrenVBDotNetCompilerAction"; }
  std::string ClassName() const override { return StaticClassName(); }

  static const TPropertyTable& ClassProperties();
  const TPropertyTable& GetPublishedProperties() const override { return ClassProperties(); }
};

}  // namespace wren
