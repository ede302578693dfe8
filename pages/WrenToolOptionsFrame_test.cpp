#include "pages/WrenToolOptionsFrame.h"

#include <gtest/gtest.h>

#include <memory>

#include "pages/WrenPageTesting.h"
#include "tools/WrenDemeanorOptions.h"
#include "tools/WrenDotfuscatorOptions.h"
#include "tools/WrenFxCopOptions.h"
#include "tools/WrenNDocOptions.h"
#include "tools/WrenXenoCodeOptions.h"

namespace wren {
namespace {

using namespace pagetest;

TEST(ToolOptionsPages, TheLocationEditAndItsBrowseButtonReachTheOptions) {
  struct TCase {
    std::unique_ptr<TToolOptionsFrame> page;
    std::unique_ptr<TWrenToolOptions> options;
    const char* caption;
    const char* program;  // a pattern the browse filter offers
  };
  TCase cases[] = {
      {std::make_unique<TNDocOptionsFrame>(), std::make_unique<TWrenNDocOptions>(),
       "Location of NDocConsole.exe", "NDocConsole.exe"},
      {std::make_unique<TFxCopOptionsFrame>(), std::make_unique<TWrenFxCopOptions>(),
       "Location of FxCopCmd.exe", "FxCopCmd.exe"},
      {std::make_unique<TDotfuscatorOptionsFrame>(), std::make_unique<TWrenDotfuscatorOptions>(),
       "Location of the console Dotfuscator", "dotfuscator*.exe"},
      {std::make_unique<TDemeanorOptionsFrame>(), std::make_unique<TWrenDemeanorOptions>(),
       "Location of Demeanor.exe", "Demeanor.exe"},
      {std::make_unique<TXenoCodeOptionsFrame>(), std::make_unique<TWrenXenoCodeOptions>(),
       "Location of Xenocode's command-line program", "*.exe"},
  };
  TAnsweringDialogs dialogs;
  for (TCase& c : cases) {
    SCOPED_TRACE(c.caption);
    TToolOptionsFrame& page = *c.page;
    c.options->SetLocation("/opt/old/tool.exe");
    page.ReadOptions(*c.options);
    EXPECT_EQ(Layout(page), (std::vector<std::string>{"edLocation:edit", "btnLocation:button"}));
    EXPECT_EQ(Control(page, "edLocation").caption, c.caption);
    EXPECT_EQ(Control(page, "edLocation").text, "/opt/old/tool.exe");

    dialogs.file.clear();
    Click(page, "btnLocation");
    EXPECT_NE(dialogs.filter.find(c.program), std::string::npos) << dialogs.filter;
    EXPECT_EQ(Control(page, "edLocation").text, "/opt/old/tool.exe");
    dialogs.file = "/opt/new/tool.exe";
    Click(page, "btnLocation");
    page.WriteOptions(*c.options);
    EXPECT_EQ(c.options->GetLocation(), "/opt/new/tool.exe");
    Type(page, "edLocation", "/usr/local/bin/tool.exe");
    page.WriteOptions(*c.options);
    EXPECT_EQ(c.options->GetLocation(), "/usr/local/bin/tool.exe");
  }
}

}  // namespace
}  // namespace wren
