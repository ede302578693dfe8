// The entry of the editor module. `marrowby edit` loads the module only when it is asked for, so
// the HTTP library and the TLS libraries it brings cost no other command their start-up time.
#include "Commands.h"

extern "C" __attribute__((visibility("default"))) int MarrowbyEditorMain(
    wren::TCliContext* ctx, const char* projectFile, int port, bool noBrowser) {
  return wren::CmdEditor(*ctx, projectFile, port, noBrowser);
}
