// The sandbox project scripts run in. A project file is data someone else may have written, so its
// scripts get no way to the file system, to programs or to native code: only a small library,
// bounded memory, and a stop request that ends them.
#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <string>

struct lua_State;

namespace wren {

/// Memory one script run may use unless the caller says otherwise.
constexpr size_t kWrenScriptMemoryLimit = size_t{64} << 20;

/// What one script run is bounded by, and where its print() lines go.
struct TWrenScriptLimits {
  const std::atomic<bool>* stop = nullptr;  // once set, the running script ends
  size_t memoryBytes = kWrenScriptMemoryLimit;
  std::function<void(const std::string& line)> print;  // print() lines; dropped when unset
};

/// One Lua state for one script run, holding only the project scripts' library:
///   base: assert error getmetatable ipairs load (text chunks only) next pairs pcall print
///         rawequal rawget rawlen rawset select setmetatable (no __gc) tonumber tostring type
///         xpcall _G _VERSION
///   string (without dump), table, math, utf8, and os.time, os.date, os.clock.
/// Naming anything else of Lua's standard library (io, os.execute, package, require, debug, dofile,
/// ...) fails with "'<name>' is not available to project scripts".
class TWrenScriptSandbox {
 public:
  explicit TWrenScriptSandbox(TWrenScriptLimits limits);
  ~TWrenScriptSandbox();
  TWrenScriptSandbox(const TWrenScriptSandbox&) = delete;
  TWrenScriptSandbox& operator=(const TWrenScriptSandbox&) = delete;

  /// The state, for setting globals before Run and reading them after; null when Lua could not
  /// start. The memory limit applies only while Run runs the script.
  lua_State* State() const { return state_; }

  /// Loads the text (never a binary chunk) and runs it, leaving its first result on the stack.
  /// On failure fills error as "script <name>, line <n>: <message>", or "script <name>: <message>"
  /// where no line is known.
  bool Run(const std::string& name, const std::string& text, std::string& error);

  /// Used by the C functions the state calls back.
  struct TContext;

 private:
  TContext* context_;
  lua_State* state_ = nullptr;
};

}  // namespace wren
