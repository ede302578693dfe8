#include "WrenAssemblyInfoUpdaterAction.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <filesystem>

#include "TestSupport.h"
#include "WrenFiles.h"
#include "WrenRegister.h"
#include "host/WrenActionRegistry.h"
#include "host/WrenStepHost.h"

namespace wren {
namespace {

using test::ReadFile;
using test::TempDir;
using test::WriteFile;

const char kCs[] = "using System.Reflection;\n[assembly: AssemblyVersion(\"1.0.0.0\")]\n";

/// An updater action wired to a real step host whose log lines are collected.
struct Harness {
  Harness() {
    host.SetStopFlag(&stop);
    host.SetLogSink([this](TWrenLogStream, const std::string& text) { log.push_back(text); });
    action.SetHost(&host);
    action.BackupFiles = false;
  }
  bool Logged(const std::string& text) const {
    return std::find(log.begin(), log.end(), text) != log.end();
  }
  bool LoggedContaining(const std::string& part) const {
    return std::any_of(log.begin(), log.end(),
                       [&](const std::string& line) { return line.find(part) != std::string::npos; });
  }
  std::string Log() const {
    std::string all;
    for (const std::string& line : log) all += line + "\n";
    return all;
  }

  std::atomic<bool> stop{false};
  TWrenStepHost host;
  TWrenAssemblyInfoUpdaterAction action;
  std::vector<std::string> log;
};

/// Restores the atomic writer when a fault test ends, however it ends.
struct WriteFaultScope {
  explicit WriteFaultScope(size_t bytes) { SetAtomicWriteFailAfter(bytes); }
  ~WriteFaultScope() { SetAtomicWriteFailAfter(SIZE_MAX); }
};

TEST(AssemblyInfoUpdaterAction, WildcardSelectionWithAndWithoutRecurse) {
  TempDir tmp;
  for (const char* name : {"a/AssemblyInfo.cs", "a/b/AssemblyInfo.cs", "Z.CS", "m.cs", "notes.txt",
                           "c/deep/er/x.cs", "c/readme.md"})
    WriteFile(tmp / name, kCs);

  Harness h;
  h.host.SetVariable("SRC", tmp.path());
  h.action.Selection = {"%SRC%*.cs"};
  h.action.Recurse = true;
  ASSERT_TRUE(h.action.BuildFileList());
  // Sorted without regard to case, directories walked where they fall.
  EXPECT_EQ(h.action.FileList(),
            (TStrings{tmp / "a/AssemblyInfo.cs", tmp / "a/b/AssemblyInfo.cs",
                      tmp / "c/deep/er/x.cs", tmp / "m.cs", tmp / "Z.CS"}));

  h.action.Recurse = false;
  ASSERT_TRUE(h.action.BuildFileList());
  EXPECT_EQ(h.action.FileList(), (TStrings{tmp / "m.cs", tmp / "Z.CS"}));

  // A full run with Recurse updates every match and leaves the rest alone.
  h.action.Recurse = true;
  h.action.Attributes = {"AssemblyVersion=\"2.0\""};
  ASSERT_TRUE(h.action.Execute()) << h.Log();
  for (const char* name : {"a/AssemblyInfo.cs", "a/b/AssemblyInfo.cs", "c/deep/er/x.cs", "Z.CS"})
    EXPECT_EQ(ReadFile(tmp / name),
              "using System.Reflection;\r\n[assembly: AssemblyVersion(\"2.0\")]\r\n")
        << name;
  EXPECT_EQ(ReadFile(tmp / "notes.txt"), kCs);
  EXPECT_TRUE(h.Logged("Processing File : " + tmp / "c/deep/er/x.cs"));
}

TEST(AssemblyInfoUpdaterAction, FileNamedTwiceIsProcessedTwice) {
  TempDir tmp;
  WriteFile(tmp / "a.cs", kCs);
  Harness h;
  h.action.BackupFiles = true;
  h.action.Selection = {tmp / "a.cs", tmp / "a.cs"};
  h.action.GetScriptByName("OnProcessEntry")->text =
      "if EntryName == 'AssemblyVersion' then EntryValue = EntryValue .. '.1' end";
  ASSERT_TRUE(h.action.Execute()) << h.Log();
  EXPECT_EQ(ReadFile(tmp / "a.cs"),
            "using System.Reflection;\r\n[assembly: AssemblyVersion(\"1.0.0.0.1.1\")]\r\n");
  // The backup of the second pass holds the first pass's result.
  EXPECT_EQ(ReadFile(tmp / "a.cs.bak"),
            "using System.Reflection;\r\n[assembly: AssemblyVersion(\"1.0.0.0.1\")]\r\n");
  EXPECT_EQ(std::count(h.log.begin(), h.log.end(), "Processing File : " + tmp / "a.cs"), 2);
}

TEST(AssemblyInfoUpdaterAction, ReadOnlyOrMissingFileFailsTheRun) {
  TempDir tmp;
  for (const char* name : {"a.cs", "ro.cs", "c.cs"}) WriteFile(tmp / name, kCs);
  ::chmod((tmp / "ro.cs").c_str(), 0444);

  Harness h;
  h.action.Selection = {tmp / "a.cs", tmp / "ro.cs", tmp / "c.cs"};
  h.action.Attributes = {"AssemblyVersion='2.0'"};
  EXPECT_FALSE(h.action.Execute());
  EXPECT_TRUE(h.Logged("File : " + tmp / "ro.cs" + "- is read only!")) << h.Log();
  // Single quotes in the list still give the file's own double quotes.
  EXPECT_EQ(ReadFile(tmp / "a.cs"),
            "using System.Reflection;\r\n[assembly: AssemblyVersion(\"2.0\")]\r\n");
  EXPECT_EQ(ReadFile(tmp / "ro.cs"), kCs);
  EXPECT_EQ(ReadFile(tmp / "c.cs"), kCs) << "the run stops at the first failure";

  Harness missing;
  missing.action.Selection = {tmp / "nope.cs"};
  EXPECT_FALSE(missing.action.Execute());
  EXPECT_TRUE(missing.Logged("File : " + tmp / "nope.cs" + "- does not exist!"));
}

TEST(AssemblyInfoUpdaterAction, OnProcessFileScriptAddsAnEntryForOneFileOnly) {
  TempDir tmp;
  WriteFile(tmp / "a.cs", kCs);
  WriteFile(tmp / "b.cs", kCs);
  Harness h;
  h.action.Selection = {tmp / "a.cs", tmp / "b.cs"};
  h.action.Attributes = {"AssemblyVersion=\"3.1\"", "", "AssemblyDelaySign=false"};
  h.action.GetScriptByName("OnProcessFile")->text =
      "assert(Action.ClassName == 'TWrenAssemblyInfoUpdaterAction')\n"
      "if FileName:match('a%.cs$') then\n"
      "  AssemblyInfo:AddEntry('AssemblyCompany', 'Acme', true)\n"
      "  AssemblyInfo:RemoveEntry('AssemblyDelaySign')\n"
      "end";
  ASSERT_TRUE(h.action.Execute()) << h.Log();
  EXPECT_EQ(ReadFile(tmp / "a.cs"),
            "using System.Reflection;\r\n[assembly: AssemblyVersion(\"3.1\")]\r\n"
            "#region Assembly Information Added By Marrowby\r\n"
            "[assembly: AssemblyCompany(\"Acme\")]\r\n#endregion\r\n");
  // b.cs gets the list as entered: the script's change applied to a.cs only.
  EXPECT_EQ(ReadFile(tmp / "b.cs"),
            "using System.Reflection;\r\n[assembly: AssemblyVersion(\"3.1\")]\r\n"
            "#region Assembly Information Added By Marrowby\r\n"
            "[assembly: AssemblyDelaySign(false)]\r\n#endregion\r\n");
}

TEST(AssemblyInfoUpdaterAction, OnProcessEntryScriptChangesAValue) {
  TempDir tmp;
  WriteFile(tmp / "Lib.vb", "<Assembly: AssemblyTitle(\"x\")>\n<Assembly: AssemblyVersion(\"1.0\")>\n");
  Harness h;
  h.host.SetVariable("BUILD", "77");
  h.action.Selection = {tmp / "Lib.vb"};
  h.action.UpdateOnly = true;
  h.action.Attributes = {"AssemblyVersion=\"1.0.%BUILD%\"", "AssemblyCompany=\"Acme\""};
  h.action.GetScriptByName("OnProcessEntry")->text =
      "if EntryName == 'AssemblyTitle' then\n"
      "  EntryValue = 'Title of ' .. FileName:match('[^/]*$')\n"
      "end";
  ASSERT_TRUE(h.action.Execute()) << h.Log();
  // Update only: the missing AssemblyCompany is dropped and no region is written.
  EXPECT_EQ(ReadFile(tmp / "Lib.vb"),
            "<Assembly: AssemblyTitle(\"Title of Lib.vb\")>\r\n"
            "<Assembly: AssemblyVersion(\"1.0.77\")>\r\n");
  EXPECT_TRUE(h.Logged("Setting Attribute : AssemblyTitle Value : \"Title of Lib.vb\""));
}

TEST(AssemblyInfoUpdaterAction, ScriptErrorFailsTheStepWithItsLine) {
  TempDir tmp;
  WriteFile(tmp / "a.cs", kCs);
  Harness h;
  h.action.Selection = {tmp / "a.cs"};
  h.action.Attributes = {"AssemblyVersion=\"2.0\""};
  h.action.GetScriptByName("OnProcessEntry")->text = "local x = 1\nerror('boom')\n";
  EXPECT_FALSE(h.action.Execute());
  EXPECT_TRUE(h.LoggedContaining("OnProcessEntry:2: boom")) << h.Log();
  EXPECT_EQ(ReadFile(tmp / "a.cs"), kCs);
}

TEST(AssemblyInfoUpdaterAction, ExpansionFailures) {
  TempDir tmp;
  WriteFile(tmp / "a.cs", kCs);
  // In the selection: the step ends without an error result and touches nothing.
  Harness selection;
  selection.action.Selection = {"%NO_SUCH_VARIABLE_X1%/a.cs"};
  EXPECT_TRUE(selection.action.Execute());
  EXPECT_TRUE(selection.LoggedContaining("\"Selection\"")) << selection.Log();
  EXPECT_FALSE(selection.LoggedContaining("Processing File"));

  // In an attribute value: the run fails before the file is touched.
  Harness value;
  value.action.Selection = {tmp / "a.cs"};
  value.action.Attributes = {"AssemblyVersion=%NO_SUCH_VARIABLE_X1%"};
  EXPECT_FALSE(value.action.Execute());
  EXPECT_TRUE(value.LoggedContaining("\"AttributeValue\"")) << value.Log();
  EXPECT_EQ(ReadFile(tmp / "a.cs"), kCs);
}

TEST(AssemblyInfoUpdaterAction, FailedSaveLeavesTheOriginalByteIdentical) {
  TempDir tmp;
  const std::string original = kCs + std::string(4096, 'x') + "\n";
  WriteFile(tmp / "a.cs", original);
  Harness h;
  h.action.Selection = {tmp / "a.cs"};
  h.action.Attributes = {"AssemblyVersion=\"2.0\""};
  {
    WriteFaultScope fault(100);
    EXPECT_FALSE(h.action.Execute());
  }
  EXPECT_EQ(ReadFile(tmp / "a.cs"), original);
  EXPECT_TRUE(h.LoggedContaining(tmp / "a.cs")) << h.Log();
  const auto entries = std::distance(std::filesystem::directory_iterator(tmp.path()),
                                     std::filesystem::directory_iterator());
  EXPECT_EQ(entries, 1) << "no temporary file left beside the target";
}

TEST(AssemblyInfoUpdaterAction, StopRequestProcessesNothing) {
  TempDir tmp;
  WriteFile(tmp / "a.cs", kCs);
  Harness h;
  h.action.Selection = {tmp / "a.cs"};
  h.action.Attributes = {"AssemblyVersion=\"2.0\""};
  h.stop = true;
  EXPECT_TRUE(h.action.Execute());
  EXPECT_EQ(ReadFile(tmp / "a.cs"), kCs);
  EXPECT_TRUE(h.action.CanTerminate());
}

TEST(AssemblyInfoUpdaterAction, ValidationPropertiesAndScripts) {
  struct Sink : IWrenActionValidationError {
    void AddError(const std::string& field, const std::string& message) override {
      errors.push_back(field + ": " + message);
    }
    std::vector<std::string> errors;
  } sink;
  TWrenAssemblyInfoUpdaterAction action;
  EXPECT_FALSE(action.Validate(sink));
  EXPECT_EQ(sink.errors, std::vector<std::string>{"Files: No files have been added for updating"});
  action.Selection = {"x.cs"};
  EXPECT_TRUE(action.Validate(sink));

  // Stored names, order and values at creation are what projects hold.
  std::vector<std::string> shown;
  for (const TPublishedProperty& p : action.GetPublishedProperties())
    shown.push_back(p.name + "=" + PropertyValueToString(p, p.get(action)));
  EXPECT_EQ(shown, (std::vector<std::string>{"Selection=x.cs", "BackupFiles=true", "Recurse=false",
                                             "Attributes=", "UpdateOnly=false"}));

  ASSERT_EQ(action.Scripts().size(), 2u);
  EXPECT_EQ(action.Scripts()[0].name, "OnProcessFile");
  EXPECT_EQ(action.Scripts()[1].name, "OnProcessEntry");
  EXPECT_NE(action.Scripts()[0].params.Find("AssemblyInfo"), nullptr);
  EXPECT_NE(action.Scripts()[1].params.Find("EntryValue"), nullptr);
}

TEST(AssemblyInfoUpdaterAction, Registration) {
  ClearRegistrations();
  WrenRegister(true);
  const TWrenRegisteredAction* row = FindRegisteredAction("TWrenAssemblyInfoUpdaterAction");
  ASSERT_NE(row, nullptr);
  EXPECT_EQ(row->displayName, "AssemblyInfo Updater");
  EXPECT_EQ(row->category, "Compilers");
  EXPECT_EQ(row->iconResourceName, "ASSEMBLYUPATER");
  std::vector<std::string> pages;
  for (const TWrenFrameClass& page : row->pages) pages.push_back(page.name);
  EXPECT_EQ(pages, (std::vector<std::string>{"TAssemblyInfoUpdaterFrame",
                                             "TAssemblyInfoUpdaterEntriesFrame"}));
  std::vector<std::string> methods;
  for (const TWrenScriptMethodInfo& m : WrenRegistrations().scriptMethods) {
    if (m.className != "TWrenAssemblyInfo") continue;
    std::string signature = m.methodName + "(";
    for (const std::string& t : m.parameterTypes) signature += t + ",";
    methods.push_back(signature + ")");
  }
  EXPECT_EQ(methods, (std::vector<std::string>{"AddEntry(string,string,boolean,)",
                                               "RemoveEntry(string,)"}));

  // Outside the design environment the action and its script methods stay, the pages go.
  ClearRegistrations();
  WrenRegister(false);
  row = FindRegisteredAction("TWrenAssemblyInfoUpdaterAction");
  ASSERT_NE(row, nullptr);
  EXPECT_TRUE(row->pages.empty());
  EXPECT_EQ(std::count_if(WrenRegistrations().scriptMethods.begin(),
                          WrenRegistrations().scriptMethods.end(),
                          [](const auto& m) { return m.className == "TWrenAssemblyInfo"; }),
            2);
  ClearRegistrations();
}

}  // namespace
}  // namespace wren
