#include <gtest/gtest.h>

#include "WrenPluginAPI.h"
#include "WrenRegister.h"
#include "runtime/WrenActionRegistry.h"
#include "runtime/WrenModule.h"
#include "runtime/WrenOptionsStore.h"

namespace wren {
namespace {

struct Row {
  const char *className, *displayName, *category, *icon;
  size_t pages;  // at design time
};
constexpr const char* kNet = ".Net Tools";

// The registered rows in the order users see them (the classes the package builds). Icon names
// are registered as the bitmaps are named, upper-case (DotfuscatorICON finds DOTFUSCATORICON).
const Row kRows[] = {
    {"TWrenAssemblyInfoUpdaterAction", "AssemblyInfo Updater", "Compilers", "ASSEMBLYUPATER", 2},
    {"TWrenCSharpCompilerAction", "Microsoft C# Compiler", "Compilers", "CSHARP", 5},
    {"TWrenCSProjCompilerAction", "Microsoft C# Project Compiler", "Compilers", "CSHARP", 1},
    {"TWrenVBDotNetCompilerAction", "Microsoft VB.NET Compiler", "Compilers", "VBDOTNET", 5},
    {"TWrenVBProjCompilerAction", "Microsoft VB.Net Project Compiler", "Compilers", "VBDOTNET", 1},
    {"TWrenJSharpCompilerAction", "Microsoft J# Compiler", "Compilers", "JSHARP", 5},
    {"TWrenJSProjCompilerAction", "Microsoft J# Project Compiler", "Compilers", "JSHARP", 1},
    {"TGACInstallAction", "GAC Install [GACUTIL]", kNet, "GACINSTALL", 1},
    {"TGACUninstallAction", "GAC Uninstall [GACUTIL]", kNet, "GACUNINSTALL", 1},
    {"TGACListAction", "GAC Download Cache [GACUTIL]", kNet, "GACLIST", 1},
    {"TSNGenerateKeyPair", "Generate Key Pair [SN]", kNet, "GENKEYPAIR", 1},
    {"TSNVerifyAssembly", "Verify Strong Name [SN]", kNet, "VERIFYSN", 1},
    {"TSNInstallKeyPair", "Install Key in Container [SN]", kNet, "INSTALLKEY", 1},
    {"TSNExtractPublicKey", "Extract Public Key [SN]", kNet, "EXTRACTKEY", 1},
    {"TSNResignAssembly", "Re-sign Assembly [SN]", kNet, "RESIGNASS", 1},
    {"TWrenRegasmAction", "Register Assembly in COM [REGASM]", kNet, "RUNREGASM", 1},
    {"TTLBImportAction", "Type Library Import [TLBIMP]", kNet, "RUNTLBIMPORT", 4},
    {"TTLBExportAction", "Type Library Export [TLBEXP]", kNet, "RUNTLBEXPORT", 1},
    {"TSNGenericSN", "Run SN.EXE", kNet, "RUNSN", 1},
    {"TALGenericAL", "Run AL.EXE", kNet, "RUNAL", 1},
    {"TASPIISRegGeneric", "Run ASPNET_REGIIS.EXE", kNet, "RUNASPNETREGIIS", 1},
    {"TMSBuildAction", "MSBuild Project", "Build Tools", "MSBUILDICON", 1},
    {"TWrenBorlandCSBuilderProjCompilerAction", "Borland C# Builder Compiler", "Compilers",
     "BDSPROJ", 1},
    {"TWrenNUnitAction", "NUnit", "Testing Tools", "NUNIT", 1},
    {"TNAntAction", "NAnt Project", "Build Tools", "NANTICON", 1},
    {"TWrenNDocAction", "NDoc", "Help Compilers", "NDOCICON", 2},
    {"TWrenResGenAction", "Resource Compiler [ResGen]", kNet, "RESGEN", 1},
    {"TWrenFxCopAction", "FxCop", kNet, "FXCOPICON", 5},
    {"TWrenDotfuscatorAction", "Dotfuscator", kNet, "DOTFUSCATORICON", 1},
    {"TWrenDemeanorAction", "Demeanor", kNet, "DEMEANORICON", 2},
    {"TWrenXenoCodeAction", "XenoCode", kNet, "XENOCODEICON", 1},
    {"TWrenDotNetComReferenceFixAction", "Fix TlbImp Project Reference", kNet, "ASSEMBLYUPATER", 1},
};

void ExpectRegisteredRows(bool designTime) {
  const auto& actions = WrenRegistrations().actions;
  ASSERT_EQ(actions.size(), std::size(kRows));
  for (size_t i = 0; i < actions.size(); ++i) {
    const Row& row = kRows[i];
    SCOPED_TRACE(row.className);
    EXPECT_EQ(actions[i].actionClass.name, row.className);
    EXPECT_EQ(actions[i].actionClass.create()->ClassName(), row.className);  // makes what it names
    EXPECT_EQ(actions[i].displayName, row.displayName);
    EXPECT_EQ(actions[i].category, row.category);
    EXPECT_EQ(actions[i].iconResourceName, row.icon);
    EXPECT_EQ(actions[i].pages.size(), designTime ? row.pages : 0u);
  }
  // Icons are not keys: two rows share the updater's bitmap and both are found by class.
  EXPECT_EQ(FindRegisteredAction("twrenassemblyinfoupdateraction")->iconResourceName,
            FindRegisteredAction("TWrenDotNetComReferenceFixAction")->iconResourceName);

  // Options rows: class/icon/pages. All but NUnit's have one page, only at design time.
  std::vector<std::string> options;
  for (const TWrenRegisteredOptions& o : RegisteredOptions())
    options.push_back(o.optionsClass.name + "/" + o.iconResourceName + "/" +
                      std::to_string(o.pages.size()));
  const std::string page = designTime ? "1" : "0";
  EXPECT_EQ(options, (std::vector<std::string>{"TWrenDotNetOptions/DOTNETOPT/" + page,
                                               "TWrenNUnitOptions/NUNIT/0",
                                               "TWrenNAntOptions/NANTICON/" + page,
                                               "TWrenNDocOptions/NDOCICON/" + page,
                                               "TWrenFxCopOptions/FXCOPICON/" + page,
                                               "TWrenDotfuscatorOptions/DOTFUSCATORICON/" + page,
                                               "TWrenDemeanorOptions/DEMEANORICON/" + page,
                                               "TWrenXenoCodeOptions/XENOCODEICON/" + page}));
  EXPECT_NE(CreateScriptObject("DotNetOptionsObject"), nullptr);
  // The tool options that scripts may read: each object reports its tool's location.
  for (const char* name : {"NDocOptionsObject", "XenoCodeOptionsObject"}) {
    const std::shared_ptr<TWrenScriptObject> object = CreateScriptObject(name);
    ASSERT_NE(object, nullptr) << name;
    ASSERT_EQ(object->fields.size(), 1u);
    EXPECT_EQ(object->fields[0].first, "Location");
    EXPECT_EQ(object->fields[0].second(), WrenVariant(std::string())) << name;
  }
  std::vector<std::string> methods;  // script methods with their parameter types
  for (const TWrenScriptMethodInfo& m : WrenRegistrations().scriptMethods) {
    methods.push_back(m.className + "." + m.methodName);
    for (const std::string& type : m.parameterTypes) methods.back() += " " + type;
  }
  EXPECT_EQ(methods, (std::vector<std::string>{"TWrenAssemblyInfo.AddEntry string string boolean",
                                               "TWrenAssemblyInfo.RemoveEntry string"}));
  // The project-file editors: only at design time, one per project action.
  std::vector<std::string> editors;
  for (const TWrenRegisteredEditor& e : WrenRegistrations().editors)
    editors.push_back(e.actionClass + "." + e.propertyName + " (" + e.propertyType + "): " +
                      e.editor.name + " \"" + e.editor.dialogTitle + "\" " +
                      e.editor.defaultExtension + " " + e.editor.filter);
  const std::vector<std::string> expectedEditors = {
      "TWrenCSProjCompilerAction.ProjectFile (string): TWrenCSharpProjectEditor "
      "\"Select Project File\" csproj C# Projects (*.csproj)|*.csproj",
      "TWrenVBProjCompilerAction.ProjectFile (string): TWrenVBProjectEditor "
      "\"Select Project File\" vbproj VB.NET Projects (*.vbproj)|*.vbproj",
      "TWrenJSProjCompilerAction.ProjectFile (string): TWrenJSharpProjectEditor "
      "\"Select Project File\" vjsproj J# Projects (*.vjsproj)|*.vjsproj",
      "TWrenBorlandCSBuilderProjCompilerAction.ProjectFile (string): "
      "TWrenCSharpBuilderProjectEditor \"Select Project File\" bdsproj "
      "C# Builder Projects (*.bdsproj)|*.bdsproj",
  };
  EXPECT_EQ(editors, designTime ? expectedEditors : std::vector<std::string>{});
}

TEST(WrenRegister, RegistersEveryRowPagesOnlyAtDesignTimeAndTheSameThroughDlopen) {
  for (bool designTime : {false, true}) {
    ClearRegistrations();
    ClearRegisteredOptions();
    WrenRegister(designTime);
    ExpectRegisteredRows(designTime);
  }
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
