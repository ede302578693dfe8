#include "TestSupport.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

extern char** environ;

namespace wren::test {

TempDir::TempDir() {
  const char* base = std::getenv("TMPDIR");
  std::string tmpl = std::string(base && *base ? base : "/tmp") + "/marrowby-test-XXXXXX";
  if (!mkdtemp(tmpl.data())) throw std::runtime_error("mkdtemp failed");
  path_ = tmpl + "/";
}

TempDir::~TempDir() {
  std::error_code ec;
  // Tests make files read-only on purpose; give write access back so everything can go.
  for (auto it = std::filesystem::recursive_directory_iterator(path_, ec);
       !ec && it != std::filesystem::recursive_directory_iterator(); it.increment(ec))
    std::filesystem::permissions(it->path(), std::filesystem::perms::owner_all,
                                 std::filesystem::perm_options::add, ec);
  std::filesystem::remove_all(path_, ec);
}

void WriteFile(const std::string& path, const std::string& bytes) {
  std::filesystem::create_directories(std::filesystem::path(path).parent_path());
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << bytes;
  if (!out) throw std::runtime_error("cannot write " + path);
}

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) throw std::runtime_error("cannot read " + path);
  std::stringstream ss;
  ss << in.rdbuf();
  return ss.str();
}

bool Exists(const std::string& path) { return access(path.c_str(), F_OK) == 0; }

int InChild(const std::function<int()>& body) {
  const pid_t pid = ::fork();
  if (pid == 0) ::_exit(body());
  int status = 0;
  ::waitpid(pid, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

bool ProcessRunning(int pid) {
  if (kill(pid, 0) != 0) return false;
  // Read without ReadFile's throw: the process may be reaped between the two looks.
  std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
  const std::string text((std::istreambuf_iterator<char>(stat)), std::istreambuf_iterator<char>());
  // "pid (name) state ...": the name may hold anything, so look after its last ')'.
  const size_t close = text.rfind(')');
  return close != std::string::npos && close + 2 < text.size() && text[close + 2] != 'Z';
}

std::vector<int> ReadPids(const std::string& path) {
  std::vector<int> pids;
  if (!Exists(path)) return pids;
  std::istringstream in(ReadFile(path));
  for (int pid; in >> pid;) pids.push_back(pid);
  return pids;
}

void InstallRecorder(const std::string& path) {
  std::filesystem::create_directories(std::filesystem::path(path).parent_path());
  std::filesystem::copy_file(ARGV_RECORDER, path,
                             std::filesystem::copy_options::overwrite_existing);
  chmod(path.c_str(), 0755);
}

nlohmann::json RecordedCall(const std::string& programPath) {
  const std::string file = programPath + ".argv.json";
  if (!Exists(file)) return nullptr;
  return nlohmann::json::parse(ReadFile(file));
}

namespace {

std::string ReadAll(int fd) {
  std::string text;
  char buf[4096];
  ssize_t n;
  while ((n = read(fd, buf, sizeof buf)) > 0) text.append(buf, n);
  close(fd);
  return text;
}

}  // namespace

int RunProgram(const std::vector<std::string>& argv, std::string* output,
               const std::string& workingDir, std::string* errors) {
  int fds[2], errFds[2];
  if (pipe(fds) != 0 || pipe(errFds) != 0) throw std::runtime_error("pipe failed");
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, fds[1], 1);
  posix_spawn_file_actions_adddup2(&actions, errors ? errFds[1] : fds[1], 2);
  for (int fd : {fds[0], fds[1], errFds[0], errFds[1]})
    posix_spawn_file_actions_addclose(&actions, fd);
  if (!workingDir.empty()) posix_spawn_file_actions_addchdir_np(&actions, workingDir.c_str());
  std::vector<char*> args;
  for (const std::string& a : argv) args.push_back(const_cast<char*>(a.c_str()));
  args.push_back(nullptr);
  pid_t pid = 0;
  const int rc = posix_spawnp(&pid, args[0], &actions, nullptr, args.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(fds[1]);
  close(errFds[1]);
  // stderr is read after stdout: enough for the small outputs tests produce.
  const std::string text = ReadAll(fds[0]);
  const std::string errText = ReadAll(errFds[0]);
  if (rc != 0) throw std::runtime_error("cannot start " + argv[0]);
  int status = 0;
  waitpid(pid, &status, 0);
  if (output) *output = text;
  if (errors) *errors = errText;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace wren::test
