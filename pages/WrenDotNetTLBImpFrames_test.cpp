#include "pages/WrenDotNetTLBImpFrames.h"

#include <gtest/gtest.h>

#include "pages/WrenPageTesting.h"
#include "sdktools/WrenDotNetTLBImpAction.h"

namespace wren {
namespace {

namespace pt = pagetest;

TEST(TLBImportFrames, AllFourPagesAreDrivenThroughTheirControls) {
  pt::TAnsweringDialogs dialogs;
  TTLBImportAction action;

  TTLBImportFrame main;
  EXPECT_EQ(pt::Layout(main),
            pt::WithVersionPanel({"edAssemblyOutFile:edit", "btnAssemblyOutFile:button",
                                  "edTypeLibraryName:edit", "btnTypeLibraryName:button",
                                  "edResourceID:edit", "edNamespace:edit", "edAsmVersion:edit",
                                  "cbTransform:checkbox", "cbAllowUnsafe:checkbox",
                                  "cbPrimary:checkbox", "cbSysArray:checkbox"}));
  pt::ExpectCaptions(main, {{"edAssemblyOutFile", "Assembly Output File"},
                            {"edTypeLibraryName", "Type Library Name"},
                            {"edResourceID", "Resource ID"},
                            {"edNamespace", "Namespace"},
                            {"edAsmVersion", "Version Number of Assembly"}});
  dialogs.file = "/com/Word.olb";
  pt::Click(main, "btnTypeLibraryName");
  EXPECT_EQ(dialogs.filter, TTLBImportFrame::kTypeLibraryFilter);
  dialogs.file = "/out/Interop.Word.dll";
  pt::Click(main, "btnAssemblyOutFile");
  EXPECT_EQ(dialogs.filter, TTLBImportFrame::kAssemblyFilter);
  pt::Type(main, "edNamespace", "Office.Word");
  pt::Click(main, "cbSysArray", true);
  main.WriteActionData(action);
  EXPECT_EQ(action.TypeLibraryName, "/com/Word.olb");
  EXPECT_EQ(action.AssemblyOutFile, "/out/Interop.Word.dll");
  EXPECT_EQ(action.Namespace, "Office.Word");
  EXPECT_TRUE(action.SysArray);

  TTLBImportReferencesFrame references;
  EXPECT_EQ(pt::Layout(references),
            (std::vector<std::string>{"mmReferences:memo", "cbStrictRef:checkbox"}));
  pt::ExpectCaptions(references, {{"mmReferences", "References"},
                                  {"cbStrictRef", "Only use assemblies specified here"}});
  pt::SetLines(references, "mmReferences", {"/ref/Office.dll", "/ref/stdole.dll"});
  pt::Click(references, "cbStrictRef", true);
  references.WriteActionData(action);
  EXPECT_EQ(action.References, (TStrings{"/ref/Office.dll", "/ref/stdole.dll"}));
  EXPECT_TRUE(action.StrictRef);

  TTLBImportSNFrame signing;
  EXPECT_EQ(pt::Layout(signing),
            (std::vector<std::string>{"edPublicKeyFile:edit", "btnPublicKeyFile:button",
                                      "edKeyFile:edit", "btnKeyFile:button",
                                      "edKeyContainer:edit", "cbDelaySign:checkbox"}));
  pt::ExpectCaptions(signing, {{"edPublicKeyFile", "Public Key File"},
                               {"edKeyFile", "Key File"},
                               {"edKeyContainer", "Key Container"},
                               {"cbDelaySign", "Delay Sign"}});
  dialogs.file = "/keys/public.snk";
  pt::Click(signing, "btnPublicKeyFile");
  EXPECT_EQ(dialogs.filter, TTLBImportSNFrame::kKeyFileFilter);
  pt::Click(signing, "cbDelaySign", true);
  signing.WriteActionData(action);
  EXPECT_EQ(action.PublicKeyFile, "/keys/public.snk");
  EXPECT_TRUE(action.DelaySign);

  TTLBImpLoggingFrame logging;
  EXPECT_EQ(pt::Layout(logging), (std::vector<std::string>{"cbNoLogo:checkbox", "cbSilent:checkbox",
                                                           "cbVerbose:checkbox"}));
  pt::ExpectCaptions(logging, {{"cbNoLogo", "Supress logo (/nologo)"},
                               {"cbSilent", "Suppress all output except errors (/silent)"},
                               {"cbVerbose", "Display extra information (/verbose)"}});
  pt::Click(logging, "cbVerbose", true);
  logging.WriteActionData(action);
  EXPECT_TRUE(action.Verbose);
  EXPECT_FALSE(action.Silent);
}

}  // namespace
}  // namespace wren
