// `marrowby edit`: loads the editor module beside the executable and runs the command in it; and
// the hand-over to the twin executable on the shared C++ run-time, for the editor and for packages
// that need that run-time.
#include <dlfcn.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <iostream>

#include "Commands.h"
#include "WrenFiles.h"
#include "runtime/WrenModule.h"
#include "WrenUtils.h"

namespace wren {

int RunEditorModule(TCliContext& ctx, const std::string& executableDir,
                    const std::string& projectFile, int port, bool noBrowser) {
  const std::string file = "MarrowbyEditor.so";
  std::string path = executableDir + file;
  if (!FileExists(path)) path = IncludeTrailingPathDelimiter(MARROWBY_DEFAULT_MODULE_DIR) + file;
  // Kept loaded to the end of the process: the server's threads are gone by then, but a module
  // unloaded under its own static objects is a crash at exit.
  void* handle = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!handle) {
    *ctx.err << "marrowby: cannot load the editor (" << path << "): " << ::dlerror() << "\n";
    return kExitFailed;
  }
  using TEditorMain = int (*)(TCliContext*, const char*, int, bool);
  auto entry = reinterpret_cast<TEditorMain>(::dlsym(handle, "MarrowbyEditorMain"));
  if (!entry) {
    *ctx.err << "marrowby: " << path << " has no editor entry\n";
    return kExitFailed;
  }
  return entry(&ctx, projectFile.c_str(), port, noBrowser);
}

int HandOverToSharedCxx(TCliContext& ctx, const std::string& executableDir, char** argv,
                        bool editor, const std::string& packagePath) {
#ifdef MARROWBY_SHARED_CXX_EXECUTABLE
  // This executable's C++ run-time is inside the core library. The editor's HTTP library needs the
  // system's shared one, and so does a package built against it: a process never gets both, so
  // such commands run whole in the twin built on the shared run-time.
  if (!editor && !ModuleNeedsSharedCxxRunTime(packagePath)) return -1;
  std::string path = executableDir + MARROWBY_SHARED_CXX_EXECUTABLE;
  if (!FileExists(path))
    path = IncludeTrailingPathDelimiter(MARROWBY_DEFAULT_MODULE_DIR) + MARROWBY_SHARED_CXX_EXECUTABLE;
  std::cout.flush();
  std::cerr.flush();
  ::execv(path.c_str(), argv);
  *ctx.err << "marrowby: cannot start " << path << ": " << std::strerror(errno) << "\n";
  return kExitFailed;
#else
  (void)ctx;
  (void)executableDir;
  (void)argv;
  (void)editor;
  (void)packagePath;
  return -1;
#endif
}

}  // namespace wren
