// A scratch folder for fuzz targets whose parser reads a file: made once per process, removed at exit.
#pragma once

#include <stdlib.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace wren::fuzz {

/// The folder, made on first use and removed with everything in it when the process exits.
class TScratchDir {
 public:
  TScratchDir() {
    const char* base = std::getenv("TMPDIR");
    std::string tmpl = std::string(base && *base ? base : "/tmp") + "/marrowby-fuzz-XXXXXX";
    if (!mkdtemp(tmpl.data())) std::abort();
    path_ = tmpl + "/";
  }
  ~TScratchDir() {
    std::error_code ec;
    std::filesystem::remove_all(path_, ec);
  }
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

inline const std::string& ScratchDir() {
  static const TScratchDir dir;
  return dir.path();
}

inline std::string WriteScratch(const std::string& name, const std::string& bytes) {
  const std::string path = ScratchDir() + name;
  std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
  return path;
}

}  // namespace wren::fuzz
