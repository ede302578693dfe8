// The SDK tool actions as the host registers them: their pages in tab order, and the descriptions
// they start with.
#include <gtest/gtest.h>

#include <map>

#include "WrenRegister.h"
#include "host/WrenActionRegistry.h"

namespace wren {
namespace {

const std::map<std::string, std::vector<std::string>>& SdkPages() {
  static const std::map<std::string, std::vector<std::string>> pages = {
      {"TGACInstallAction", {"TGACInstallFrame"}},
      {"TGACUninstallAction", {"TGACUninstallFrame"}},
      {"TGACListAction", {"TGACListFrame"}},
      {"TSNGenerateKeyPair", {"TSNGenerateKeyPairFrame"}},
      {"TSNVerifyAssembly", {"TSNVerifySNFrame"}},
      {"TSNInstallKeyPair", {"TSNInstallKeyPairFrame"}},
      {"TSNExtractPublicKey", {"TSNExtractKeyFrame"}},
      {"TSNResignAssembly", {"TSNResignFrame"}},
      {"TWrenRegasmAction", {"TWrenRegasmActionFrame"}},
      {"TTLBImportAction",
       {"TTLBImportFrame", "TTLBImportReferencesFrame", "TTLBImportSNFrame",
        "TTLBImpLoggingFrame"}},
      {"TTLBExportAction", {"TTLBExportFrame"}},
      {"TSNGenericSN", {"TSNGenericFrame"}},
      {"TALGenericAL", {"TALGenericFrame"}},
      {"TASPIISRegGeneric", {"TASPdotNetIISInstallFrame"}},
      {"TWrenResGenAction", {"TResGenFrame"}},
  };
  return pages;
}

TEST(SdkToolsRegistration, PagesInTabOrderAtDesignTime) {
  ClearRegistrations();
  WrenRegister(true);
  for (const auto& [className, expected] : SdkPages()) {
    SCOPED_TRACE(className);
    const TWrenRegisteredAction* action = FindRegisteredAction(className);
    ASSERT_NE(action, nullptr);
    std::vector<std::string> names;
    for (const TWrenFrameClass& page : action->pages) {
      names.push_back(page.name);
      std::unique_ptr<TFrame> frame = page.createPage ? page.createPage() : nullptr;
      ASSERT_NE(frame, nullptr) << page.name;
      // Every page takes its own action's settings and gives them back.
      std::unique_ptr<TCustomWrenAction> made = action->actionClass.create();
      frame->InitPage(*made);
      frame->ReadActionData(*made);
      frame->WriteActionData(*made);
    }
    EXPECT_EQ(names, expected);
  }
  ClearRegistrations();
}

TEST(SdkToolsRegistration, DescriptionsAtCreation) {
  ClearRegistrations();
  WrenRegister(false);
  // Install and uninstall describe themselves; every other action keeps the host's default.
  for (const auto& [className, pages] : SdkPages()) {
    std::string expected;
    if (className == "TGACInstallAction") expected = "GAC Install";
    if (className == "TGACUninstallAction") expected = "GAC Uninstall";
    EXPECT_EQ(CreateRegisteredAction(className)->GetDescription(), expected) << className;
  }
  ClearRegistrations();
}

}  // namespace
}  // namespace wren
