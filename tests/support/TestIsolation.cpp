// Every test process runs with a home of its own: marrowby's options and hive, Mono's registry,
// key containers and caches land in a temporary folder that is removed when the process ends, never
// in the user's own HOME or in /etc. Child processes (marrowby, mcs, gacutil, sn, nunit-console)
// inherit it. ctest runs each test in a process of its own, so each test gets a fresh home.

#include <stdlib.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace {

class TIsolatedHome {
 public:
  TIsolatedHome() {
    const char* base = std::getenv("TMPDIR");
    std::string tmpl = std::string(base && *base ? base : "/tmp") + "/marrowby-home-XXXXXX";
    if (!mkdtemp(tmpl.data())) throw std::runtime_error("mkdtemp failed for the test home");
    root_ = tmpl;
    const std::pair<const char*, const char*> dirs[] = {
        {"HOME", "home"},
        {"XDG_CONFIG_HOME", "home/.config"},
        {"XDG_DATA_HOME", "home/.local/share"},
        {"XDG_CACHE_HOME", "home/.cache"},
        {"XDG_STATE_HOME", "home/.local/state"},
        // Mono keeps its machine-wide registry beside machine.config (/etc/mono/registry) unless
        // told otherwise, and touches it whenever a tool opens the registry.
        {"MONO_REGISTRY_PATH", "mono-registry"}};
    for (const auto& [name, sub] : dirs) {
      const std::string dir = root_ + "/" + sub;
      std::filesystem::create_directories(dir);
      setenv(name, dir.c_str(), 1);
    }
    // A developer's own settings must not steer the tests.
    for (const char* name : {"MARROWBY_REGISTRY", "MARROWBY_OPTIONS", "MARROWBY_PACKAGE"})
      unsetenv(name);
  }
  ~TIsolatedHome() {
    std::error_code ec;
    for (auto it = std::filesystem::recursive_directory_iterator(root_, ec);
         !ec && it != std::filesystem::recursive_directory_iterator(); it.increment(ec))
      std::filesystem::permissions(it->path(), std::filesystem::perms::owner_all,
                                   std::filesystem::perm_options::add, ec);
    std::filesystem::remove_all(root_, ec);
  }

 private:
  std::string root_;
};

const TIsolatedHome isolatedHome;

}  // namespace
