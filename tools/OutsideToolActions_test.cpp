// What the five outside-tool actions share: their names, and stored projects come back as they
// were written.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "runtime/WrenProject.h"
#include "tools/WrenDemeanorAction.h"
#include "tools/WrenDotfuscatorAction.h"
#include "tools/WrenFxCopAction.h"
#include "tools/WrenNDocAction.h"
#include "tools/WrenXenoCodeAction.h"

namespace wren {
namespace {

std::unique_ptr<TCustomWrenAction> Create(const std::string& className) {
  if (className == "TWrenNDocAction") return std::make_unique<TWrenNDocAction>();
  if (className == "TWrenFxCopAction") return std::make_unique<TWrenFxCopAction>();
  if (className == "TWrenDotfuscatorAction") return std::make_unique<TWrenDotfuscatorAction>();
  if (className == "TWrenDemeanorAction") return std::make_unique<TWrenDemeanorAction>();
  if (className == "TWrenXenoCodeAction") return std::make_unique<TWrenXenoCodeAction>();
  return nullptr;
}

TEST(OutsideToolActions, NamesAndHelpFiles) {
  const std::vector<std::tuple<const char*, const char*, const char*>> cases = {
      {"TWrenNDocAction", "NDoc", "Plugins\\NDoc.html"},
      {"TWrenFxCopAction", "FxCop", "Plugins\\FxCop.html"},
      {"TWrenDotfuscatorAction", "Dotfuscator", "Plugins\\Dotfuscator.html"},
      {"TWrenDemeanorAction", "Demeanor", "Plugins\\Demeanor.html"},
      {"TWrenXenoCodeAction", "XenoCode", "Plugins\\XenoCode.html"},
  };
  for (const auto& [className, displayName, helpFile] : cases) {
    const std::unique_ptr<TCustomWrenAction> action = Create(className);
    ASSERT_NE(action, nullptr) << className;
    EXPECT_EQ(action->ClassName(), className);
    EXPECT_EQ(action->DisplayName(), displayName);
    EXPECT_EQ(action->GetQuickHelpFilename(), helpFile);
  }
}

TEST(OutsideToolActions, StoredProjectsComeBackUnchanged) {
  for (const char* className : {"TWrenNDocAction", "TWrenFxCopAction", "TWrenDotfuscatorAction",
                                "TWrenDemeanorAction", "TWrenXenoCodeAction"}) {
    SCOPED_TRACE(className);
    const std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                             "<MarrowbyProject version=\"1\">\n  <Actions>\n"
                             "    <Action class=\"" + std::string(className) + "\"/>\n"
                             "    <Action class=\"" + std::string(className) +
                             "\" description=\"protect the installer\"/>\n"
                             "  </Actions>\n</MarrowbyProject>\n";
    TWrenProject project;
    TWrenProjectError error;
    ASSERT_TRUE(project.LoadFromText(text, "p.mbproj", Create, error)) << error.ToString();
    EXPECT_EQ(project.SaveToText(), text);
    EXPECT_EQ(project.steps.at(0).action->GetDescription(), "");
    EXPECT_EQ(project.steps.at(1).action->GetDescription(), "protect the installer");
  }
}

}  // namespace
}  // namespace wren
