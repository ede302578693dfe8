#include "WrenPageControls.h"

#include <map>
#include <utility>

#include "WrenPluginAPI.h"

namespace wren {

const char* ControlKindName(TWrenControlKind kind) {
  switch (kind) {
    case TWrenControlKind::Label: return "label";
    case TWrenControlKind::Edit: return "edit";
    case TWrenControlKind::CheckBox: return "checkbox";
    case TWrenControlKind::RadioButton: return "radio";
    case TWrenControlKind::ComboBox: return "combo";
    case TWrenControlKind::Memo: return "memo";
    case TWrenControlKind::Panel: return "panel";
    case TWrenControlKind::Button: return "button";
    case TWrenControlKind::Grid: return "grid";
  }
  return "label";
}

namespace {

TWrenPageControl Named(const std::string& name, TWrenControlKind kind) {
  TWrenPageControl c;
  c.name = name;
  c.kind = kind;
  return c;
}

bool IsClick(const TWrenPageEvent& e) { return e.kind == TWrenPageEventKind::Click; }

}  // namespace

void TWrenPageControls::Add(TBinding binding) {
  binding.control.parent = panels_.empty() ? "" : panels_.back();
  bindings_.push_back(std::move(binding));
}

void TWrenPageControls::Label(const std::string& name, TLabelModel& model) {
  Add({Named(name, TWrenControlKind::Label),
       [&model](TWrenPageControl& c) {
         c.caption = model.caption;
         c.visible = model.visible;
       },
       nullptr});
}

void TWrenPageControls::Edit(const std::string& name, TEditModel& model, TReaction onChange) {
  Add({Named(name, TWrenControlKind::Edit),
       [&model](TWrenPageControl& c) {
         c.caption = model.caption;
         c.text = model.text;
         c.enabled = model.enabled;
       },
       [&model, onChange](const TWrenPageEvent& e) {
         model.text = e.text;
         if (onChange) onChange();
       }});
}

void TWrenPageControls::CheckBox(const std::string& name, TCheckBoxModel& model,
                                 TReaction onClick) {
  Add({Named(name, TWrenControlKind::CheckBox),
       [&model](TWrenPageControl& c) {
         c.caption = model.caption;
         c.checked = model.checked;
         c.enabled = model.enabled;
       },
       [&model, onClick](const TWrenPageEvent& e) {
         model.checked = e.checked;
         if (onClick) onClick();
       }});
}

void TWrenPageControls::RadioButton(const std::string& name, const std::string& group,
                                    TRadioButtonModel& model, TReaction onClick) {
  TWrenPageControl control = Named(name, TWrenControlKind::RadioButton);
  control.group = group;
  // The other buttons of the group are found when the event arrives, so the list is complete.
  Add({control,
       [&model](TWrenPageControl& c) {
         c.caption = model.caption;
         c.checked = model.checked;
         c.enabled = model.enabled;
       },
       [&model, onClick](const TWrenPageEvent&) {
         model.checked = true;
         if (onClick) onClick();
       }});
  radios_.push_back({name, group, &model});
}

void TWrenPageControls::ComboBox(const std::string& name, TComboBoxModel& model,
                                 TReaction onChange) {
  Add({Named(name, TWrenControlKind::ComboBox),
       [&model](TWrenPageControl& c) {
         c.caption = model.caption;
         c.items = model.items;
         c.itemIndex = model.itemIndex;
         c.enabled = model.enabled;
       },
       [&model, onChange](const TWrenPageEvent& e) {
         model.itemIndex = e.itemIndex;
         if (onChange) onChange();
       }});
}

void TWrenPageControls::Memo(const std::string& name, TMemoModel& model, TReaction onChange) {
  Add({Named(name, TWrenControlKind::Memo),
       [&model](TWrenPageControl& c) {
         c.caption = model.caption;
         c.lines = model.lines;
         c.enabled = model.enabled;
       },
       [&model, onChange](const TWrenPageEvent& e) {
         model.lines = e.lines;
         if (onChange) onChange();
       }});
}

void TWrenPageControls::Button(const std::string& name, const std::string& caption,
                               TReaction onClick, bool enabled) {
  TWrenPageControl control = Named(name, TWrenControlKind::Button);
  control.caption = caption;
  control.enabled = enabled;
  Add({control, nullptr, [onClick](const TWrenPageEvent&) {
         if (onClick) onClick();
       }});
}

void TWrenPageControls::BeginPanel(const std::string& name, TPanelModel& model,
                                   const std::string& caption) {
  TWrenPageControl control = Named(name, TWrenControlKind::Panel);
  control.caption = caption;
  Add({control, [&model](TWrenPageControl& c) { c.visible = model.visible; }, nullptr});
  panels_.push_back(name);
}

void TWrenPageControls::EndPanel() {
  if (!panels_.empty()) panels_.pop_back();
}

void TWrenPageControls::Custom(TWrenPageControl control,
                               std::function<void(TWrenPageControl&)> read,
                               std::function<void(const TWrenPageEvent&)> apply) {
  Add({std::move(control), std::move(read), std::move(apply)});
}

std::vector<TWrenPageControl> TWrenPageControls::Snapshot() const {
  std::vector<TWrenPageControl> out;
  out.reserve(bindings_.size());
  std::map<std::string, size_t> index;
  for (const TBinding& b : bindings_) {
    TWrenPageControl c = b.control;
    if (b.read) b.read(c);
    // A panel is listed before what it holds, so its effective state is already known.
    auto parent = index.find(c.parent);
    if (parent != index.end()) {
      c.visible = c.visible && out[parent->second].visible;
      c.enabled = c.enabled && out[parent->second].enabled;
    }
    index[c.name] = out.size();
    out.push_back(std::move(c));
  }
  return out;
}

bool TWrenPageControls::Dispatch(const TWrenPageEvent& event, std::string& error) {
  const std::vector<TWrenPageControl> states = Snapshot();
  for (size_t i = 0; i < bindings_.size(); ++i) {
    const TWrenPageControl& c = states[i];
    if (c.name != event.control) continue;
    if (!c.visible || !c.enabled) {
      error = "The control \"" + c.name + "\" is " + (c.visible ? "disabled" : "hidden") + ".";
      return false;
    }
    const bool clickable = c.kind == TWrenControlKind::Button ||
                           c.kind == TWrenControlKind::CheckBox ||
                           c.kind == TWrenControlKind::RadioButton;
    if (!bindings_[i].apply || clickable != IsClick(event)) {
      error = std::string("The control \"") + c.name + "\" (" + ControlKindName(c.kind) +
              ") does not take a " + (IsClick(event) ? "click" : "change") + ".";
      return false;
    }
    if (c.kind == TWrenControlKind::RadioButton)
      for (const TRadio& r : radios_)
        if (r.group == c.group && r.name != c.name) r.model->checked = false;
    bindings_[i].apply(event);
    return true;
  }
  error = "The page has no control \"" + event.control + "\".";
  return false;
}

}  // namespace wren

namespace wren {

namespace {

template <class Page>
std::vector<TWrenPageControl> SnapshotOf(Page& page) {
  TWrenPageControls controls;
  page.ListControls(controls);
  return controls.Snapshot();
}

template <class Page>
bool DispatchTo(Page& page, const TWrenPageEvent& event, std::string& error) {
  TWrenPageControls controls;
  page.ListControls(controls);
  return controls.Dispatch(event, error);
}

}  // namespace

std::vector<TWrenPageControl> PageControls(TFrame& page) { return SnapshotOf(page); }
std::vector<TWrenPageControl> PageControls(TWrenOptionsFrame& page) { return SnapshotOf(page); }

bool DispatchPageEvent(TFrame& page, const TWrenPageEvent& event, std::string& error) {
  return DispatchTo(page, event, error);
}

bool DispatchPageEvent(TWrenOptionsFrame& page, const TWrenPageEvent& event, std::string& error) {
  return DispatchTo(page, event, error);
}

}  // namespace wren
