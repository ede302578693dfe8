#include "pages/WrenDotNetALFrames.h"

namespace wren {

TALGenericFrame::TALGenericFrame() {
  edOptions.caption = "AL.EXE command line options";
  edWorkingFolder.caption = "Working Folder";
}

}  // namespace wren
