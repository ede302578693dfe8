// Property pages of the gacutil actions: install, uninstall and the download cache.
#pragma once

#include <string>

#include "pages/WrenDotNetBaseFrame.h"

namespace wren {

class TWrenGACAction;

/// What the install and uninstall pages share: an assembly path or a list file, the force box,
/// and a traced reference whose fields are usable only while its box is checked.
class TGACAssemblyFrame : public TDotNetToolBaseFrame {
 public:
  static constexpr const char* kListFileFilter = "Text Files (*.txt)|*.txt|All Files (*.*)|*.*";

  /// The reference check box was clicked: the reference fields follow it.
  void SetReferenceCount(bool checked);
  bool BrowseAssemblyPath() { return GetFile(edAssemblyPath, assemblyFilter_); }
  bool BrowseListFile() { return GetFile(edAssemblyListFile, kListFileFilter); }

  TRadioButtonModel rbAssemblyPath;
  TEditModel edAssemblyPath;
  TRadioButtonModel rbAssemblyListFile;
  TEditModel edAssemblyListFile;
  TCheckBoxModel cbForce;
  TCheckBoxModel cbReferenceCount;
  TEditModel edScheme;
  TEditModel edID;
  TEditModel edDescription;

 protected:
  explicit TGACAssemblyFrame(const char* assemblyFilter);

  /// The edits, the force box and the reference; the radio buttons are the page's own.
  void ReadAssembly(const TWrenGACAction& gac);
  void WriteAssembly(TWrenGACAction& gac) const;
  /// The path and list-file rows, the force box and the reference, in the order both pages show.
  void ListAssemblyControls(TWrenPageControls& controls);
  /// The first gap among the chosen path or list file, then the reference triple.
  bool CheckAssembly(std::string& message) const;

 private:
  const char* assemblyFilter_;
};

/// The install page: one assembly or a list file, forced reinstall, and a traced reference.
class TGACInstallFrame : public TGACAssemblyFrame {
 public:
  static constexpr const char* kAssemblyFilter =
      "Assemblies (*.dll, *.exe)|*.dll;*.exe|All Files (*.*)|*.*";

  TGACInstallFrame();
  static std::string StaticClassName() { return "TGACInstallFrame"; }
  std::string PageName() const override { return "GAC Install"; }

  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  /// Stops at the first gap: the chosen assembly or list file, then the reference triple.
  bool CheckPage(std::string& message) override { return CheckAssembly(message); }
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  void ListControls(TWrenPageControls& controls) override;
};

/// The uninstall page: by display name, by file or by list file, forced removal, and the
/// reference to remove.
class TGACUninstallFrame : public TGACAssemblyFrame {
 public:
  static constexpr const char* kAssemblyFilter = "Assembly Files (*.dll)|*.dll|All Files (*.*)|*.*";

  TGACUninstallFrame();
  static std::string StaticClassName() { return "TGACUninstallFrame"; }
  std::string PageName() const override { return "GAC Uninstall"; }

  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  bool CheckPage(std::string& message) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  void ListControls(TWrenPageControls& controls) override;

  TRadioButtonModel rbAssemblyName;
  TEditModel edAssemblyName;
};

/// The download cache page: list it or delete it.
class TGACListFrame : public TDotNetToolBaseFrame {
 public:
  TGACListFrame();
  static std::string StaticClassName() { return "TGACListFrame"; }
  std::string PageName() const override { return "GAC Download Cache"; }

  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  void ListControls(TWrenPageControls& controls) override;

  TRadioButtonModel rbListCache;
  TRadioButtonModel rbDeleteCache;
};

}  // namespace wren
