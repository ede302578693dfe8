// The options page of an outside tool's location.
#pragma once

#include <string>

#include "WrenPluginAPI.h"

namespace wren {

/// The folder dialog for an edit of an outside tool's page: starts at the edit's expanded text and
/// takes the chosen folder; false (unchanged) when cancelled.
bool GetFolder(TEditModel& edit, const std::string& title);

/// One edit with the tool's location, read from and written to its options; Browse offers
/// programs matching the filter.
class TToolOptionsFrame : public TWrenOptionsFrame {
 public:
  TToolOptionsFrame(const std::string& caption, const std::string& filter)
      : edLocation{caption, ""}, filter_(filter) {}
  std::string GetPageName() const override { return ""; }
  void ReadOptions(TWrenOptionsObject& options) override;
  void WriteOptions(TWrenOptionsObject& options) override;
  bool BrowseLocation();
  void ListControls(TWrenPageControls& controls) override;

  TEditModel edLocation;

 private:
  std::string filter_;
};

class TNDocOptionsFrame : public TToolOptionsFrame {
 public:
  TNDocOptionsFrame()
      : TToolOptionsFrame("Location of NDocConsole.exe",
                          "NDoc Console (NDocConsole.exe)|NDocConsole.exe|Programs (*.exe)|*.exe") {
  }
  static std::string StaticClassName() { return "TNDocOptionsFrame"; }
};

class TFxCopOptionsFrame : public TToolOptionsFrame {
 public:
  TFxCopOptionsFrame()
      : TToolOptionsFrame("Location of FxCopCmd.exe",
                          "FxCop Console (FxCopCmd.exe)|FxCopCmd.exe|Programs (*.exe)|*.exe") {}
  static std::string StaticClassName() { return "TFxCopOptionsFrame"; }
};

class TDotfuscatorOptionsFrame : public TToolOptionsFrame {
 public:
  TDotfuscatorOptionsFrame()
      : TToolOptionsFrame(
            "Location of the console Dotfuscator",
            "Dotfuscator (dotfuscator*.exe)|dotfuscator*.exe|Programs (*.exe)|*.exe") {}
  static std::string StaticClassName() { return "TDotfuscatorOptionsFrame"; }
};

class TDemeanorOptionsFrame : public TToolOptionsFrame {
 public:
  TDemeanorOptionsFrame()
      : TToolOptionsFrame("Location of Demeanor.exe",
                          "Demeanor (Demeanor.exe)|Demeanor.exe|Programs (*.exe)|*.exe") {}
  static std::string StaticClassName() { return "TDemeanorOptionsFrame"; }
};

class TXenoCodeOptionsFrame : public TToolOptionsFrame {
 public:
  TXenoCodeOptionsFrame()
      : TToolOptionsFrame("Location of Xenocode's command-line program", "Programs (*.exe)|*.exe") {
  }
  static std::string StaticClassName() { return "TXenoCodeOptionsFrame"; }
};

}  // namespace wren
