// Fuzzes the build-project loader and saver: any bytes give a project or an error, never a crash,
// a loaded project saves again, and reading one action at a time gives exactly what reading the
// whole tree gives (the same project or the same error).
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "WrenRegister.h"
#include "runtime/WrenActionRegistry.h"
#include "runtime/WrenProject.h"

namespace {

/// A load's result in words: the project's variables, steps and values, or the error.
std::string Outcome(const wren::TWrenProject& project, bool loaded,
                    const wren::TWrenProjectError& error) {
  if (!loaded) return "error " + error.ToString() + "|" + error.action + "|" + error.property;
  std::string text;
  for (const wren::TWrenProjectVariable& v : project.variables) text += v.name + "=" + v.value + "\n";
  for (const wren::TWrenProjectStep& step : project.steps) {
    text += step.className + ":" + std::to_string(step.line) + (step.enabled ? "+" : "-") +
            step.action->GetDescription() + "\n";
    for (const wren::TPublishedProperty& p : step.action->GetPublishedProperties())
      text += p.name + "=" + wren::PropertyValueToString(p, p.get(*step.action)) + "\n";
    for (const wren::TWrenActionScript& script : step.action->Scripts())
      text += script.name + ":" + script.text + "\n";
  }
  return text;
}

std::string Load(const std::string& text, wren::TWrenProjectReading reading, bool& loaded) {
  wren::TWrenProject project;
  wren::TWrenProjectError error;
  loaded = project.LoadFromText(text, "fuzz.mbproj", wren::CreateRegisteredAction, error, reading);
  return Outcome(project, loaded, error);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool registered = (WrenRegister(false), true);
  (void)registered;
  const std::string text(reinterpret_cast<const char*>(data), size);
  wren::TWrenProject project;
  wren::TWrenProjectError error;
  const bool loaded = project.LoadFromText(text, "fuzz.mbproj", wren::CreateRegisteredAction, error);
  if (loaded) (void)project.SaveToText();

  bool wholeLoaded = false, streamedLoaded = false;
  const std::string whole = Load(text, wren::TWrenProjectReading::WholeTree, wholeLoaded);
  const std::string streamed = Load(text, wren::TWrenProjectReading::StreamedOnly, streamedLoaded);
  if (Outcome(project, loaded, error) != whole) std::abort();
  if (streamedLoaded && streamed != whole) std::abort();
  return 0;
}
