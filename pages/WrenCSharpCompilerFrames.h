// The five property pages of the C# compiler action.
#pragma once

#include <string>

#include "pages/WrenManagedCompilerFrames.h"

namespace wren {

/// Project directory, files, documentation file, output and target.
class TCSharpCompilerMainFrame : public TManagedCompilerMainFrame {
 public:
  TCSharpCompilerMainFrame();
  static std::string StaticClassName() { return "TCSharpCompilerMainFrame"; }
  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  /// The documentation file sits between the files and the output.
  void ListControls(TWrenPageControls& controls) override;
  /// The file dialog for the documentation file; false (unchanged) when cancelled.
  bool BrowseDocFile();

  TEditModel DocFile{"Documentation Comments to XML file:", ""};
};

/// Code generation and the C# switches.
class TCSharpCompilerOptionsFrame : public TManagedCompilerOptionsFrame {
 public:
  TCSharpCompilerOptionsFrame();
  static std::string StaticClassName() { return "TCSharpCompilerOptionsFrame"; }
  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  void ListControls(TWrenPageControls& controls) override;

  TCheckBoxModel Checked{"Check for arithmetic overflow and underflow"};
  TCheckBoxModel CompileUnsafe{"Allow unsafe code"};
  TCheckBoxModel Incremental{"Incremental build"};
  TCheckBoxModel NoConfig{"Do not use the compiler's default response file"};
  TCheckBoxModel NoSTDLib{"Do not reference the standard library"};
  TCheckBoxModel FullPaths{"Report files with full paths"};
  TComboBoxModel FileAlign;
};

/// Debug information, symbols and the warning level.
class TCSharpCompilerDebuggingFrame : public TManagedCompilerDebuggingFrame {
 public:
  TCSharpCompilerDebuggingFrame();
  static std::string StaticClassName() { return "TCSharpCompilerDebuggingFrame"; }
  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  void ListControls(TWrenPageControls& controls) override;

  TComboBoxModel WarningLevel;
};

/// References, library directories and modules.
class TCSharpCompilerAssembliesFrame : public TManagedCompilerAssembliesFrame {
 public:
  static std::string StaticClassName() { return "TCSharpCompilerAssembliesFrame"; }
};

/// Embedded and linked resources, Win32 resources and icons.
class TCSharpCompilerResourcesFrame : public TManagedCompilerResourcesFrame {
 public:
  static std::string StaticClassName() { return "TCSharpCompilerResourcesFrame"; }
};

}  // namespace wren
