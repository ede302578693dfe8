#include <gtest/gtest.h>

#include "WrenPluginAPI.h"
#include "WrenRegister.h"
#include "host/WrenActionRegistry.h"
#include "host/WrenModule.h"
#include "host/WrenOptionsStore.h"

namespace wren {
namespace {

struct Row {
  const char* className;
  const char* displayName;
  const char* category;
  const char* icon;
  size_t pages;
};

// The registered rows in the order users see them (the classes the package builds).
const Row kRows[] = {
    {"TWrenAssemblyInfoUpdaterAction", "AssemblyInfo Updater", "Compilers", "ASSEMBLYUPATER", 2},
    {"TWrenCSharpCompilerAction", "Microsoft C# Compiler", "Compilers", "CSHARP", 5},
    {"TWrenVBDotNetCompilerAction", "Microsoft VB.NET Compiler", "Compilers", "VBDOTNET", 5},
    {"TWrenJSharpCompilerAction", "Microsoft J# Compiler", "Compilers", "JSHARP", 5},
    {"TGACInstallAction", "GAC Install [GACUTIL]", ".Net Tools", "GACINSTALL", 1},
    {"TGACUninstallAction", "GAC Uninstall [GACUTIL]", ".Net Tools", "GACUNINSTALL", 1},
    {"TGACListAction", "GAC Download Cache [GACUTIL]", ".Net Tools", "GACLIST", 1},
    {"TSNGenerateKeyPair", "Generate Key Pair [SN]", ".Net Tools", "GENKEYPAIR", 1},
    {"TSNVerifyAssembly", "Verify Strong Name [SN]", ".Net Tools", "VERIFYSN", 1},
    {"TSNInstallKeyPair", "Install Key in Container [SN]", ".Net Tools", "INSTALLKEY", 1},
    {"TSNExtractPublicKey", "Extract Public Key [SN]", ".Net Tools", "EXTRACTKEY", 1},
    {"TSNResignAssembly", "Re-sign Assembly [SN]", ".Net Tools", "RESIGNASS", 1},
    {"TWrenRegasmAction", "Register Assembly in COM [REGASM]", ".Net Tools", "RUNREGASM", 1},
    {"TTLBImportAction", "Type Library Import [TLBIMP]", ".Net Tools", "RUNTLBIMPORT", 4},
    {"TTLBExportAction", "Type Library Export [TLBEXP]", ".Net Tools", "RUNTLBEXPORT", 1},
    {"TSNGenericSN", "Run SN.EXE", ".Net Tools", "RUNSN", 1},
    {"TALGenericAL", "Run AL.EXE", ".Net Tools", "RUNAL", 1},
    {"TASPIISRegGeneric", "Run ASPNET_REGIIS.EXE", ".Net Tools", "RUNASPNETREGIIS", 1},
    {"TMSBuildAction", "MSBuild Project", "Build Tools", "MSBUILDICON", 1},
    {"TWrenNUnitAction", "NUnit", "Testing Tools", "NUNIT", 1},
    {"TNAntAction", "NAnt Project", "Build Tools", "NANTICON", 1},
    {"TWrenResGenAction", "Resource Compiler [ResGen]", ".Net Tools", "RESGEN", 1},
    {"TWrenDotNetComReferenceFixAction", "Fix TlbImp Project Reference", ".Net Tools",
     "ASSEMBLYUPATER", 1},
};

void ExpectRegisteredRows(bool designTime) {
  const auto& actions = WrenRegistrations().actions;
  ASSERT_EQ(actions.size(), std::size(kRows));
  for (size_t i = 0; i < actions.size(); ++i) {
    const Row& row = kRows[i];
    EXPECT_EQ(actions[i].actionClass.name, row.className);
    EXPECT_EQ(actions[i].displayName, row.displayName);
    EXPECT_EQ(actions[i].category, row.category);
    EXPECT_EQ(actions[i].iconResourceName, row.icon);
    EXPECT_EQ(actions[i].pages.size(), designTime ? row.pages : 0u) << row.className;
    // The class made by the registration is the class it names, with the same display name.
    std::unique_ptr<TCustomWrenAction> action = actions[i].actionClass.create();
    EXPECT_EQ(action->ClassName(), row.className);
  }
  // Icons are not keys: two rows share the updater's bitmap and both are found by class.
  EXPECT_EQ(FindRegisteredAction("twrenassemblyinfoupdateraction")->iconResourceName,
            FindRegisteredAction("TWrenDotNetComReferenceFixAction")->iconResourceName);

  std::vector<std::string> options;
  for (const TWrenRegisteredOptions& o : RegisteredOptions()) {
    options.push_back(o.optionsClass.name + "/" + o.iconResourceName);
    // Every options object but NUnit's has one page, registered only at design time.
    const size_t pages = designTime && o.optionsClass.name != "TWrenNUnitOptions" ? 1 : 0;
    EXPECT_EQ(o.pages.size(), pages) << o.optionsClass.name;
  }
  EXPECT_EQ(options, (std::vector<std::string>{"TWrenDotNetOptions/DOTNETOPT",
                                               "TWrenNUnitOptions/NUNIT",
                                               "TWrenNAntOptions/NANTICON"}));
  ASSERT_NE(CreateScriptObject("DotNetOptionsObject"), nullptr);
  std::vector<std::string> methods;
  for (const TWrenScriptMethodInfo& m : WrenRegistrations().scriptMethods)
    methods.push_back(m.className + "." + m.methodName);
  EXPECT_EQ(methods,
            (std::vector<std::string>{"TWrenAssemblyInfo.AddEntry", "TWrenAssemblyInfo.RemoveEntry"}));
  EXPECT_EQ(WrenRegistrations().editors.size(), 0u);  // the project compilers are not built
}

TEST(WrenRegister, RegistersEveryRowAndPagesOnlyAtDesignTime) {
  for (bool designTime : {false, true}) {
    ClearRegistrations();
    ClearRegisteredOptions();
    WrenRegister(designTime);
    ExpectRegisteredRows(designTime);
  }
  ClearRegistrations();
  ClearRegisteredOptions();
}

TEST(WrenRegister, TheLoadableModuleRegistersTheSameThroughDlopen) {
  ClearRegistrations();
  ClearRegisteredOptions();
  TWrenModule module;
  std::string error;
  ASSERT_TRUE(module.Load(PACKAGE_MODULE, error)) << error;
  module.Register(false);
  ExpectRegisteredRows(false);
  module.Unload();
  EXPECT_TRUE(WrenRegistrations().actions.empty());
  EXPECT_TRUE(RegisteredOptions().empty());
  EXPECT_FALSE(module.Load("/nonexistent/Wren30DotNetFrameWork.so", error));
  EXPECT_NE(error.find("/nonexistent/"), std::string::npos) << error;
}

}  // namespace
}  // namespace wren
