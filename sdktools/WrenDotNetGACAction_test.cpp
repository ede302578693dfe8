#include "sdktools/WrenDotNetGACAction.h"

#include "SdkToolTestKit_test.h"

namespace wren::test {
namespace {

using GACActionTest = TSdkToolTest;

template <class A>
std::function<std::unique_ptr<TWrenDotNetAction>()> Maker() {
  return [] { return std::make_unique<A>(); };
}

TEST_F(GACActionTest, InstallCommandLines) {
  const TSettings reference = {{"ReferenceCount", "true"},
                               {"RefScheme", "UNINSTALL_KEY"},
                               {"RefID", "MyApp"},
                               {"RefDescription", "My App"}};
  auto with = [](TSettings base, const TSettings& more) {
    base.insert(base.end(), more.begin(), more.end());
    return base;
  };
  CheckCommandCases(
      Maker<TGACInstallAction>(),
      {
          {"single assembly, forced, with reference",
           with(reference, {{"Force", "true"}, {"AssemblyPath", "%WORK%/My Lib.dll"}}),
           true,
           R"(/f /r "UNINSTALL_KEY" "MyApp" "My App" /i "{W}/My Lib.dll")",
           {"/f", "/r", "UNINSTALL_KEY", "MyApp", "My App", "/i", "{W}/My Lib.dll"}},
          {"plain single assembly", {{"AssemblyPath", "Core.dll"}}, true, "/i Core.dll",
           {"/i", "Core.dll"}},
          {"list file",
           {{"UseListFile", "true"},
            {"AssemblyListFile", "%WORK%/list.txt"},
            {"AssemblyPath", "ignored.dll"}},
           true,
           R"(/il "{W}/list.txt")",
           {"/il", "{W}/list.txt"}},
          {"list file set but not used",
           {{"AssemblyListFile", "list.txt"}, {"AssemblyPath", "Core.dll"}},
           true,
           "/i Core.dll",
           {"/i", "Core.dll"}},
          // The quote is not escaped: the tool sees the words run together as the Windows rules
          // split them.
          {"quote inside a reference value",
           {{"ReferenceCount", "true"},
            {"RefScheme", "S"},
            {"RefID", "My\"App"},
            {"RefDescription", "D"},
            {"AssemblyPath", "a.dll"}},
           true,
           R"(/r "S" "My"App" "D" /i a.dll)",
           {"/r", "S", "MyApp D /i a.dll"}},
          {"empty reference id", with(reference, {{"RefID", ""}, {"AssemblyPath", "a.dll"}}),
           false, "", {}, "\"ID\""},
          {"forced with a failed reference expansion",
           with(reference,
                {{"Force", "true"}, {"RefScheme", "%NO_SUCH_VARIABLE%"}, {"AssemblyPath", "a.dll"}}),
           false, "", {}, "\"Scheme\""},
          {"description expands to blank",
           with(reference, {{"RefDescription", "%EMPTY%"}, {"AssemblyPath", "a.dll"}}), false, "",
           {}, "\"Description\""},
          {"assembly path expands to blank", {{"AssemblyPath", "%EMPTY%"}}, false, "", {},
           "\"Assembly Path\""},
          {"list file expands to blank", {{"UseListFile", "true"}, {"AssemblyListFile", "%EMPTY%"}},
           false, "", {}, "\"Assembly Listfile\""},
      });
}

TEST_F(GACActionTest, UninstallCommandLines) {
  CheckCommandCases(
      Maker<TGACUninstallAction>(),
      {
          {"by display name",
           {{"AssemblyName", "My Lib, Version=1.0.0.0"}},
           true,
           R"(/u "My Lib, Version=1.0.0.0")",
           {"/u", "My Lib, Version=1.0.0.0"}},
          {"by file, with reference",
           {{"UseAssemblyPath", "true"},
            {"AssemblyPath", "%WORK%/My Lib.dll"},
            {"AssemblyName", "ignored"},
            {"ReferenceCount", "true"},
            {"RefScheme", "FILEPATH"},
            {"RefID", "c:\\app"},
            {"RefDescription", "App"}},
           true,
           R"(/r "FILEPATH" "c:\app" "App" /u "{W}/My Lib.dll")",
           {"/r", "FILEPATH", "c:\\app", "App", "/u", "{W}/My Lib.dll"}},
          {"list file wins over the file",
           {{"Force", "true"},
            {"UseListFile", "true"},
            {"UseAssemblyPath", "true"},
            {"AssemblyListFile", "%WORK%/list.txt"},
            {"AssemblyPath", "a.dll"}},
           true,
           R"(/f /ul "{W}/list.txt")",
           {"/f", "/ul", "{W}/list.txt"}},
          {"name expands to blank", {{"AssemblyName", "%EMPTY%"}}, false, "", {}, "\"Assembly\""},
          {"file expands to blank",
           {{"UseAssemblyPath", "true"}, {"AssemblyPath", "%EMPTY%"}, {"AssemblyName", "x"}},
           false, "", {}, "\"Assembly Path\""},
      });
}

TEST_F(GACActionTest, DownloadCacheIgnoresForceAndReference) {
  CheckCommandCases(Maker<TGACListAction>(),
                    {
                        {"list", {}, true, "/ldl", {"/ldl"}},
                        {"list, forced with reference",
                         {{"Force", "true"}, {"ReferenceCount", "true"}},
                         true,
                         "/ldl",
                         {"/ldl"}},
                        {"delete, forced",
                         {{"DeleteDownloadCache", "true"}, {"Force", "true"}},
                         true,
                         "/cdl",
                         {"/cdl"}},
                    });
}

// Install and uninstall stop at the first gap; the reference fields are left to the run.
TEST_F(GACActionTest, ValidationStopsAtFirstGap) {
  CheckValidation(
      [] { return std::make_unique<TGACInstallAction>(); },
      {
          {"nothing set", {}, {{"Assembly Path", "Assembly path has not been set"}}},
          {"list file chosen, none set",
           {{"UseListFile", "true"}, {"AssemblyPath", "a.dll"}},
           {{"List File", "Assembly list file has not been set"}}},
          {"reference fields are not checked",
           {{"AssemblyPath", "a.dll"}, {"ReferenceCount", "true"}},
           {}},
      });
  CheckValidation(
      [] { return std::make_unique<TGACUninstallAction>(); },
      {
          {"nothing set", {}, {{"Assembly Name", "Assembly name has not been set"}}},
          {"by file, none set",
           {{"UseAssemblyPath", "true"}, {"AssemblyName", "x"}},
           {{"Assembly Path", "Assembly path has not been set"}}},
          {"both flags: only the list file is tested",
           {{"UseListFile", "true"}, {"UseAssemblyPath", "true"}, {"AssemblyListFile", "l.txt"}},
           {}},
          {"both flags, list file missing",
           {{"UseListFile", "true"}, {"UseAssemblyPath", "true"}},
           {{"List File", "Assembly list file has not been set"}}},
      });
  CheckValidation([] { return std::make_unique<TGACListAction>(); }, {{"nothing set", {}, {}}});
}

}  // namespace
}  // namespace wren::test
