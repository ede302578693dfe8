// `marrowby edit`: loads the editor module beside the executable and hands the command to it.
#include <dlfcn.h>

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

}  // namespace wren
