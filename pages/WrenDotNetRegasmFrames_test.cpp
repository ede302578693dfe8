#include "pages/WrenDotNetRegasmFrames.h"

#include <gtest/gtest.h>

#include "pages/WrenDotNetTLBExpFrames.h"
#include "pages/WrenPageTesting.h"
#include "sdktools/WrenDotNetRegasmAction.h"
#include "sdktools/WrenDotNetTLBExpAction.h"

namespace wren {
namespace {

namespace pt = pagetest;

TEST(RegasmFrame, ModeEnablesTheRegFileOrTheTypeLibraryAndTheirBrowseButtons) {
  TWrenRegasmActionFrame page;
  EXPECT_EQ(pt::Layout(page),
            pt::WithVersionPanel({"edAssemblyPath:edit", "btnAssemblyPath:button", "rgMode:combo",
                                  "edRegFile:edit", "btnRegFile:button", "edTlbFile:edit",
                                  "btnTlbFile:button", "cbCodebase:checkbox", "cbNoLogo:checkbox",
                                  "cbSilent:checkbox", "cbVerbose:checkbox",
                                  "cbRegistered:checkbox"}));
  pt::ExpectCaptions(page, {{"rgMode", "RegAsm Mode"},
                            {"cbCodebase", "Create a Codebase entry in the Registry"},
                            {"cbNoLogo", "Suppres the Microsoft startup banner"},
                            {"cbSilent", "Suppress success messages"},
                            {"cbVerbose", "Verbose output"},
                            {"cbRegistered", "Only refer to already registered type libraries"}});
  EXPECT_EQ(pt::Control(page, "rgMode").items,
            (std::vector<std::string>{"Assembly Registration", "Unregister Assembly",
                                      "Generate Reg File", "Generate and Register TypeLibrary"}));

  struct TCase {
    int mode;
    bool regFile, tlbFile;
  };
  for (const TCase& c : {TCase{2, true, false}, TCase{3, false, true}, TCase{1, false, false}}) {
    SCOPED_TRACE(c.mode);
    pt::Pick(page, "rgMode", c.mode);
    EXPECT_EQ(pt::Control(page, "edRegFile").enabled, c.regFile);
    EXPECT_EQ(pt::Control(page, "btnRegFile").enabled, c.regFile);
    EXPECT_EQ(pt::Control(page, "edTlbFile").enabled, c.tlbFile);
    EXPECT_EQ(pt::Control(page, "btnTlbFile").enabled, c.tlbFile);
  }

  pt::TAnsweringDialogs dialogs;
  pt::Pick(page, "rgMode", 3);
  dialogs.file = "/out/Core.tlb";
  pt::Click(page, "btnTlbFile");
  EXPECT_EQ(dialogs.filter, TWrenRegasmActionFrame::kTlbFileFilter);
  dialogs.file = "/bin/Core.dll";
  pt::Click(page, "btnAssemblyPath");
  pt::Click(page, "cbCodebase", true);
  TWrenRegasmAction action;
  page.WriteActionData(action);
  EXPECT_EQ(action.RegAsmMode, TRegAsmMode::asmGenAndRegTLB);
  EXPECT_EQ(action.ExportToTLB, "/out/Core.tlb");
  EXPECT_EQ(action.AssemblyPath, "/bin/Core.dll");
  EXPECT_TRUE(action.Codebase);
}

TEST(TLBExportFrame, EachFileHasItsBrowseButton) {
  TTLBExportFrame page;
  EXPECT_EQ(pt::Layout(page),
            pt::WithVersionPanel({"edOutputFile:edit", "btnOutputFile:button",
                                  "edNamesCaseFile:edit", "btnNamesCaseFile:button",
                                  "edAssembly:edit", "btnAssembly:button", "cbNoLogo:checkbox",
                                  "cbSilent:checkbox"}));
  pt::ExpectCaptions(page, {{"edOutputFile", "TypeLibrary Output File"},
                            {"edNamesCaseFile", "Capitalization File"},
                            {"edAssembly", "Assembly"},
                            {"cbNoLogo", "Don't display Logo"},
                            {"cbSilent", "Don't display success messages"}});
  pt::TAnsweringDialogs dialogs;
  struct TCase {
    const char* button;
    const char* filter;
    const char* file;
  };
  for (const TCase& c : {TCase{"btnOutputFile", TTLBExportFrame::kTlbFilter, "/out/Core.tlb"},
                         TCase{"btnNamesCaseFile", TTLBExportFrame::kNamesFilter, "/names.txt"},
                         TCase{"btnAssembly", TTLBExportFrame::kAssemblyFilter, "/Core.dll"}}) {
    dialogs.file = c.file;
    pt::Click(page, c.button);
    EXPECT_EQ(dialogs.filter, c.filter) << c.button;
  }
  pt::Click(page, "cbSilent", true);
  TTLBExportAction action;
  page.WriteActionData(action);
  EXPECT_EQ(action.OutputFile + "|" + action.NamesCaseFile + "|" + action.AssemblyName,
            "/out/Core.tlb|/names.txt|/Core.dll");
  EXPECT_TRUE(action.Silent);
  EXPECT_FALSE(action.NoLogo);
}

}  // namespace
}  // namespace wren
