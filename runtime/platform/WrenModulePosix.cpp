#include <dlfcn.h>
#include <elf.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstring>

#include "runtime/WrenActionRegistry.h"
#include "runtime/WrenModule.h"
#include "runtime/WrenOptionsStore.h"

namespace wren {

TWrenModule::~TWrenModule() { Unload(); }

bool TWrenModule::Load(const std::string& path, std::string& error) {
  Unload();
  handle_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!handle_) {
    const char* why = dlerror();
    error = "cannot load package " + path + ": " + (why ? why : "unknown error");
    return false;
  }
  entry_ = reinterpret_cast<TWrenRegisterProc>(dlsym(handle_, "WrenRegister"));
  if (!entry_) {
    error = "package " + path + " does not export WrenRegister";
    dlclose(handle_);
    handle_ = nullptr;
    return false;
  }
  path_ = path;
  return true;
}

void TWrenModule::Register(bool designTime) {
  if (entry_) entry_(designTime);
}

void TWrenModule::Unload() {
  if (!handle_) return;
  ClearRegistrations();
  ClearRegisteredOptions();
  dlclose(handle_);
  handle_ = nullptr;
  entry_ = nullptr;
}

namespace {

/// Reads exactly `size` bytes at `offset`; false on a short file or an error.
bool ReadAt(int fd, uint64_t offset, void* to, size_t size) {
  char* at = static_cast<char*>(to);
  while (size > 0) {
    const ssize_t got = ::pread(fd, at, size, static_cast<off_t>(offset));
    if (got <= 0) return false;
    at += got;
    offset += static_cast<uint64_t>(got);
    size -= static_cast<size_t>(got);
  }
  return true;
}

/// The DT_NEEDED names of an open 64-bit ELF file, found through its section headers (the dynamic
/// section and the string table it links to hold file offsets, so no address mapping is needed).
std::vector<std::string> NeededOf(int fd) {
  // Bounds well above any real module, so that a damaged file cannot make us read gigabytes.
  constexpr uint64_t kMaxSections = 1 << 16, kMaxDynamic = 1 << 20, kMaxStrings = 64 << 20;
  std::vector<std::string> needed;
  Elf64_Ehdr header;
  if (!ReadAt(fd, 0, &header, sizeof header) ||
      std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 ||
      header.e_ident[EI_CLASS] != ELFCLASS64 || header.e_shentsize != sizeof(Elf64_Shdr) ||
      header.e_shnum == 0 || header.e_shnum > kMaxSections)
    return needed;
  std::vector<Elf64_Shdr> sections(header.e_shnum);
  if (!ReadAt(fd, header.e_shoff, sections.data(), sections.size() * sizeof(Elf64_Shdr)))
    return needed;
  for (const Elf64_Shdr& section : sections) {
    if (section.sh_type != SHT_DYNAMIC || section.sh_link >= sections.size()) continue;
    const Elf64_Shdr& strings = sections[section.sh_link];
    if (section.sh_size > kMaxDynamic || strings.sh_size > kMaxStrings) continue;
    std::vector<Elf64_Dyn> entries(section.sh_size / sizeof(Elf64_Dyn));
    std::string table(strings.sh_size, '\0');
    if (!ReadAt(fd, section.sh_offset, entries.data(), entries.size() * sizeof(Elf64_Dyn)) ||
        !ReadAt(fd, strings.sh_offset, table.data(), table.size()))
      continue;
    for (const Elf64_Dyn& entry : entries) {
      if (entry.d_tag == DT_NULL) break;
      if (entry.d_tag != DT_NEEDED || entry.d_un.d_val >= table.size()) continue;
      needed.emplace_back(table.c_str() + entry.d_un.d_val);
    }
  }
  return needed;
}

}  // namespace

std::vector<std::string> ModuleNeededLibraries(const std::string& path) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return {};
  std::vector<std::string> needed = NeededOf(fd);
  ::close(fd);
  return needed;
}

bool ModuleNeedsSharedCxxRunTime(const std::string& path) {
  for (const std::string& name : ModuleNeededLibraries(path))
    if (name.rfind("libstdc++.so", 0) == 0) return true;
  return false;
}

std::string ModuleFileName(const std::string& moduleName) { return moduleName + ".so"; }

}  // namespace wren
