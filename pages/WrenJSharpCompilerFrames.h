// The five property pages of the J# compiler action.
#pragma once

#include <string>

#include "pages/WrenManagedCompilerFrames.h"

namespace wren {

/// Project directory, files, output and target.
class TJSharpCompilerMainFrame : public TManagedCompilerMainFrame {
 public:
  TJSharpCompilerMainFrame();
  static std::string StaticClassName() { return "TJSharpCompilerMainFrame"; }
};

/// Code generation, the J# switches and the package-to-assembly map.
class TJSharpCompilerOptionsFrame : public TManagedCompilerOptionsFrame {
 public:
  static std::string StaticClassName() { return "TJSharpCompilerOptionsFrame"; }
  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  void ListControls(TWrenPageControls& controls) override;

  TCheckBoxModel SecureScoping{"Secure scoping"};
  TCheckBoxModel DisableLangExt{"Disable language extensions"};
  TMemoModel JCPA{"Package to assembly map (jcpa):", {}};
};

/// Debug information, symbols and the warning level.
class TJSharpCompilerDebuggingFrame : public TManagedCompilerDebuggingFrame {
 public:
  TJSharpCompilerDebuggingFrame();
  static std::string StaticClassName() { return "TJSharpCompilerDebuggingFrame"; }
  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  void ListControls(TWrenPageControls& controls) override;

  TComboBoxModel WarningLevel;
};

/// References, library directories and modules.
class TJSharpCompilerAssembliesFrame : public TManagedCompilerAssembliesFrame {
 public:
  static std::string StaticClassName() { return "TJSharpCompilerAssembliesFrame"; }
};

/// Embedded and linked resources and Win32 resources; vjc takes no icon switch.
class TJSharpCompilerResourcesFrame : public TManagedCompilerResourcesFrame {
 public:
  TJSharpCompilerResourcesFrame() { Icons.enabled = false; }
  static std::string StaticClassName() { return "TJSharpCompilerResourcesFrame"; }
};

}  // namespace wren
