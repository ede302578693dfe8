// Registration services of the host and the headless models of property and options pages.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "WrenActionAPI.h"
#include "WrenOptionsAPI.h"
#include "WrenPageControls.h"
#include "WrenScripts.h"

namespace wren {

// Control models: the state a page's controls hold, rendered later by a user interface.

struct TLabelModel {
  std::string caption;
  bool visible = true;
};

struct TEditModel {
  std::string caption;  // the label beside the edit
  std::string text;
  bool enabled = true;
};

struct TCheckBoxModel {
  std::string caption;
  bool checked = false;
  bool enabled = true;
};

struct TRadioButtonModel {
  std::string caption;
  bool checked = false;
  bool enabled = true;
};

/// A drop-down or list box: items and the selected index (-1: none).
struct TComboBoxModel {
  std::string caption;
  std::vector<std::string> items;
  int itemIndex = -1;
  bool enabled = true;
  std::string Selected() const {
    return itemIndex >= 0 && itemIndex < static_cast<int>(items.size()) ? items[itemIndex] : "";
  }
};

struct TMemoModel {
  std::string caption;
  std::vector<std::string> lines;
  bool enabled = true;
};

struct TPanelModel {
  bool visible = true;
};

/// What a property page tells about one property it edits: the label of its control, the help text
/// under it, the separator a one-line list is split on, and whether it names a file or folder.
struct TWrenPagePropertyInfo {
  TWrenPagePropertyInfo(std::string property_, std::string caption_, std::string hint_ = "",
                        std::string separator_ = "", bool isPath_ = false)
      : property(std::move(property_)),
        caption(std::move(caption_)),
        hint(std::move(hint_)),
        separator(std::move(separator_)),
        isPath(isPath_) {}
  std::string property;
  std::string caption;
  std::string hint;
  std::string separator;
  bool isPath = false;
};

/// The base of every property page: moves an action's settings to the controls and back.
class TFrame {
 public:
  virtual ~TFrame() = default;
  virtual void InitFrame() {}
  virtual void InitPage(TWrenAction& action) { (void)action; }
  virtual std::string PageName() const { return ""; }
  virtual void OnPageActivate() {}
  virtual void OnPageDeActivate() {}
  virtual void ReadActionData(TWrenAction& action) { (void)action; }
  virtual void WriteActionData(TWrenAction& action) { (void)action; }
  /// The page's own check before it is written; false with a message keeps the page open.
  virtual bool CheckPage(std::string& message) {
    (void)message;
    return true;
  }
  /// The properties this page edits, in the order its controls show them.
  virtual std::vector<TWrenPagePropertyInfo> PropertyInfo() const { return {}; }
  /// Lists the page's controls in tab order with their reactions (see TWrenPageControls).
  virtual void ListControls(TWrenPageControls& controls) { (void)controls; }
};

/// The base of every options page.
class TWrenOptionsFrame {
 public:
  virtual ~TWrenOptionsFrame() = default;
  virtual void InitPage(void* pageOwner) { (void)pageOwner; }
  virtual std::string GetPageName() const { return ""; }
  virtual void OnPageActivate() {}
  virtual void ReadOptions(TWrenOptionsObject& options) { (void)options; }
  virtual void WriteOptions(TWrenOptionsObject& options) { (void)options; }
  /// Lists the page's controls in tab order with their reactions (see TWrenPageControls).
  virtual void ListControls(TWrenPageControls& controls) { (void)controls; }
};

/// A page's controls as they stand now, in tab order.
std::vector<TWrenPageControl> PageControls(TFrame& page);
std::vector<TWrenPageControl> PageControls(TWrenOptionsFrame& page);
/// Hands one user event to the page (see TWrenPageControls::Dispatch).
bool DispatchPageEvent(TFrame& page, const TWrenPageEvent& event, std::string& error);
bool DispatchPageEvent(TWrenOptionsFrame& page, const TWrenPageEvent& event, std::string& error);

/// A registered page class: its name and how to make one (a property page or an options page).
struct TWrenFrameClass {
  std::string name;
  std::function<std::unique_ptr<TFrame>()> createPage;
  std::function<std::unique_ptr<TWrenOptionsFrame>()> createOptionsPage;
};

template <class F>
TWrenFrameClass FrameClassOf() {
  TWrenFrameClass c{F::StaticClassName(), nullptr, nullptr};
  if constexpr (std::is_base_of_v<TFrame, F>)
    c.createPage = [] { return std::unique_ptr<TFrame>(new F()); };
  else
    c.createOptionsPage = [] { return std::unique_ptr<TWrenOptionsFrame>(new F()); };
  return c;
}

/// A registered property editor (a file-name editor for a project file, say).
struct TWrenPropertyEditorClass {
  std::string name;
  std::string dialogTitle;
  std::string defaultExtension;
  std::string filter;
};

/// One registered action type as the host keeps it.
struct TWrenRegisteredAction {
  std::string displayName;
  std::string category;
  TWrenActionClass actionClass;
  std::string iconResourceName;
  std::vector<TWrenFrameClass> pages;
};

/// The host's registry of action types (global `WrenActionServices`). Names of classes are looked
/// up without regard to case; icon names are not keys (several actions may share one).
class IWrenActionServices {
 public:
  virtual ~IWrenActionServices() = default;
  virtual void RegisterAction(const std::string& displayName, const std::string& category,
                              const TWrenActionClass& actionClass,
                              const std::string& iconResourceName) = 0;
  virtual void RegisterPropertyPages(const TWrenActionClass& actionClass,
                                     const std::vector<TWrenFrameClass>& frames) = 0;
  virtual void RegisterPropertyEditor(const std::string& propertyType,
                                      const TWrenActionClass& actionClass,
                                      const std::string& propertyName,
                                      const TWrenPropertyEditorClass& editorClass) = 0;
};

IWrenActionServices& WrenActionServices();

/// A script-callable method signature registered for a class ("AddEntry" (string, string, boolean)).
struct TWrenScriptMethodInfo {
  std::string className;
  std::string methodName;
  std::vector<std::string> parameterTypes;
};

/// The host's registry of what scripts may call (global `WrenScriptingServices`).
class IWrenScriptingServices {
 public:
  virtual ~IWrenScriptingServices() = default;
  virtual void RegisterMethod(const TWrenScriptMethodInfo& method) = 0;
  /// A global object scripts see under the name; made afresh for each script run.
  virtual void RegisterObject(const std::string& name,
                              std::function<std::shared_ptr<TWrenScriptObject>()> factory) = 0;
};

IWrenScriptingServices& WrenScriptingServices();

/// Design-time services (global `WrenDesignApplicationServices`): expansion for dialogs and the
/// host's file and folder dialogs. A host without a user interface answers "not accepted".
class IWrenDesignApplicationServices {
 public:
  virtual ~IWrenDesignApplicationServices() = default;
  virtual std::string ExpandText(const std::string& text) = 0;
  /// Shows the file dialog; true with fileName set on acceptance.
  virtual bool BrowseForFile(const std::string& title, const std::string& filter,
                             std::string& fileName) = 0;
  virtual bool BrowseForDirectory(const std::string& title, std::string& directory) = 0;
  /// A modal pick from a list (the code-page picker): true with itemIndex set on acceptance.
  virtual bool ChooseFromList(const std::string& title, const std::string& caption,
                              const std::vector<std::string>& items, int& itemIndex) {
    (void)title;
    (void)caption;
    (void)items;
    (void)itemIndex;
    return false;
  }
};

IWrenDesignApplicationServices& WrenDesignApplicationServices();
/// Replaces the design-time services (a user interface or a test installs its own).
void SetWrenDesignApplicationServices(IWrenDesignApplicationServices* services);

}  // namespace wren
