// The SDK tool actions as the host sees them: registration rows, class names and descriptions at
// creation.
#include <gtest/gtest.h>

#include <algorithm>

#include "WrenRegister.h"
#include "host/WrenActionRegistry.h"

namespace wren {
namespace {

struct TRow {
  std::string className;
  std::string displayName;
  std::string icon;
  std::vector<std::string> pages;
};

const std::vector<TRow>& SdkRows() {
  static const std::vector<TRow> rows = {
      {"TGACInstallAction", "GAC Install [GACUTIL]", "GACINSTALL", {"TGACInstallFrame"}},
      {"TGACUninstallAction", "GAC Uninstall [GACUTIL]", "GACUNINSTALL", {"TGACUninstallFrame"}},
      {"TGACListAction", "GAC Download Cache [GACUTIL]", "GACLIST", {"TGACListFrame"}},
      {"TSNGenerateKeyPair", "Generate Key Pair [SN]", "GENKEYPAIR", {"TSNGenerateKeyPairFrame"}},
      {"TSNVerifyAssembly", "Verify Strong Name [SN]", "VERIFYSN", {"TSNVerifySNFrame"}},
      {"TSNInstallKeyPair", "Install Key in Container [SN]", "INSTALLKEY",
       {"TSNInstallKeyPairFrame"}},
      {"TSNExtractPublicKey", "Extract Public Key [SN]", "EXTRACTKEY", {"TSNExtractKeyFrame"}},
      {"TSNResignAssembly", "Re-sign Assembly [SN]", "RESIGNASS", {"TSNResignFrame"}},
      {"TWrenRegasmAction", "Register Assembly in COM [REGASM]", "RUNREGASM",
       {"TWrenRegasmActionFrame"}},
      {"TTLBImportAction", "Type Library Import [TLBIMP]", "RUNTLBIMPORT",
       {"TTLBImportFrame", "TTLBImportReferencesFrame", "TTLBImportSNFrame",
        "TTLBImpLoggingFrame"}},
      {"TTLBExportAction", "Type Library Export [TLBEXP]", "RUNTLBEXPORT", {"TTLBExportFrame"}},
      {"TSNGenericSN", "Run SN.EXE", "RUNSN", {"TSNGenericFrame"}},
      {"TALGenericAL", "Run AL.EXE", "RUNAL", {"TALGenericFrame"}},
      {"TASPIISRegGeneric", "Run ASPNET_REGIIS.EXE", "RUNASPNETREGIIS",
       {"TASPdotNetIISInstallFrame"}},
      {"TWrenResGenAction", "Resource Compiler [ResGen]", "RESGEN", {"TResGenFrame"}},
  };
  return rows;
}

TEST(SdkToolsRegistration, RowsInTableOrderWithTheirPages) {
  ClearRegistrations();
  WrenRegister(true);
  std::vector<TRow> found;
  for (const TWrenRegisteredAction& action : WrenRegistrations().actions) {
    const auto known = std::find_if(SdkRows().begin(), SdkRows().end(), [&](const TRow& r) {
      return r.className == action.actionClass.name;
    });
    if (known == SdkRows().end()) continue;
    EXPECT_EQ(action.category, ".Net Tools") << action.actionClass.name;
    // The class a row makes answers to the name it was registered under.
    EXPECT_EQ(action.actionClass.create()->ClassName(), action.actionClass.name);
    TRow row{action.actionClass.name, action.displayName, action.iconResourceName, {}};
    for (const TWrenFrameClass& page : action.pages) {
      row.pages.push_back(page.name);
      EXPECT_TRUE(page.createPage && page.createPage()) << page.name;
    }
    found.push_back(row);
  }
  ASSERT_EQ(found.size(), SdkRows().size());
  for (size_t i = 0; i < found.size(); ++i) {
    SCOPED_TRACE(SdkRows()[i].className);
    EXPECT_EQ(found[i].className, SdkRows()[i].className);
    EXPECT_EQ(found[i].displayName, SdkRows()[i].displayName);
    EXPECT_EQ(found[i].icon, SdkRows()[i].icon);
    EXPECT_EQ(found[i].pages, SdkRows()[i].pages);
  }

  ClearRegistrations();
  WrenRegister(false);
  for (const TRow& row : SdkRows()) {
    const TWrenRegisteredAction* action = FindRegisteredAction(row.className);
    ASSERT_NE(action, nullptr) << row.className;
    EXPECT_TRUE(action->pages.empty()) << row.className;
  }
  ClearRegistrations();
}

TEST(SdkToolsRegistration, DescriptionsAtCreation) {
  ClearRegistrations();
  WrenRegister(false);
  // Install and uninstall describe themselves; every other action keeps the host's default.
  EXPECT_EQ(CreateRegisteredAction("TGACInstallAction")->GetDescription(), "GAC Install");
  EXPECT_EQ(CreateRegisteredAction("TGACUninstallAction")->GetDescription(), "GAC Uninstall");
  for (const TRow& row : SdkRows()) {
    if (row.className == "TGACInstallAction" || row.className == "TGACUninstallAction") continue;
    EXPECT_EQ(CreateRegisteredAction(row.className)->GetDescription(), "") << row.className;
  }
  ClearRegistrations();
}

}  // namespace
}  // namespace wren
