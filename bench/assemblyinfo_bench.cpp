// The AssemblyInfo updater against `sed -i -E` doing the same three replacements on the same tree
// of generated C# sources, and against the floor: a C loop that reads each known file, writes the
// new bytes to a temporary file and renames it over the file. All rewrite real files; each run
// starts from freshly written files, and afterwards every tree must hold the same bytes, so no
// side skips work. The updater also runs with backups (its default) against itself without.
// The trees go under $TMPDIR: run with TMPDIR=/dev/shm for tmpfs, on a disk for the backup cost.
#include <benchmark/benchmark.h>
#include <spawn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "assemblyinfo/WrenAssemblyInfoUpdaterAction.h"
#include "runtime/WrenStepHost.h"

extern char** environ;

namespace {

namespace fs = std::filesystem;
using namespace wren;

constexpr int kGroups = 50;
constexpr int kProjectsPerGroup = 100;  // 5,000 files
// Arguments per sed process; a build script would use xargs the same way.
constexpr size_t kSedBatch = 1000;

std::string Source(int project) {
  const std::string n = std::to_string(project);
  return "using System.Reflection;\r\n"
         "using System.Runtime.CompilerServices;\r\n"
         "using System.Runtime.InteropServices;\r\n"
         "\r\n"
         "// General information about the assembly.\r\n"
         "[assembly: AssemblyTitle(\"Project" + n + "\")]\r\n"
         "[assembly: AssemblyDescription(\"Generated project " + n + "\")]\r\n"
         "[assembly: AssemblyConfiguration(\"\")]\r\n"
         "[assembly: AssemblyCompany(\"Old Company\")]\r\n"
         "[assembly: AssemblyProduct(\"Product" + n + "\")]\r\n"
         "[assembly: AssemblyCopyright(\"Copyright 2004\")]\r\n"
         "[assembly: AssemblyTrademark(\"\")]\r\n"
         "[assembly: AssemblyCulture(\"\")]\r\n"
         "[assembly: ComVisible(false)]\r\n"
         "\r\n"
         "// Version information.\r\n"
         "[assembly: AssemblyVersion(\"1.0.*\")]\r\n"
         "[assembly: AssemblyFileVersion(\"1.0.0." + n + "\")]\r\n";
}

/// The generated tree: root/GroupNN/ProjectNNNN/Properties/AssemblyInfo.cs.
class Tree {
 public:
  explicit Tree(const std::string& name) {
    std::string templ = (fs::temp_directory_path() / ("asminfo-bench-" + name + "-XXXXXX")).string();
    if (!::mkdtemp(templ.data())) throw std::runtime_error("mkdtemp failed");
    root_ = templ;
    int project = 0;
    for (int g = 0; g < kGroups; ++g)
      for (int p = 0; p < kProjectsPerGroup; ++p, ++project) {
        const fs::path dir = fs::path(root_) / ("Group" + std::to_string(g)) /
                             ("Project" + std::to_string(project)) / "Properties";
        fs::create_directories(dir);
        files_.push_back((dir / "AssemblyInfo.cs").string());
      }
  }
  ~Tree() {
    std::error_code ec;
    fs::remove_all(root_, ec);
  }
  /// Writes every file afresh and drops the backups of the last run (outside the timed region).
  void Regenerate() const {
    for (size_t i = 0; i < files_.size(); ++i) {
      std::ofstream(files_[i], std::ios::binary | std::ios::trunc) << Source(static_cast<int>(i));
      ::unlink((files_[i] + ".bak").c_str());
    }
  }
  const std::string& root() const { return root_; }
  const std::vector<std::string>& files() const { return files_; }
  /// All files' bytes in order, to compare two trees.
  std::string Contents() const {
    std::string all;
    for (const std::string& f : files_) {
      std::ifstream in(f, std::ios::binary);
      std::stringstream ss;
      ss << in.rdbuf();
      all += ss.str();
    }
    return all;
  }

 private:
  std::string root_;
  std::vector<std::string> files_;
};

const std::vector<std::string> kSedScript = {
    "-e", R"(s/^\[assembly: AssemblyVersion\("[^"]*"\)\]/[assembly: AssemblyVersion("2.0.0.1")]/)",
    "-e", R"(s/^\[assembly: AssemblyFileVersion\("[^"]*"\)\]/[assembly: AssemblyFileVersion("2.0.0.1")]/)",
    "-e", R"(s/^\[assembly: AssemblyCompany\("[^"]*"\)\]/[assembly: AssemblyCompany("Acme Ltd")]/)"};

void Run(const std::vector<std::string>& args) {
  std::vector<char*> argv;
  for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
  argv.push_back(nullptr);
  pid_t pid = 0;
  if (posix_spawnp(&pid, argv[0], nullptr, nullptr, argv.data(), environ) != 0)
    throw std::runtime_error("cannot start " + args[0]);
  int status = 0;
  ::waitpid(pid, &status, 0);
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) throw std::runtime_error(args[0] + " failed");
}

/// What a build script would run for the same job: find the sources below the root, then sed.
void RunFindAndSed(const std::string& root) {
  std::vector<std::string> args = {
      "/bin/sh", "-c",
      "root=$1; shift; find \"$root\" -type f -iname '*.cs' -print0 | xargs -0 sed -i -E \"$@\"",
      "sh", root};
  args.insert(args.end(), kSedScript.begin(), kSedScript.end());
  Run(args);
}

/// sed alone, given the file list up front in batches (the search is not timed).
void RunSedOnList(const std::vector<std::string>& files) {
  for (size_t start = 0; start < files.size(); start += kSedBatch) {
    std::vector<std::string> args = {"sed", "-i", "-E"};
    args.insert(args.end(), kSedScript.begin(), kSedScript.end());
    for (size_t i = start; i < files.size() && i < start + kSedBatch; ++i) args.push_back(files[i]);
    Run(args);
  }
}

// The three replacements of the sed script, on one line.
void ReplaceValue(std::string& text, const std::string& attribute, const std::string& value) {
  const std::string head = "[assembly: " + attribute + "(\"";
  const size_t start = text.find(head);
  if (start == std::string::npos) return;
  const size_t from = start + head.size();
  const size_t to = text.find('"', from);
  if (to != std::string::npos) text.replace(from, to - from, value);
}

/// The floor: read, change, write a temporary file, rename it over the file; no search, no
/// fsync (sed -i syncs nothing either).
void RunCLoop(const std::vector<std::string>& files) {
  std::string text;
  char buffer[65536];
  for (const std::string& file : files) {
    const int in = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
    if (in < 0) throw std::runtime_error("cannot open " + file);
    text.clear();
    for (ssize_t r; (r = ::read(in, buffer, sizeof buffer)) > 0;) text.append(buffer, size_t(r));
    ::close(in);
    ReplaceValue(text, "AssemblyVersion", "2.0.0.1");
    ReplaceValue(text, "AssemblyFileVersion", "2.0.0.1");
    ReplaceValue(text, "AssemblyCompany", "Acme Ltd");
    const std::string temp = file + ".tmp";
    const int out = ::open(temp.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (out < 0 || ::write(out, text.data(), text.size()) != ssize_t(text.size()) ||
        ::close(out) != 0 || ::rename(temp.c_str(), file.c_str()) != 0)
      throw std::runtime_error("cannot rewrite " + file);
  }
}

bool RunUpdater(const Tree& tree, bool backups = false) {
  TWrenStepHost host;
  std::vector<std::string> errors;
  host.SetLogSink([&](TWrenLogStream, const std::string& text) {
    if (text.rfind("File : ", 0) == 0) errors.push_back(text);
  });
  TWrenAssemblyInfoUpdaterAction action;
  action.SetHost(&host);
  action.Selection = {tree.root() + "/*.cs"};
  action.Recurse = true;
  action.BackupFiles = backups;  // sed -i keeps no backup
  action.Attributes = {"AssemblyVersion=\"2.0.0.1\"", "AssemblyFileVersion=\"2.0.0.1\"",
                       "AssemblyCompany=\"Acme Ltd\""};
  return action.Execute() && errors.empty() && action.FileList().size() == tree.files().size();
}

Tree& UpdaterTree() {
  static Tree tree("updater");
  return tree;
}

Tree& SedTree() {
  static Tree tree("sed");
  return tree;
}

Tree& FloorTree() {
  static Tree tree("floor");
  return tree;
}

Tree& BackupTree() {
  static Tree tree("backup");
  return tree;
}

void BM_AssemblyInfoUpdater(benchmark::State& state) {
  const Tree& tree = UpdaterTree();
  for (auto _ : state) {
    state.PauseTiming();
    tree.Regenerate();
    state.ResumeTiming();
    if (!RunUpdater(tree)) state.SkipWithError("the updater action failed");
  }
}

void BM_AssemblyInfoUpdaterWithBackups(benchmark::State& state) {
  const Tree& tree = BackupTree();
  for (auto _ : state) {
    state.PauseTiming();
    tree.Regenerate();
    state.ResumeTiming();
    if (!RunUpdater(tree, true)) state.SkipWithError("the updater action failed");
  }
}

void BM_CReadTempRename(benchmark::State& state) {
  const Tree& tree = FloorTree();
  for (auto _ : state) {
    state.PauseTiming();
    tree.Regenerate();
    state.ResumeTiming();
    RunCLoop(tree.files());
  }
}

void BM_FindAndSed(benchmark::State& state) {
  const Tree& tree = SedTree();
  for (auto _ : state) {
    state.PauseTiming();
    tree.Regenerate();
    state.ResumeTiming();
    RunFindAndSed(tree.root());
  }
}

void BM_SedOnKnownFiles(benchmark::State& state) {
  const Tree& tree = SedTree();
  for (auto _ : state) {
    state.PauseTiming();
    tree.Regenerate();
    state.ResumeTiming();
    RunSedOnList(tree.files());
  }
}

BENCHMARK(BM_AssemblyInfoUpdater)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);
BENCHMARK(BM_AssemblyInfoUpdaterWithBackups)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);
BENCHMARK(BM_CReadTempRename)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);
BENCHMARK(BM_FindAndSed)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);
BENCHMARK(BM_SedOnKnownFiles)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);

/// Keeps each benchmark's mean real time per iteration for the ratio.
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs)
      if (!run.error_occurred && run.iterations > 0)
        seconds[run.benchmark_name()] = run.real_accumulated_time / static_cast<double>(run.iterations);
  }
  std::map<std::string, double> seconds;
};

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();

  auto seconds = [&](const char* name) {
    return reporter.seconds[std::string(name) + "/iterations:5/real_time"];
  };
  const double ours = seconds("BM_AssemblyInfoUpdater");
  const double backups = seconds("BM_AssemblyInfoUpdaterWithBackups");
  const double floor = seconds("BM_CReadTempRename");
  const double findSed = seconds("BM_FindAndSed");
  const double listSed = seconds("BM_SedOnKnownFiles");
  if (ours <= 0) return 0;  // a filter left the updater out: nothing to compare with

  // Same work: every other tree must now hold the updater's bytes (the sources use CR LF already).
  const std::string updated = UpdaterTree().Contents();
  if (updated.find("AssemblyCompany(\"Acme Ltd\")") == std::string::npos) {
    std::fprintf(stderr, "The updater changed nothing: the comparison is void.\n");
    return 1;
  }
  const std::pair<double, Tree& (*)()> others[] = {
      {backups, BackupTree}, {floor, FloorTree}, {findSed + listSed, SedTree}};
  for (const auto& [time, tree] : others)
    if (time > 0 && tree().Contents() != updated) {
      std::fprintf(stderr, "The updater and a baseline left different files: the comparison is void.\n");
      return 1;
    }
  std::printf("updater: %.1f ms for %zu files\n", ours * 1e3, UpdaterTree().files().size());
  if (floor > 0)
    std::printf("C read-temp-rename floor: %.1f ms; updater/floor time ratio %.2f\n", floor * 1e3,
                ours / floor);
  if (findSed > 0)
    std::printf("find | xargs sed -i -E: %.1f ms; sed/updater time ratio %.2f\n", findSed * 1e3,
                findSed / ours);
  if (listSed > 0)
    std::printf("sed -i -E on the known list: %.1f ms; sed/updater time ratio %.2f\n",
                listSed * 1e3, listSed / ours);
  if (backups > 0)
    std::printf("updater with backups: %.1f ms; with/without backups time ratio %.2f\n",
                backups * 1e3, backups / ours);
  return 0;
}
