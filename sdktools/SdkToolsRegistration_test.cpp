// The SDK tool actions as the host registers them at design time: their pages in tab order, and
// the descriptions they start with.
#include <gtest/gtest.h>

#include <utility>

#include "WrenRegister.h"
#include "runtime/WrenActionRegistry.h"

namespace wren {

TEST(SdkToolsRegistration, PagesInTabOrderAndDescriptionsAtCreation) {
  // Class and page names in tab order.
  const std::pair<std::string, std::string> rows[] = {
      {"TGACInstallAction", "TGACInstallFrame"}, {"TGACUninstallAction", "TGACUninstallFrame"},
      {"TGACListAction", "TGACListFrame"}, {"TSNGenerateKeyPair", "TSNGenerateKeyPairFrame"},
      {"TSNVerifyAssembly", "TSNVerifySNFrame"}, {"TSNInstallKeyPair", "TSNInstallKeyPairFrame"},
      {"TSNExtractPublicKey", "TSNExtractKeyFrame"}, {"TSNResignAssembly", "TSNResignFrame"},
      {"TWrenRegasmAction", "TWrenRegasmActionFrame"}, {"TTLBExportAction", "TTLBExportFrame"},
      {"TTLBImportAction",
       "TTLBImportFrame TTLBImportReferencesFrame TTLBImportSNFrame TTLBImpLoggingFrame"},
      {"TSNGenericSN", "TSNGenericFrame"}, {"TALGenericAL", "TALGenericFrame"},
      {"TASPIISRegGeneric", "TASPdotNetIISInstallFrame"}, {"TWrenResGenAction", "TResGenFrame"}};
  ClearRegistrations();
  WrenRegister(true);
  for (const auto& [className, pages] : rows) {
    SCOPED_TRACE(className);
    const TWrenRegisteredAction* action = FindRegisteredAction(className);
    ASSERT_NE(action, nullptr);
    // Install and uninstall describe themselves; every other action keeps the host's default.
    const std::string description = className == "TGACInstallAction"     ? "GAC Install"
                                    : className == "TGACUninstallAction" ? "GAC Uninstall"
                                                                         : "";
    EXPECT_EQ(CreateRegisteredAction(className)->GetDescription(), description);
    std::string names;
    for (const TWrenFrameClass& page : action->pages) {
      names += (names.empty() ? "" : " ") + page.name;
      std::unique_ptr<TFrame> frame = page.createPage ? page.createPage() : nullptr;
      ASSERT_NE(frame, nullptr) << page.name;
      // Every page takes its own action's settings and gives them back.
      std::unique_ptr<TCustomWrenAction> made = action->actionClass.create();
      frame->InitPage(*made);
      frame->ReadActionData(*made);
      frame->WriteActionData(*made);
    }
    EXPECT_EQ(names, pages);
  }
  ClearRegistrations();
}

}  // namespace wren
