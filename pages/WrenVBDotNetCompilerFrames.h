// The five property pages of the VB.NET compiler action.
#pragma once

#include <string>

#include "pages/WrenManagedCompilerFrames.h"

namespace wren {

/// Project directory, files, root namespace, output and target.
class TVBDOTNETCompilerMainFrame : public TManagedCompilerMainFrame {
 public:
  TVBDOTNETCompilerMainFrame();
  static std::string StaticClassName() { return "TVBDOTNETCompilerMainFrame"; }
  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  void ListControls(TWrenPageControls& controls) override;

  TEditModel RootNameSpace{"Root namespace:", ""};
};

/// Code generation and the VB.NET language options; VB.NET has no code-page switch.
class TVBDotNetCompilerOptionsFrame : public TManagedCompilerOptionsFrame {
 public:
  TVBDotNetCompilerOptionsFrame();
  static std::string StaticClassName() { return "TVBDotNetCompilerOptionsFrame"; }
  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  void ListControls(TWrenPageControls& controls) override;

  TCheckBoxModel OptionExplicit{"Option Explicit"};
  TCheckBoxModel OptionStrict{"Option Strict"};
  TComboBoxModel OptionCompare;
  TCheckBoxModel RemoveIntChecks{"Remove integer overflow checks"};
  TCheckBoxModel TargetCF{"Target the .NET Compact Framework"};
  TCheckBoxModel Verbose{"Verbose compiler messages"};
  TCheckBoxModel Quiet{"Quiet compiler messages"};
  TEditModel Imports{"Imported namespaces:", ""};
  TEditModel SDKPath{"SDK path:", ""};
};

/// Debug information, symbols and warnings.
class TVBDotNetDebuggingFrame : public TManagedCompilerDebuggingFrame {
 public:
  static std::string StaticClassName() { return "TVBDotNetDebuggingFrame"; }
};

/// References, library directories, modules and strong-name signing.
class TVBDotNetCompilerAssembliesFrame : public TManagedCompilerAssembliesFrame {
 public:
  static std::string StaticClassName() { return "TVBDotNetCompilerAssembliesFrame"; }
  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  void ListControls(TWrenPageControls& controls) override;
  /// The file dialog for the key file; false (unchanged) when cancelled.
  bool BrowseKeyFile();

  TCheckBoxModel DelaySign{"Delay sign the assembly"};
  TEditModel KeyFile{"Key file:", ""};
  TEditModel KeyContainer{"Key container:", ""};
};

/// Embedded and linked resources, Win32 resources and icons.
class TVBDotNetCompilerResourcesFrame : public TManagedCompilerResourcesFrame {
 public:
  static std::string StaticClassName() { return "TVBDotNetCompilerResourcesFrame"; }
};

}  // namespace wren
