#include "sdktools/WrenDotNetGACAction.h"

#include "SdkToolTestKit_test.h"

namespace wren::test {

using GACActionTest = TSdkToolTest;

const std::string kRef =
    "ReferenceCount=true|RefScheme=UNINSTALL_KEY|RefID=MyApp|RefDescription=My App|";
const std::string kListFile = "List File: Assembly list file has not been set";

// Validation stops at the first gap and leaves the reference fields to the run.
TEST_F(GACActionTest, Install) {
  CheckCommandCases<TGACInstallAction>(
      {{"single assembly, forced, with reference",
        kRef + "Force=true|AssemblyPath=%WORK%/My Lib.dll",
        R"(/f /r "UNINSTALL_KEY" "MyApp" "My App" /i "{W}/My Lib.dll")",
        {"/f", "/r", "UNINSTALL_KEY", "MyApp", "My App", "/i", "{W}/My Lib.dll"}},
       {"plain single assembly", "AssemblyPath=Core.dll", "/i Core.dll", {"/i", "Core.dll"}},
       {"list file", "UseListFile=true|AssemblyListFile=%WORK%/list.txt|AssemblyPath=ignored.dll",
        R"(/il "{W}/list.txt")", {"/il", "{W}/list.txt"}},
       {"list file set but not used", "AssemblyListFile=list.txt|AssemblyPath=Core.dll",
        "/i Core.dll", {"/i", "Core.dll"}},
       // The quote is not escaped: the tool sees the words run together as Windows splits them.
       {"quote inside a reference value",
        "ReferenceCount=true|RefScheme=S|RefID=My\"App|RefDescription=D|AssemblyPath=a.dll",
        R"(/r "S" "My"App" "D" /i a.dll)", {"/r", "S", "MyApp D /i a.dll"}}},
      {{kRef + "RefID=|AssemblyPath=a.dll", "\"ID\""},
       {kRef + "Force=true|RefScheme=%NO_SUCH_VARIABLE%|AssemblyPath=a.dll", "\"Scheme\""},
       {kRef + "RefDescription=%EMPTY%|AssemblyPath=a.dll", "\"Description\""},
       {"AssemblyPath=%EMPTY%", "\"Assembly Path\""},
       {"UseListFile=true|AssemblyListFile=%EMPTY%", "\"Assembly Listfile\""}});
  CheckValidation<TGACInstallAction>(
      {{"", {"Assembly Path: Assembly path has not been set"}},
       {"UseListFile=true", {kListFile}},
       {"AssemblyPath=a.dll|ReferenceCount=true", {}}});
}

// Validation tests the list file, else the file, else the name, and stops at the first gap.
TEST_F(GACActionTest, Uninstall) {
  CheckCommandCases<TGACUninstallAction>(
      {{"by display name", "AssemblyName=My Lib, Version=1.0.0.0",
        R"(/u "My Lib, Version=1.0.0.0")", {"/u", "My Lib, Version=1.0.0.0"}},
       {"by file, with reference",
        "UseAssemblyPath=true|AssemblyPath=%WORK%/My Lib.dll|AssemblyName=ignored|"
        "ReferenceCount=true|RefScheme=FILEPATH|RefID=c:\\app|RefDescription=App",
        R"(/r "FILEPATH" "c:\app" "App" /u "{W}/My Lib.dll")",
        {"/r", "FILEPATH", "c:\\app", "App", "/u", "{W}/My Lib.dll"}},
       {"list file wins over the file",
        "Force=true|UseListFile=true|UseAssemblyPath=true|AssemblyListFile=%WORK%/list.txt|"
        "AssemblyPath=a.dll",
        R"(/f /ul "{W}/list.txt")", {"/f", "/ul", "{W}/list.txt"}}},
      {{"AssemblyName=%EMPTY%", "\"Assembly\""},
       {"UseAssemblyPath=true|AssemblyPath=%EMPTY%|AssemblyName=x", "\"Assembly Path\""}});
  CheckValidation<TGACUninstallAction>(
      {{"", {"Assembly Name: Assembly name has not been set"}},
       {"UseAssemblyPath=true|AssemblyName=x", {"Assembly Path: Assembly path has not been set"}},
       {"UseListFile=true|UseAssemblyPath=true|AssemblyListFile=l.txt", {}},
       {"UseListFile=true|UseAssemblyPath=true", {kListFile}}});
}

TEST_F(GACActionTest, DownloadCacheIgnoresForceAndReference) {
  CheckCommandCases<TGACListAction>(
      {{"list, forced with reference", "Force=true|ReferenceCount=true", "/ldl", {"/ldl"}},
       {"delete, forced", "DeleteDownloadCache=true|Force=true", "/cdl", {"/cdl"}}},
      {});
  CheckValidation<TGACListAction>({{"", {}}});
}

}  // namespace wren::test
