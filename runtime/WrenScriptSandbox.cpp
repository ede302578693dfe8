#include "WrenScriptSandbox.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <lua.hpp>
#include <utility>

// Lua is built as C: its errors are longjmps. The C functions Lua calls here keep no C++ object
// with a destructor in their frames; C++ work that may throw is done in noexcept helpers.

namespace wren {

struct TWrenScriptSandbox::TContext {
  TWrenScriptLimits limits;
  size_t used = 0;              // bytes the state holds
  size_t limit = SIZE_MAX;      // bytes it may hold; the script's budget only while it runs
  bool stopped = false;
  int stopLine = -1;
};

namespace {

using TContext = TWrenScriptSandbox::TContext;

// Often enough that a stop request ends a busy loop at once, rarely enough to cost nothing.
constexpr int kHookInstructions = 1000;
constexpr char kStoppedText[] = "stopped by user request";

TContext* ContextOf(lua_State* L) {
  void* ud = nullptr;
  lua_getallocf(L, &ud);
  return static_cast<TContext*>(ud);
}

void* LimitedAlloc(void* ud, void* ptr, size_t osize, size_t nsize) {
  auto* context = static_cast<TContext*>(ud);
  const size_t old = ptr ? osize : 0;  // without a block, osize names the kind of object
  if (nsize == 0) {
    std::free(ptr);
    context->used -= old;
    return nullptr;
  }
  if (nsize > old &&
      (context->used > context->limit || nsize - old > context->limit - context->used))
    return nullptr;  // Lua collects garbage, tries once more, then raises a memory error
  void* block = std::realloc(ptr, nsize);
  if (block) context->used = context->used - old + nsize;
  return block;
}

int Panic(lua_State* L) {
  const char* message = lua_tostring(L, -1);
  std::fprintf(stderr, "marrowby: script engine failure: %s\n", message ? message : "?");
  return 0;  // Lua aborts
}

void StopHook(lua_State* L, lua_Debug* ar) {
  TContext* context = ContextOf(L);
  if (!context->limits.stop || !context->limits.stop->load(std::memory_order_relaxed)) return;
  if (!context->stopped) {
    context->stopped = true;
    if (lua_getinfo(L, "l", ar)) context->stopLine = ar->currentline;
    // From now on every instruction fails, so a pcall in the script cannot swallow the stop.
    lua_sethook(L, StopHook, LUA_MASKCOUNT, 1);
  }
  lua_pushstring(L, kStoppedText);
  lua_error(L);
}

/// __index of a library table: names this sandbox leaves out fail loudly, anything else is nil.
int DeniedIndex(lua_State* L) {
  if (lua_type(L, 2) == LUA_TSTRING) {
    lua_pushvalue(L, 2);
    if (lua_rawget(L, lua_upvalueindex(1)) == LUA_TSTRING)
      return luaL_error(L, "'%s' is not available to project scripts", lua_tostring(L, -1));
  }
  lua_pushnil(L);
  return 1;
}

/// Removes the names from the table at the top of the stack and makes naming them an error.
void Deny(lua_State* L, const char* prefix, std::initializer_list<const char*> names) {
  lua_createtable(L, 0, static_cast<int>(names.size()));
  for (const char* name : names) {
    lua_pushnil(L);
    lua_setfield(L, -3, name);
    lua_pushfstring(L, "%s%s", prefix, name);
    lua_setfield(L, -2, name);
  }
  lua_createtable(L, 0, 2);
  lua_insert(L, -2);
  lua_pushcclosure(L, DeniedIndex, 1);
  lua_setfield(L, -2, "__index");
  lua_pushliteral(L, "locked");
  lua_setfield(L, -2, "__metatable");
  lua_setmetatable(L, -2);
}

/// Sends one print() line to the sink; false with the message filled when the sink failed.
bool SendPrinted(TContext* context, const char* text, size_t size, char* message,
                 size_t messageSize) noexcept {
  try {
    if (context->limits.print) context->limits.print(std::string(text, size));
    return true;
  } catch (const std::exception& ex) {
    std::snprintf(message, messageSize, "print: %s", ex.what());
  } catch (...) {
    std::snprintf(message, messageSize, "print: unknown error");
  }
  return false;
}

/// print(...): the values as tostring shows them, tab-separated, as one line of the step's log.
int Print(lua_State* L) {
  const int count = lua_gettop(L);
  luaL_Buffer buffer;
  luaL_buffinit(L, &buffer);
  for (int i = 1; i <= count; ++i) {
    if (i > 1) luaL_addchar(&buffer, '\t');
    luaL_tolstring(L, i, nullptr);
    luaL_addvalue(&buffer);
  }
  luaL_pushresult(&buffer);
  size_t size = 0;
  const char* text = lua_tolstring(L, -1, &size);
  char message[512];
  if (!SendPrinted(ContextOf(L), text, size, message, sizeof message))
    return luaL_error(L, "%s", message);
  return 0;
}

/// load(chunk [, name [, mode [, env]]]) for text chunks only: a binary chunk is native-level
/// input that Lua does not check.
int TextOnlyLoad(lua_State* L) {
  size_t size = 0;
  const char* chunk = lua_type(L, 1) == LUA_TSTRING ? lua_tolstring(L, 1, &size) : nullptr;
  if (chunk && size > 0 && chunk[0] == LUA_SIGNATURE[0])
    return luaL_error(L, "binary chunks are not available to project scripts");
  // An env given as nil is still an env: keep the caller's argument count from the third on.
  if (lua_gettop(L) < 3) lua_settop(L, 3);
  lua_pushliteral(L, "t");
  lua_replace(L, 3);
  lua_pushvalue(L, lua_upvalueindex(1));
  lua_insert(L, 1);
  lua_call(L, lua_gettop(L) - 1, LUA_MULTRET);
  return lua_gettop(L);
}

/// setmetatable without finalizers: Lua runs __gc with hooks off, where a stop request cannot
/// reach it.
int SetMetatableWithoutGc(lua_State* L) {
  if (lua_type(L, 2) == LUA_TTABLE) {
    lua_pushliteral(L, "__gc");
    const bool finalizer = lua_rawget(L, 2) != LUA_TNIL;
    lua_pop(L, 1);
    if (finalizer) return luaL_error(L, "'__gc' metamethods are not available to project scripts");
  }
  lua_pushvalue(L, lua_upvalueindex(1));
  lua_insert(L, 1);
  lua_call(L, lua_gettop(L) - 1, 1);
  return 1;
}

/// The message handler of an xpcall. An error raised by the stop hook reaches the handler while
/// hooks are off, where nothing could end a handler that loops: once stopped, it is skipped.
int GuardedHandler(lua_State* L) {
  if (ContextOf(L)->stopped) return 1;
  lua_pushvalue(L, lua_upvalueindex(1));
  lua_insert(L, 1);
  lua_call(L, lua_gettop(L) - 1, 1);
  return 1;
}

/// xpcall(f, msgh, ...) with msgh guarded as above.
int GuardedXpcall(lua_State* L) {
  luaL_checktype(L, 2, LUA_TFUNCTION);
  lua_pushvalue(L, 2);
  lua_pushcclosure(L, GuardedHandler, 1);
  lua_replace(L, 2);
  lua_pushvalue(L, lua_upvalueindex(1));
  lua_insert(L, 1);
  lua_call(L, lua_gettop(L) - 1, LUA_MULTRET);
  return lua_gettop(L);
}

/// Replaces the global function with a C closure holding the original as its upvalue.
void WrapGlobal(lua_State* L, const char* name, lua_CFunction wrapper) {
  lua_getglobal(L, name);
  lua_pushcclosure(L, wrapper, 1);
  lua_setglobal(L, name);
}

void OpenLibrary(lua_State* L) {
  const std::pair<const char*, lua_CFunction> libraries[] = {
      {LUA_GNAME, luaopen_base},       {LUA_STRLIBNAME, luaopen_string},
      {LUA_TABLIBNAME, luaopen_table}, {LUA_MATHLIBNAME, luaopen_math},
      {LUA_UTF8LIBNAME, luaopen_utf8}};
  for (const auto& [name, open] : libraries) {
    luaL_requiref(L, name, open, 1);
    lua_pop(L, 1);
  }
  // os: the clock and the calendar only.
  luaL_requiref(L, LUA_OSLIBNAME, luaopen_os, 0);
  lua_createtable(L, 0, 3);
  for (const char* name : {"time", "date", "clock"}) {
    lua_getfield(L, -2, name);
    lua_setfield(L, -2, name);
  }
  Deny(L, "os.", {"execute", "exit", "getenv", "remove", "rename", "tmpname", "setlocale",
                  "difftime"});
  lua_setglobal(L, LUA_OSLIBNAME);
  lua_pop(L, 1);

  lua_getglobal(L, LUA_STRLIBNAME);
  Deny(L, "string.", {"dump"});
  lua_pop(L, 1);

  lua_pushcfunction(L, Print);
  lua_setglobal(L, "print");
  WrapGlobal(L, "load", TextOnlyLoad);
  WrapGlobal(L, "setmetatable", SetMetatableWithoutGc);
  WrapGlobal(L, "xpcall", GuardedXpcall);
  lua_pushglobaltable(L);
  Deny(L, "", {"io", "package", "require", "debug", "dofile", "loadfile", "collectgarbage",
               "coroutine", "warn"});
  lua_pop(L, 1);
}

std::string SizeText(size_t bytes) {
  if (bytes % (size_t{1} << 20) == 0) return std::to_string(bytes >> 20) + " MiB";
  return std::to_string(bytes) + " bytes";
}

/// "Name:3: text" as Lua words an error in chunk Name becomes "script Name, line 3: text";
/// anything else becomes "script Name: text".
std::string ScriptErrorText(const std::string& name, const std::string& luaMessage) {
  const std::string prefix = name + ":";
  if (luaMessage.compare(0, prefix.size(), prefix) == 0) {
    size_t end = prefix.size();
    while (end < luaMessage.size() && std::isdigit(static_cast<unsigned char>(luaMessage[end])))
      ++end;
    if (end > prefix.size() && luaMessage.compare(end, 2, ": ") == 0)
      return "script " + name + ", line " + luaMessage.substr(prefix.size(), end - prefix.size()) +
             ": " + luaMessage.substr(end + 2);
  }
  return "script " + name + ": " + luaMessage;
}

}  // namespace

TWrenScriptSandbox::TWrenScriptSandbox(TWrenScriptLimits limits)
    : context_(new TContext{std::move(limits)}) {
  state_ = lua_newstate(LimitedAlloc, context_);
  if (!state_) return;
  lua_atpanic(state_, Panic);
  OpenLibrary(state_);
}

TWrenScriptSandbox::~TWrenScriptSandbox() {
  if (state_) lua_close(state_);
  delete context_;
}

bool TWrenScriptSandbox::Run(const std::string& name, const std::string& text,
                             std::string& error) {
  if (!state_) {
    error = "script " + name + ": cannot start the script engine";
    return false;
  }
  lua_State* L = state_;
  const std::string chunkName = "=" + name;
  const size_t budget = context_->limits.memoryBytes;
  context_->limit = context_->used + std::min(budget, SIZE_MAX - context_->used);
  lua_sethook(L, StopHook, LUA_MASKCOUNT, kHookInstructions);
  int status = luaL_loadbufferx(L, text.data(), text.size(), chunkName.c_str(), "t");
  if (status == LUA_OK) status = lua_pcall(L, 0, 1, 0);
  lua_sethook(L, nullptr, 0, 0);
  context_->limit = SIZE_MAX;
  if (status == LUA_OK) return true;

  if (context_->stopped) {
    error = "script " + name +
            (context_->stopLine > 0 ? ", line " + std::to_string(context_->stopLine) : "") +
            ": " + kStoppedText;
  } else if (status == LUA_ERRMEM) {
    error = "script " + name + ": the script needs more than the " + SizeText(budget) +
            " of memory a project script may use";
  } else {
    const char* message = lua_tostring(L, -1);
    error = ScriptErrorText(
        name, message ? message
                      : std::string("error object is a ") + luaL_typename(L, -1) + " value");
  }
  lua_pop(L, 1);
  return false;
}

}  // namespace wren
