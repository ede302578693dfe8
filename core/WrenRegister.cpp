// The package entry: registers the .NET options, then every action type in the order users see
// them listed, with their pages only when the design environment loads the package.
#include "WrenRegister.h"

#include "WrenPluginAPI.h"
#include "assemblyinfo/WrenAssemblyInfoUpdaterAction.h"
#include "pages/WrenAssemblyInfoUpdaterFrame.h"
#include "dotnet/WrenDotNetOptionsImpl.h"
#include "compilers/WrenCSharpCompilerAction.h"
#include "compilers/WrenDotNetProjectCompilerAction.h"
#include "pages/WrenProjectCompilerFrames.h"
#include "compilers/WrenJSharpDotNetCompilerAction.h"
#include "compilers/WrenMSBuildAction.h"
#include "compilers/WrenVBDotNetCompilerAction.h"
#include "pages/WrenCSharpCompilerFrames.h"
#include "pages/WrenJSharpCompilerFrames.h"
#include "pages/WrenMSBuildFrame.h"
#include "pages/WrenVBDotNetCompilerFrames.h"
#include "pages/WrenDotNetALFrames.h"
#include "pages/WrenDotNetASPdotNETIISRegFrames.h"
#include "pages/WrenDotNetGACFrames.h"
#include "pages/WrenDotNetRegasmFrames.h"
#include "pages/WrenDotNetSNFrames.h"
#include "pages/WrenDotNetTLBExpFrames.h"
#include "pages/WrenDotNetTLBImpFrames.h"
#include "pages/WrenResgenFrames.h"
#include "sdktools/WrenDotNetALAction.h"
#include "sdktools/WrenDotNetASPdotNETIISRegAction.h"
#include "sdktools/WrenDotNetGACAction.h"
#include "sdktools/WrenDotNetRegasmAction.h"
#include "sdktools/WrenDotNetSNAction.h"
#include "sdktools/WrenDotNetTLBExpAction.h"
#include "sdktools/WrenDotNetTLBImpAction.h"
#include "sdktools/WrenResgenAction.h"
#include "sdktools/WrenDotNetComRefAction.h"
#include "pages/WrenDotNetComRefFrame.h"
#include "pages/WrenNAntFrames.h"
#include "pages/WrenNUnitFrames.h"
#include "tools/WrenNAnt.h"
#include "tools/WrenNAntOptions.h"
#include "tools/WrenNUnitAction.h"
#include "tools/WrenNUnitOptions.h"
#include "pages/WrenDemeanorFrames.h"
#include "pages/WrenDotfuscatorFrames.h"
#include "pages/WrenFxCopFrames.h"
#include "pages/WrenNDocFrames.h"
#include "pages/WrenToolOptionsFrame.h"
#include "pages/WrenXenoCodeFrames.h"
#include "tools/WrenDemeanorAction.h"
#include "tools/WrenDemeanorOptions.h"
#include "tools/WrenDotfuscatorAction.h"
#include "tools/WrenDotfuscatorOptions.h"
#include "tools/WrenFxCopAction.h"
#include "tools/WrenFxCopOptions.h"
#include "tools/WrenNDocAction.h"
#include "tools/WrenNDocOptions.h"
#include "tools/WrenXenoCodeAction.h"
#include "tools/WrenXenoCodeOptions.h"

using namespace wren;

namespace {

/// Registers one action type and, at design time, its pages in tab order.
template <class A>
void RegisterActionRow(bool designTime, const std::string& displayName, const std::string& category,
                       const std::string& icon, const std::vector<TWrenFrameClass>& pages) {
  const TWrenActionClass actionClass = ActionClassOf<A>();
  WrenActionServices().RegisterAction(displayName, category, actionClass, icon);
  if (designTime && !pages.empty()) WrenActionServices().RegisterPropertyPages(actionClass, pages);
}

/// Registers a tool's options object with its icon and, at design time, its options page.
template <class O, class F>
void RegisterToolOptions(bool designTime, const std::string& icon) {
  WrenOptionsServices().RegisterOptions(OptionsClassOf<O>(), icon);
  if (designTime)
    WrenOptionsServices().RegisterOptionsPages(OptionsClassOf<O>(), {FrameClassOf<F>()});
}

/// Lets scripts read the tool location held by the options O.
template <class O>
void RegisterToolOptionsScriptObject(const std::string& name) {
  WrenScriptingServices().RegisterObject(name, [] {
    return ToolOptionsScriptObject(O::StaticClassName(), O::kOptionsName, O::kOptionsCategory);
  });
}

/// Registers a project compiler action with its page and, at design time, the file-name editor
/// of its ProjectFile property.
template <class A, class Page>
void RegisterProjectActionRow(bool designTime, const std::string& icon, const std::string& editor,
                              const std::string& extension, const std::string& filter) {
  RegisterActionRow<A>(designTime, A::GetActionName(), "Compilers", icon, {FrameClassOf<Page>()});
  if (designTime)
    WrenActionServices().RegisterPropertyEditor("string", ActionClassOf<A>(), "ProjectFile",
                                                {editor, "Select Project File", extension, filter});
}

}  // namespace

extern "C" WREN_EXPORT void WrenRegister(bool designTime) {
  (void)designTime;
  // 1. .NET options.
  RegisterOptions(designTime);
  // 2. Actions, rows 1 to 32.
  // Row 1: the updater's script methods come before its pages.
  {
    const TWrenActionClass updater = ActionClassOf<TWrenAssemblyInfoUpdaterAction>();
    WrenActionServices().RegisterAction(TWrenAssemblyInfoUpdaterAction::GetActionName(),
                                        "Compilers", updater, "ASSEMBLYUPATER");
    WrenScriptingServices().RegisterMethod({"TWrenAssemblyInfo", "AddEntry",
                                            {"string", "string", "boolean"}});
    WrenScriptingServices().RegisterMethod({"TWrenAssemblyInfo", "RemoveEntry", {"string"}});
    if (designTime)
      WrenActionServices().RegisterPropertyPages(
          updater, {FrameClassOf<TAssemblyInfoUpdaterFrame>(),
                    FrameClassOf<TAssemblyInfoUpdaterEntriesFrame>()});
  }
  // Row 2.
  RegisterActionRow<TWrenCSharpCompilerAction>(
      designTime, TWrenCSharpCompilerAction::GetActionName(), "Compilers", "CSHARP", {});
  if (designTime)
    for (const TWrenFrameClass& page : {FrameClassOf<TCSharpCompilerMainFrame>(),
                                        FrameClassOf<TCSharpCompilerOptionsFrame>(),
                                        FrameClassOf<TCSharpCompilerDebuggingFrame>(),
                                        FrameClassOf<TCSharpCompilerAssembliesFrame>(),
                                        FrameClassOf<TCSharpCompilerResourcesFrame>()})
      WrenActionServices().RegisterPropertyPages(ActionClassOf<TWrenCSharpCompilerAction>(),
                                                 {page});
  // Row 3.
  RegisterProjectActionRow<TWrenCSProjCompilerAction, TProjectCompilerFrame>(
      designTime, "CSHARP", "TWrenCSharpProjectEditor", "csproj", "C# Projects (*.csproj)|*.csproj");
  // Row 4.
  RegisterActionRow<TWrenVBDotNetCompilerAction>(
      designTime, TWrenVBDotNetCompilerAction::GetActionName(), "Compilers", "VBDOTNET", {});
  if (designTime)
    for (const TWrenFrameClass& page : {FrameClassOf<TVBDOTNETCompilerMainFrame>(),
                                        FrameClassOf<TVBDotNetCompilerOptionsFrame>(),
                                        FrameClassOf<TVBDotNetDebuggingFrame>(),
                                        FrameClassOf<TVBDotNetCompilerAssembliesFrame>(),
                                        FrameClassOf<TVBDotNetCompilerResourcesFrame>()})
      WrenActionServices().RegisterPropertyPages(ActionClassOf<TWrenVBDotNetCompilerAction>(),
                                                 {page});
  // Row 5.
  RegisterProjectActionRow<TWrenVBProjCompilerAction, TVBProjPropertyPage>(
      designTime, "VBDOTNET", "TWrenVBProjectEditor", "vbproj",
      "VB.NET Projects (*.vbproj)|*.vbproj");
  // Row 6.
  RegisterActionRow<TWrenJSharpCompilerAction>(
      designTime, TWrenJSharpCompilerAction::GetActionName(), "Compilers", "JSHARP", {});
  if (designTime)
    for (const TWrenFrameClass& page : {FrameClassOf<TJSharpCompilerMainFrame>(),
                                        FrameClassOf<TJSharpCompilerOptionsFrame>(),
                                        FrameClassOf<TJSharpCompilerDebuggingFrame>(),
                                        FrameClassOf<TJSharpCompilerAssembliesFrame>(),
                                        FrameClassOf<TJSharpCompilerResourcesFrame>()})
      WrenActionServices().RegisterPropertyPages(ActionClassOf<TWrenJSharpCompilerAction>(),
                                                 {page});
  // Row 7.
  RegisterProjectActionRow<TWrenJSProjCompilerAction, TJSharpPropertyPage>(
      designTime, "JSHARP", "TWrenJSharpProjectEditor", "vjsproj",
      "J# Projects (*.vjsproj)|*.vjsproj");
  // Rows 8 to 21: the SDK tools.
  RegisterActionRow<TGACInstallAction>(designTime, "GAC Install [GACUTIL]", ".Net Tools",
                                       "GACINSTALL", {FrameClassOf<TGACInstallFrame>()});
  RegisterActionRow<TGACUninstallAction>(designTime, "GAC Uninstall [GACUTIL]", ".Net Tools",
                                         "GACUNINSTALL", {FrameClassOf<TGACUninstallFrame>()});
  RegisterActionRow<TGACListAction>(designTime, "GAC Download Cache [GACUTIL]", ".Net Tools",
                                    "GACLIST", {FrameClassOf<TGACListFrame>()});
  RegisterActionRow<TSNGenerateKeyPair>(designTime, "Generate Key Pair [SN]", ".Net Tools",
                                        "GENKEYPAIR", {FrameClassOf<TSNGenerateKeyPairFrame>()});
  RegisterActionRow<TSNVerifyAssembly>(designTime, "Verify Strong Name [SN]", ".Net Tools",
                                       "VERIFYSN", {FrameClassOf<TSNVerifySNFrame>()});
  RegisterActionRow<TSNInstallKeyPair>(designTime, "Install Key in Container [SN]", ".Net Tools",
                                       "INSTALLKEY", {FrameClassOf<TSNInstallKeyPairFrame>()});
  RegisterActionRow<TSNExtractPublicKey>(designTime, "Extract Public Key [SN]", ".Net Tools",
                                         "EXTRACTKEY", {FrameClassOf<TSNExtractKeyFrame>()});
  RegisterActionRow<TSNResignAssembly>(designTime, "Re-sign Assembly [SN]", ".Net Tools",
                                       "RESIGNASS", {FrameClassOf<TSNResignFrame>()});
  RegisterActionRow<TWrenRegasmAction>(designTime, TWrenRegasmAction::GetActionName() + " [REGASM]",
                                       ".Net Tools", "RUNREGASM",
                                       {FrameClassOf<TWrenRegasmActionFrame>()});
  RegisterActionRow<TTLBImportAction>(
      designTime, TTLBImportAction::GetActionName() + " [TLBIMP]", ".Net Tools", "RUNTLBIMPORT",
      {FrameClassOf<TTLBImportFrame>(), FrameClassOf<TTLBImportReferencesFrame>(),
       FrameClassOf<TTLBImportSNFrame>(), FrameClassOf<TTLBImpLoggingFrame>()});
  RegisterActionRow<TTLBExportAction>(designTime, TTLBExportAction::GetActionName() + " [TLBEXP]",
                                      ".Net Tools", "RUNTLBEXPORT",
                                      {FrameClassOf<TTLBExportFrame>()});
  RegisterActionRow<TSNGenericSN>(designTime, "Run SN.EXE", ".Net Tools", "RUNSN",
                                  {FrameClassOf<TSNGenericFrame>()});
  RegisterActionRow<TALGenericAL>(designTime, "Run AL.EXE", ".Net Tools", "RUNAL",
                                  {FrameClassOf<TALGenericFrame>()});
  RegisterActionRow<TASPIISRegGeneric>(designTime, "Run ASPNET_REGIIS.EXE", ".Net Tools",
                                       "RUNASPNETREGIIS",
                                       {FrameClassOf<TASPdotNetIISInstallFrame>()});
  // Row 22.
  RegisterActionRow<TMSBuildAction>(designTime, TMSBuildAction::GetActionName(), "Build Tools",
                                    "MSBUILDICON", {FrameClassOf<TMSBuildFrame>()});
  // Row 23.
  RegisterProjectActionRow<TWrenBorlandCSBuilderProjCompilerAction, TCSharpBuilderPropertyPage>(
      designTime, "BDSPROJ", "TWrenCSharpBuilderProjectEditor", "bdsproj",
      "C# Builder Projects (*.bdsproj)|*.bdsproj");
  // Row 24, after the NUnit options it takes the runner's location from.
  WrenOptionsServices().RegisterOptions(OptionsClassOf<TWrenNUnitOptions>(), "NUNIT");
  RegisterActionRow<TWrenNUnitAction>(designTime, TWrenNUnitAction::GetActionName(), "Testing Tools",
                                      "NUNIT", {FrameClassOf<TNUnitActionFrame>()});
  // Row 25, after the NAnt options and their page.
  WrenOptionsServices().RegisterOptions(OptionsClassOf<TWrenNAntOptions>(), "NANTICON");
  if (designTime)
    WrenOptionsServices().RegisterOptionsPages(OptionsClassOf<TWrenNAntOptions>(),
                                               {FrameClassOf<TNAntOptionsFrame>()});
  RegisterActionRow<TNAntAction>(designTime, TNAntAction::GetActionName(), "Build Tools",
                                 "NANTICON", {FrameClassOf<TNAntFrame>()});
  // Row 26, after the NDoc options, their scripting object and page.
  RegisterToolOptions<TWrenNDocOptions, TNDocOptionsFrame>(designTime, "NDOCICON");
  RegisterToolOptionsScriptObject<TWrenNDocOptions>("NDocOptionsObject");
  RegisterActionRow<TWrenNDocAction>(designTime, TWrenNDocAction::GetActionName(), "Help Compilers",
                                     "NDOCICON", {});
  if (designTime)
    for (const TWrenFrameClass& page :
         {FrameClassOf<TNDOCFrame>(), FrameClassOf<TNDocDocumenterFrame>()})
      WrenActionServices().RegisterPropertyPages(ActionClassOf<TWrenNDocAction>(), {page});
  // Row 27.
  RegisterActionRow<TWrenResGenAction>(designTime, TWrenResGenAction::GetActionName(), ".Net Tools",
                                       "RESGEN", {FrameClassOf<TResGenFrame>()});
  // Rows 28 to 31, each after its options and their page.
  RegisterToolOptions<TWrenFxCopOptions, TFxCopOptionsFrame>(designTime, "FXCOPICON");
  RegisterActionRow<TWrenFxCopAction>(
      designTime, TWrenFxCopAction::GetActionName(), ".Net Tools", "FXCOPICON",
      {FrameClassOf<TFrameFxCopTargets>(), FrameClassOf<TFrameFxCopRules>(),
       FrameClassOf<TFrameFxCopOptions>(), FrameClassOf<TFrameFxCopTypesAndMembers>(),
       FrameClassOf<TFrameFxCopAdditional>()});
  RegisterToolOptions<TWrenDotfuscatorOptions, TDotfuscatorOptionsFrame>(designTime,
                                                                          "DotfuscatorICON");
  RegisterActionRow<TWrenDotfuscatorAction>(designTime, TWrenDotfuscatorAction::GetActionName(),
                                            ".Net Tools", "DotfuscatorICON",
                                            {FrameClassOf<TDotfuscatorFrame>()});
  RegisterToolOptions<TWrenDemeanorOptions, TDemeanorOptionsFrame>(designTime, "DemeanorICON");
  RegisterActionRow<TWrenDemeanorAction>(
      designTime, TWrenDemeanorAction::GetActionName(), ".Net Tools", "DemeanorICON",
      {FrameClassOf<TDemeanorPEFrame>(), FrameClassOf<TDemeanorExcludeFrame>()});
  RegisterToolOptions<TWrenXenoCodeOptions, TXenoCodeOptionsFrame>(designTime, "XenoCodeICON");
  RegisterToolOptionsScriptObject<TWrenXenoCodeOptions>("XenoCodeOptionsObject");
  RegisterActionRow<TWrenXenoCodeAction>(designTime, TWrenXenoCodeAction::GetActionName(),
                                         ".Net Tools", "XenoCodeICON",
                                         {FrameClassOf<TXenoCodeFrame>()});
  // Row 32: shares the updater's bitmap, spelled so.
  RegisterActionRow<TWrenDotNetComReferenceFixAction>(
      designTime, TWrenDotNetComReferenceFixAction::GetActionName(), ".Net Tools", "ASSEMBLYUPATER",
      {FrameClassOf<TDotNetComRefFrame>()});
}
