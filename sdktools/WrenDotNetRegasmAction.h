// Registering a .NET assembly for COM with the framework's Regasm.
#pragma once

#include <string>
#include <vector>

#include "dotnet/WrenDotNetAction.h"

namespace wren {

/// What Regasm does with the assembly.
enum class TRegAsmMode { asmRegister, asmUnregister, asmGenerateRegFile, asmGenAndRegTLB };

const std::vector<std::string>& RegAsmModeNames();

/// Names the tool (Regasm.exe in the framework directory). Publishes nothing; not registered.
class TRegasmBaseAction : public TWrenDotNetAction {
 public:
  static std::string StaticClassName() { return "TRegasmBaseAction"; }
  static std::string GetActionName() { return "RegAsm"; }
  std::string ClassName() const override { return StaticClassName(); }
  std::string DisplayName() const override { return GetActionName(); }

  TWrenDotNetToolType GetDotNetToolType() const override {
    return TWrenDotNetToolType::ttFramework;
  }
  std::string GetDotNetTool() const override { return "Regasm.exe"; }
  bool GetCommandLine(ICommandLineBuilder& builder) override {
    (void)builder;
    return true;
  }
};

/// Registers or unregisters an assembly for COM, or writes its registry script or type library.
class TWrenRegasmAction : public TRegasmBaseAction {
 public:
  static std::string StaticClassName() { return "TWrenRegasmAction"; }
  static std::string GetActionName() { return "Register Assembly in COM"; }
  std::string ClassName() const override { return StaticClassName(); }
  std::string DisplayName() const override { return GetActionName(); }
  int GetHelpTopicID() const override { return 2710; }
  std::string GetQuickHelpFilename() const override { return "Plugins\\DotNetRegASM.html"; }

  bool GetCommandLine(ICommandLineBuilder& builder) override;
  bool Validate(IWrenActionValidationError& errors) override;

  static const TPropertyTable& ClassProperties();
  const TPropertyTable& GetPublishedProperties() const override { return ClassProperties(); }

  TRegAsmMode RegAsmMode = TRegAsmMode::asmRegister;
  std::string AssemblyPath;
  std::string ExportToTLB;
  std::string GenRegFile;
  bool Codebase = false;
  bool Registered = false;
  std::string AsmPath;  // kept with the project; not part of the command line
  bool NoLogo = false;
  bool Silent = false;
  bool Verbose = false;
};

}  // namespace wren
