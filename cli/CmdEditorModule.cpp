// `marrowby edit`: hands the command to the editor executable where there is one, else loads the
// editor module beside the executable and runs the command in it.
#include <dlfcn.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <iostream>

#include "Commands.h"
#include "WrenFiles.h"
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

int HandOverToEditor(TCliContext& ctx, const std::string& executableDir, char** argv) {
#ifdef MARROWBY_EDITOR_EXECUTABLE
  // This executable has the C++ run-time inside the core library, and the editor's HTTP library
  // needs the shared one: one process never gets both.
  std::string path = executableDir + MARROWBY_EDITOR_EXECUTABLE;
  if (!FileExists(path))
    path = IncludeTrailingPathDelimiter(MARROWBY_DEFAULT_MODULE_DIR) + MARROWBY_EDITOR_EXECUTABLE;
  std::cout.flush();
  std::cerr.flush();
  ::execv(path.c_str(), argv);
  *ctx.err << "marrowby: cannot start the editor (" << path << "): " << std::strerror(errno)
           << "\n";
  return kExitFailed;
#else
  (void)ctx;
  (void)executableDir;
  (void)argv;
  return -1;
#endif
}

}  // namespace wren
