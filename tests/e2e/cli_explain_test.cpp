// The marrowby executable explains itself: help, version, exit codes, "did you mean", hints that
// name the command which fixes a problem, completion scripts.
#include <gtest/gtest.h>

#include <map>

#include "CliMachine.h"
#include "TestSupport.h"

namespace wren {
namespace {

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

TEST(CliExplains, HelpVersionAndMistypedWords) {
  CliMachine m;
  m.WriteProject("p.mbproj", SnStep("-q"));
  const struct {
    std::vector<std::string> args;
    int exitCode;
    std::string expected;  // in stdout or stderr
  } cases[] = {
      {{"--version"}, 0, "marrowby 1."},
      {{"--help"}, 0, "143  the build was terminated (SIGTERM)"},
      {{"--help"}, 0, "MARROWBY_REGISTRY"},
      {{"help"}, 0, "completion"},
      {{"help", "run"}, 0, "--junit"},
      {{"help", "vaildate"}, 2, "unknown command 'vaildate'; did you mean validate?"},
      {{"rnu", m.dir / "p.mbproj"}, 2, "unknown command 'rnu'; did you mean run?"},
      {{"--options", m.dir / "o.xml", "valdate"}, 2, "did you mean validate?"},
      {{"run", m.dir / "p.mbproj", "--jsn"}, 2, "unknown option '--jsn'; did you mean --json?"},
      {{"run", m.dir / "p.mbproj", "--dryrun"}, 2, "did you mean --dry-run?"},
      {{}, 2, "a command is required"},
      {{"describe", "TSNVerifyAsembly"}, 2, "did you mean TSNVerifyAssembly?"},
      {{"completion", "fish"}, 2, "bash and zsh"},
      // The help lists every command, also when the command line names one.
      {{"--help"}, 0, "setup-mono"},
      {{"--help", "actions"}, 0, "Usage: marrowby actions [OPTIONS]"},
      {{"actions", "--help"}, 0, "--json"},
      // Another command's name after the command is a word it does not take.
      {{"actions", "run"}, 2, "unexpected argument 'run'"},
      {{"actions", "--jsn"}, 2, "did you mean --json?\nRun 'marrowby help actions'"},
  };
  for (const auto& c : cases) {
    std::string out, err;
    EXPECT_EQ(m.Run(c.args, &out, &err), c.exitCode) << c.args.size() << out << err;
    EXPECT_TRUE(Contains(out + err, c.expected)) << c.expected << "\n" << out << err;
  }
  // Nothing ran for the mistyped commands and options.
  EXPECT_TRUE(test::RecordedCall(m.sn).is_null());
}

TEST(CliExplains, OptionsSetRefusesNamesNothingReads) {
  CliMachine m;
  std::string out, err;
  EXPECT_EQ(m.Run({"options", "set", "NAnt", "NAntLocaton", "/y"}, &out, &err), 2);
  EXPECT_TRUE(Contains(err, "no option 'NAntLocaton'; did you mean NAntLocation?")) << err;
  EXPECT_EQ(m.Run({"options", "set", "NUnt", "NUnitLocation", "/y"}, &out, &err), 2);
  EXPECT_TRUE(Contains(err, "did you mean NUnit")) << err;
  EXPECT_FALSE(test::Exists(m.dir / "options.xml")) << "a refused option was stored";

  // A name in another case is the option itself, stored under its own spelling.
  ASSERT_EQ(m.Run({"options", "set", "nant", "nantlocation", "/opt/nant.exe"}, &out, &err), 0)
      << err;
  ASSERT_EQ(m.Run({"options", "--json"}, &out, &err), 0) << err;
  bool found = false;
  for (const nlohmann::json& o : nlohmann::json::parse(out))
    if (o["key"] == "NAnt") found = o["values"]["NAntLocation"] == "/opt/nant.exe";
  EXPECT_TRUE(found) << out;
}

TEST(CliExplains, OptionsDialogMessagesNameTheCommandThatFixesThem) {
  CliMachine m;
  m.WriteProject("nant.mbproj",
                 "    <Action class=\"TNAntAction\">\n"
                 "      <Property name=\"BuildFile\">%ProjectDir%/default.build</Property>\n"
                 "    </Action>\n");
  std::string out, err;
  EXPECT_EQ(m.Run({"validate", m.dir / "nant.mbproj"}, &out, &err), 2) << out << err;
  const std::string message = "Path to nant.exe not defined, please check Tools->Options\n";
  const std::string hint = "  fix: marrowby options set NAnt NAntLocation PATH\n";
  EXPECT_TRUE(Contains(out, message + hint)) << out;
  EXPECT_EQ(m.Run({"run", m.dir / "nant.mbproj"}, &out, &err), 2);
  EXPECT_TRUE(Contains(out, message + hint)) << out;

  // The command the hint names is the fix.
  test::WriteFile(m.dir / "nant/nant.exe", "");
  test::WriteFile(m.dir / "default.build", "<project/>\n");  // the input the step names
  ASSERT_EQ(m.Run({"options", "set", "NAnt", "NAntLocation", m.dir / "nant/nant.exe"}, &out, &err),
            0)
      << err;
  EXPECT_EQ(m.Run({"validate", m.dir / "nant.mbproj"}, &out, &err), 0) << out << err;
  EXPECT_FALSE(Contains(out, "fix:")) << out;
}

TEST(CliExplains, ActionsNameStepsAsTheBuildLogDoes) {
  CliMachine m;
  m.WriteProject("p.mbproj",
                 SnStep("-q") + "    <Action class=\"TSNVerifyAssembly\">\n"
                                "      <Property name=\"Assembly\">a.dll</Property>\n"
                                "    </Action>\n");
  std::string out, err;
  ASSERT_EQ(m.Run({"actions", "--json"}, &out, &err), 0) << err;
  std::map<std::string, std::string> stepNames;
  for (const nlohmann::json& a : nlohmann::json::parse(out))
    stepNames[a["class"].get<std::string>()] = a["displayName"].get<std::string>();
  ASSERT_EQ(m.Run({"run", m.dir / "p.mbproj", "--dry-run", "--json"}, &out, &err), 0) << err;
  int steps = 0;
  for (const nlohmann::json& e : JsonLines(out))
    if (e["event"] == "step") {
      ++steps;
      EXPECT_EQ(e["name"], stepNames[e["class"].get<std::string>()]) << e.dump();
    }
  EXPECT_EQ(steps, 2);
  ASSERT_EQ(m.Run({"describe", "TSNVerifyAssembly", "--json"}, &out, &err), 0) << err;
  EXPECT_EQ(nlohmann::json::parse(out)["displayName"], stepNames["TSNVerifyAssembly"]);
  ASSERT_EQ(m.Run({"actions"}, &out, &err), 0) << err;
  EXPECT_TRUE(Contains(out, "Verify Strong Name [SN]  (TSNVerifyAssembly, icon VERIFYSN)\n"))
      << out;
}

TEST(CliExplains, DescribeShowsWhatThePropertyPagesSay) {
  CliMachine m;
  std::string out, err;
  ASSERT_EQ(m.Run({"describe", "TWrenCSharpCompilerAction"}, &out, &err), 0) << err;
  EXPECT_TRUE(Contains(out, "      caption: File(s) to compile:\n"
                            "      hint: (eg. *.cs or MyFile.cs, separate multiple files with a "
                            "semicolon)\n"
                            "      list separator: ;\n"))
      << out;
  EXPECT_TRUE(Contains(out, "      caption: Project Directory:\n      path\n")) << out;
  ASSERT_EQ(m.Run({"describe", "TGACInstallAction", "--json"}, &out, &err), 0) << err;
  std::map<std::string, nlohmann::json> props;
  const nlohmann::json described = nlohmann::json::parse(out);
  for (const nlohmann::json& p : described["properties"])
    props[p["name"].get<std::string>()] = p;
  EXPECT_EQ(props["AssemblyListFile"]["caption"], "Assembly ListFile");
  EXPECT_EQ(props["AssemblyListFile"]["path"], true);
  EXPECT_EQ(props["Force"]["path"], false);
  EXPECT_EQ(props["Force"]["separator"], "");
  // A property no page edits keeps the fields, empty.
  EXPECT_EQ(props["DotNetToolType"]["caption"], "");
}

TEST(CliExplains, MonoHiveNoteOnlyWhenTheHiveIsMade) {
  test::TempDir home;
  // No --registry: the host builds the Mono hive under this HOME on first use.
  const std::vector<std::string> command = {
      "/usr/bin/env", "-u", "MARROWBY_REGISTRY", "HOME=" + home.path(),
      "XDG_CONFIG_HOME=" + home / "config", MARROWBY_EXE, "--options", home / "options.xml",
      "actions"};
  std::string out, err;
  ASSERT_EQ(test::RunProgram(command, &out, "", &err), 0) << err;
  EXPECT_TRUE(Contains(err, "no registry configured; using Mono's tools")) << err;
  ASSERT_EQ(test::RunProgram(command, &out, "", &err), 0) << err;
  EXPECT_EQ(err, "");
  EXPECT_TRUE(Contains(out, "Generate Key Pair [SN]")) << out;
}

TEST(CliExplains, BashCompletionOffersCommandsOptionsAndClasses) {
  CliMachine m;
  std::string script, err;
  ASSERT_EQ(m.Run({"completion", "bash"}, &script, &err), 0) << err;
  test::WriteFile(m.dir / "marrowby.bash", script);
  std::string help, zsh;
  ASSERT_EQ(m.Run({"help"}, &help, &err), 0);
  ASSERT_EQ(m.Run({"completion", "zsh"}, &zsh, &err), 0);

  // Completion asks the installed marrowby for the class names: a wrapper on PATH stands for it.
  test::WriteFile(m.dir / "bin/marrowby",
                  "#!/bin/sh\nexec '" + std::string(MARROWBY_EXE) + "' --registry '" +
                      m.dir / "registry.reg" + "' --options '" + m.dir / "options.xml" +
                      "' \"$@\"\n");
  ASSERT_EQ(test::RunProgram({"chmod", "+x", m.dir / "bin/marrowby"}), 0);
  auto complete = [&](const std::string& words) {
    std::string out;
    const std::string program = "PATH='" + m.dir / "bin" + "':$PATH; source '" +
                                m.dir / "marrowby.bash" + "'; COMP_WORDS=(" + words +
                                "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _marrowby; "
                                "printf '%s\\n' \"${COMPREPLY[@]}\"";
    EXPECT_EQ(test::RunProgram({"bash", "-c", program}, &out), 0) << out;
    return out;
  };
  EXPECT_EQ(complete("marrowby val"), "validate\n");
  EXPECT_EQ(complete("marrowby --registry x.reg rem"), "remove\n");
  EXPECT_EQ(complete("marrowby run p.mbproj --dr"), "--dry-run\n");
  EXPECT_EQ(complete("marrowby describe TSNVerifyA"), "TSNVerifyAssembly\n");
  EXPECT_EQ(complete("marrowby help setu"), "setup-mono\n");
  // Every command the help lists is one the script completes.
  const std::string all = complete("marrowby ''");
  const size_t list = help.find("Subcommands:");
  ASSERT_NE(list, std::string::npos) << help;
  std::istringstream lines(help.substr(list));
  std::string line;
  std::getline(lines, line);
  int commands = 0;
  while (std::getline(lines, line) && line.rfind("  ", 0) == 0) {
    const std::string name = line.substr(2, line.find(' ', 2) - 2);
    ++commands;
    EXPECT_TRUE(Contains("\n" + all, "\n" + name + "\n")) << name;
    EXPECT_TRUE(Contains(zsh, "'" + name + ":")) << name;
  }
  EXPECT_GT(commands, 10);
  // zsh parses its script (the real zsh: scripts/setup.sh installs it).
  test::WriteFile(m.dir / "_marrowby", zsh);
  std::string zshOut;
  EXPECT_EQ(test::RunProgram({"zsh", "-n", m.dir / "_marrowby"}, &zshOut), 0) << zshOut;
}

}  // namespace
}  // namespace wren
