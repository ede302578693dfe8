// The controls of a property or options page as a user interface sees them: listed in tab order,
// bound to the page's own control models, with the page's reactions to clicks and changes. Any
// interface (the browser editor, a desktop one, a test) draws the list and sends events back, so
// the behaviour of a page lives in the page, not in the interface.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace wren {

struct TLabelModel;
struct TEditModel;
struct TCheckBoxModel;
struct TRadioButtonModel;
struct TComboBoxModel;
struct TMemoModel;
struct TPanelModel;

enum class TWrenControlKind { Label, Edit, CheckBox, RadioButton, ComboBox, Memo, Panel, Button, Grid };

/// "label", "edit", "checkbox", "radio", "combo", "memo", "panel", "button", "grid".
const char* ControlKindName(TWrenControlKind kind);

/// One control as a renderer draws it: a snapshot of its model. Only the fields of its kind mean
/// anything; the rest keep their defaults.
struct TWrenPageControl {
  std::string name;  // unique on the page; the page's own field name ("edScheme")
  TWrenControlKind kind = TWrenControlKind::Label;
  std::string caption;  // label text, the label beside an edit, box or button text, panel title
  std::string parent;   // the panel it sits in; "" at page level
  std::string group;    // radio buttons of one group exclude each other
  bool enabled = true;
  bool visible = true;  // effective: false also inside a hidden panel
  std::string text;     // edit
  bool checked = false;                      // check box, radio button
  std::vector<std::string> items;            // drop-down items; grid column titles
  int itemIndex = -1;                        // drop-down selection, -1 none
  std::vector<std::string> lines;            // memo
  std::vector<std::vector<std::string>> rows;  // grid cells, one vector per row
};

enum class TWrenPageEventKind { Click, Change };

/// What the user did to one control: a click (button, check box, radio button) or a new value
/// (edit, drop-down, memo, grid). A check box click carries the box's new state in `checked`.
struct TWrenPageEvent {
  std::string control;
  TWrenPageEventKind kind = TWrenPageEventKind::Change;
  std::string text;
  bool checked = false;
  int itemIndex = -1;
  std::vector<std::string> lines;
  std::vector<std::vector<std::string>> rows;
};

/// Filled by a page's ListControls: each control in tab order, bound to the model it shows and
/// to the reaction the page gives. A page lists itself afresh for every snapshot and event, so
/// the bindings never outlive the page.
class TWrenPageControls {
 public:
  using TReaction = std::function<void()>;

  void Label(const std::string& name, TLabelModel& model);
  void Edit(const std::string& name, TEditModel& model, TReaction onChange = {});
  /// The reaction runs after the box took the event's state.
  void CheckBox(const std::string& name, TCheckBoxModel& model, TReaction onClick = {});
  /// A click checks this button and unchecks the others of its group, then runs the reaction.
  void RadioButton(const std::string& name, const std::string& group, TRadioButtonModel& model,
                   TReaction onClick = {});
  void ComboBox(const std::string& name, TComboBoxModel& model, TReaction onChange = {});
  void Memo(const std::string& name, TMemoModel& model, TReaction onChange = {});
  void Button(const std::string& name, const std::string& caption, TReaction onClick,
              bool enabled = true);
  /// Controls listed until EndPanel sit in the panel; panels nest.
  void BeginPanel(const std::string& name, TPanelModel& model, const std::string& caption = "");
  void EndPanel();
  /// A control of the page's own (a grid, say): how to show it and how to take an event.
  void Custom(TWrenPageControl control, std::function<void(TWrenPageControl&)> read,
              std::function<void(const TWrenPageEvent&)> apply);

  /// Every control's current state, in tab order.
  std::vector<TWrenPageControl> Snapshot() const;
  /// Gives the event's value to the control's model and runs its reaction. False, with a message
  /// and nothing changed, for an unknown control, one that is disabled or hidden, or an event the
  /// kind does not take (a click on an edit).
  bool Dispatch(const TWrenPageEvent& event, std::string& error);

 private:
  struct TBinding {
    TWrenPageControl control;  // name, kind, parent, group, caption of a button
    std::function<void(TWrenPageControl&)> read;
    std::function<void(const TWrenPageEvent&)> apply;
  };
  struct TRadio {
    std::string name;
    std::string group;
    TRadioButtonModel* model;
  };
  void Add(TBinding binding);

  std::vector<TBinding> bindings_;
  std::vector<TRadio> radios_;
  std::vector<std::string> panels_;
};

}  // namespace wren
