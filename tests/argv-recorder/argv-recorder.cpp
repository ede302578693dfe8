// argv-recorder: stands in for a tool in tests. It writes how it was called (argv, working
// directory, the text of every @response file) to a JSON file, prints configured output and exits
// with a configured code.
//
// Settings come from <argv0>.recorder.json beside the program ("out", "stdout", "stderr", "exit",
// "sleepMs", "ignoreTerm", "spawnChild"), else from the environment (ARGV_RECORDER_OUT,
// ARGV_RECORDER_STDOUT, ARGV_RECORDER_STDERR, ARGV_RECORDER_EXIT, ARGV_RECORDER_SLEEP_MS,
// ARGV_RECORDER_IGNORE_TERM=1, ARGV_RECORDER_SPAWN_CHILD=1). Without "out" the record goes to
// <argv0>.argv.json. With spawnChild a child that ignores SIGTERM lives as long as the sleep; its
// pid is written to <out or argv0>.child.pid.
#include <nlohmann/json.hpp>

#include <signal.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>

namespace {

using nlohmann::json;

struct TSettings {
  std::optional<std::string> out;
  std::string stdoutText;
  std::string stderrText;
  int exitCode = 0;
  long sleepMs = 0;
  bool ignoreTerm = false;
  bool spawnChild = false;
};

std::optional<std::string> ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return std::nullopt;
  std::ostringstream text;
  text << in.rdbuf();
  if (in.bad()) return std::nullopt;
  return text.str();
}

const char* Env(const char* name) {
  const char* value = std::getenv(name);
  return value && *value ? value : nullptr;
}

long EnvNumber(const char* name, long fallback) {
  const char* text = Env(name);
  return text ? std::strtol(text, nullptr, 10) : fallback;
}

bool EnvFlag(const char* name) {
  const char* text = Env(name);
  return text && std::string(text) == "1";
}

// Exits with 125 on a broken config file: a test must not go on with settings it did not mean.
TSettings LoadSettings(const std::string& self) {
  TSettings s;
  if (const char* v = Env("ARGV_RECORDER_OUT")) s.out = v;
  if (const char* v = Env("ARGV_RECORDER_STDOUT")) s.stdoutText = v;
  if (const char* v = Env("ARGV_RECORDER_STDERR")) s.stderrText = v;
  s.exitCode = static_cast<int>(EnvNumber("ARGV_RECORDER_EXIT", 0));
  s.sleepMs = EnvNumber("ARGV_RECORDER_SLEEP_MS", 0);
  s.ignoreTerm = EnvFlag("ARGV_RECORDER_IGNORE_TERM");
  s.spawnChild = EnvFlag("ARGV_RECORDER_SPAWN_CHILD");

  const std::string configPath = self + ".recorder.json";
  const std::optional<std::string> configText = ReadFile(configPath);
  if (!configText) return s;
  try {
    const json config = json::parse(*configText);
    if (config.contains("out")) s.out = config["out"].get<std::string>();
    if (config.contains("stdout")) s.stdoutText = config["stdout"].get<std::string>();
    if (config.contains("stderr")) s.stderrText = config["stderr"].get<std::string>();
    if (config.contains("exit")) s.exitCode = config["exit"].get<int>();
    if (config.contains("sleepMs")) s.sleepMs = config["sleepMs"].get<long>();
    if (config.contains("ignoreTerm")) s.ignoreTerm = config["ignoreTerm"].get<bool>();
    if (config.contains("spawnChild")) s.spawnChild = config["spawnChild"].get<bool>();
  } catch (const json::exception& e) {
    std::fprintf(stderr, "argv-recorder: %s: %s\n", configPath.c_str(), e.what());
    std::exit(125);
  }
  return s;
}

// Readers never see a half-written file.
bool WriteAtomically(const std::string& path, const std::string& text) {
  const std::string temp = path + ".tmp." + std::to_string(::getpid());
  {
    std::ofstream file(temp, std::ios::binary | std::ios::trunc);
    if (!file) return false;
    file << text;
    file.close();
    if (!file) return false;
  }
  if (std::rename(temp.c_str(), path.c_str()) != 0) {
    std::remove(temp.c_str());
    return false;
  }
  return true;
}

void WriteAll(int fd, const std::string& text) {
  size_t done = 0;
  while (done < text.size()) {
    const ssize_t n = ::write(fd, text.data() + done, text.size() - done);
    if (n < 0) {
      if (errno == EINTR) continue;
      return;
    }
    done += static_cast<size_t>(n);
  }
}

void SleepMs(long ms) {
  if (ms <= 0) return;
  timespec left{ms / 1000, (ms % 1000) * 1000000L};
  while (::nanosleep(&left, &left) != 0 && errno == EINTR) {
  }
}

std::string CurrentDir() {
  std::string dir(4096, '\0');
  while (::getcwd(dir.data(), dir.size()) == nullptr) {
    if (errno != ERANGE) return "";
    dir.resize(dir.size() * 2);
  }
  dir.resize(std::char_traits<char>::length(dir.c_str()));
  return dir;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string self = argc > 0 ? argv[0] : "argv-recorder";
  const TSettings settings = LoadSettings(self);
  // Before anything else, so a stop arriving early already finds SIGTERM ignored.
  if (settings.ignoreTerm) ::signal(SIGTERM, SIG_IGN);

  json record;
  record["argv"] = json::array();
  record["responseFiles"] = json::object();
  for (int i = 0; i < argc; ++i) {
    const std::string arg = argv[i];
    record["argv"].push_back(arg);
    if (i == 0 || arg.empty() || arg[0] != '@') continue;
    std::string path = arg.substr(1);
    if (path.size() >= 2 && path.front() == '"' && path.back() == '"') {
      path = path.substr(1, path.size() - 2);
    }
    const std::optional<std::string> text = ReadFile(path);
    record["responseFiles"][path] = text ? json(*text) : json(nullptr);
  }
  record["cwd"] = CurrentDir();
  record["pid"] = ::getpid();

  const std::string outPath = settings.out ? *settings.out : self + ".argv.json";
  if (!WriteAtomically(outPath, record.dump(2, ' ', false, json::error_handler_t::replace) + "\n")) {
    std::fprintf(stderr, "argv-recorder: cannot write %s\n", outPath.c_str());
    return 125;
  }

  if (settings.spawnChild) {
    const pid_t child = ::fork();
    if (child < 0) {
      std::perror("argv-recorder: fork");
      return 125;
    }
    if (child == 0) {
      ::signal(SIGTERM, SIG_IGN);
      SleepMs(settings.sleepMs);
      ::_exit(0);
    }
    // Written by the parent once the child exists, so whoever reads the file can rely on it.
    const std::string pidPath = (settings.out ? *settings.out : self) + ".child.pid";
    if (!WriteAtomically(pidPath, std::to_string(child) + "\n")) {
      std::fprintf(stderr, "argv-recorder: cannot write %s\n", pidPath.c_str());
      return 125;
    }
  }

  WriteAll(STDOUT_FILENO, settings.stdoutText);
  WriteAll(STDERR_FILENO, settings.stderrText);
  SleepMs(settings.sleepMs);
  return settings.exitCode;
}
