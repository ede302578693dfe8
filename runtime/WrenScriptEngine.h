// Runs user scripts (Lua 5.4) with an action's parameters as globals.
#pragma once

#include <string>

#include "WrenScriptSandbox.h"
#include "WrenScripts.h"

namespace wren {

/// Runs the script in a sandbox bounded by the limits. Each parameter becomes a global: plain
/// values as Lua values, objects as tables whose methods are called with ':' and whose fields read
/// as values. Objects registered with the scripting services are globals too. After the run, plain
/// parameters are read back from the globals. The script's return value becomes result. On an
/// error returns false with error set to "script <name>, line <n>: <message>" (the line where
/// one is known).
bool RunScript(TWrenActionScript& script, WrenVariant& result, std::string& error,
               const TWrenScriptLimits& limits = {});

}  // namespace wren
