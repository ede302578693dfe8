#include "pages/WrenDotNetASPdotNETIISRegFrames.h"

namespace wren {

TASPdotNetIISInstallFrame::TASPdotNetIISInstallFrame() {
  edOptions.caption = "Aspnet_regiis.exe Command Line Options";
  edWorkingFolder.caption = "Working Folder";
}

}  // namespace wren
