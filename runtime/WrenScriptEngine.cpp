#include "WrenScriptEngine.h"

#include <cstdio>
#include <lua.hpp>
#include <memory>
#include <vector>

#include "WrenActionRegistry.h"
#include "WrenScriptSandbox.h"
#include "WrenUtils.h"

// Lua is built as C: its errors are longjmps. Every C function Lua calls here does its C++ work in
// a helper that catches everything and returns; only then, with no C++ object alive in the frame,
// is the error raised (with the message in a plain char array).

namespace wren {

namespace {

constexpr char kObjectMeta[] = "Marrowby.ScriptObject";
constexpr size_t kMessageSize = 1024;

void CopyMessage(char* message, const char* text) {
  std::snprintf(message, kMessageSize, "%s", text);
}

void PushVariant(lua_State* L, const WrenVariant& value) {
  if (const bool* b = std::get_if<bool>(&value))
    lua_pushboolean(L, *b ? 1 : 0);
  else if (const int64_t* i = std::get_if<int64_t>(&value))
    lua_pushinteger(L, static_cast<lua_Integer>(*i));
  else if (const double* d = std::get_if<double>(&value))
    lua_pushnumber(L, *d);
  else if (const std::string* s = std::get_if<std::string>(&value))
    lua_pushlstring(L, s->data(), s->size());
  else
    lua_pushnil(L);
}

/// The value at the index as a script value; false for tables, functions and other Lua-only types.
bool ToVariant(lua_State* L, int index, WrenVariant& value) {
  switch (lua_type(L, index)) {
    case LUA_TNIL:
    case LUA_TNONE:
      value = std::monostate{};
      return true;
    case LUA_TBOOLEAN:
      value = lua_toboolean(L, index) != 0;
      return true;
    case LUA_TNUMBER:
      if (lua_isinteger(L, index))
        value = static_cast<int64_t>(lua_tointeger(L, index));
      else
        value = static_cast<double>(lua_tonumber(L, index));
      return true;
    case LUA_TSTRING: {
      size_t size = 0;
      const char* text = lua_tolstring(L, index, &size);
      value = std::string(text, size);
      return true;
    }
    default:
      return false;
  }
}

TWrenScriptObject* ObjectAt(lua_State* L, int index) {
  void* box = luaL_testudata(L, index, kObjectMeta);
  return box ? *static_cast<TWrenScriptObject**>(box) : nullptr;
}

/// Exact name first, then without regard to case; -1 when none.
template <class List, class NameOf>
int FindByName(const List& list, const char* key, NameOf nameOf) {
  for (size_t i = 0; i < list.size(); ++i)
    if (nameOf(list[i]) == key) return static_cast<int>(i);
  for (size_t i = 0; i < list.size(); ++i)
    if (SameText(nameOf(list[i]), key)) return static_cast<int>(i);
  return -1;
}

/// Calls the method an upvalue names with the Lua arguments; pushes its result. Answers the
/// number of results, or -1 with the message filled.
int CallMethod(lua_State* L, char* message) noexcept {
  try {
    TWrenScriptObject* object = ObjectAt(L, lua_upvalueindex(1));
    const lua_Integer index = lua_tointeger(L, lua_upvalueindex(2));
    if (!object || index < 0 || index >= static_cast<lua_Integer>(object->methods.size())) {
      CopyMessage(message, "method of an object that no longer exists");
      return -1;
    }
    const TWrenScriptMethod& method = object->methods[static_cast<size_t>(index)];
    // Called as Obj:Method(...) the object comes first; Obj.Method(...) passes only arguments.
    const int top = lua_gettop(L);
    int first = 1;
    if (top >= 1 && lua_rawequal(L, 1, lua_upvalueindex(1))) first = 2;
    std::vector<WrenVariant> args;
    for (int i = first; i <= top; ++i) {
      WrenVariant value;
      if (!ToVariant(L, i, value)) {
        std::snprintf(message, kMessageSize, "bad argument #%d to '%s' (%s value not allowed)",
                      i - first + 1, method.name.c_str(), luaL_typename(L, i));
        return -1;
      }
      args.push_back(std::move(value));
    }
    if (!method.call) {
      std::snprintf(message, kMessageSize, "method '%s' cannot be called", method.name.c_str());
      return -1;
    }
    const WrenVariant result = method.call(args);
    PushVariant(L, result);
    return 1;
  } catch (const std::exception& ex) {
    CopyMessage(message, ex.what());
  } catch (...) {
    CopyMessage(message, "unknown error");
  }
  return -1;
}

int MethodThunk(lua_State* L) {
  char message[kMessageSize];
  const int results = CallMethod(L, message);
  if (results < 0) return luaL_error(L, "%s", message);
  return results;
}

/// __index of an object: a method as a callable, a field as its current value, else nil.
int IndexObject(lua_State* L, char* message) noexcept {
  try {
    TWrenScriptObject* object = ObjectAt(L, 1);
    if (!object || lua_type(L, 2) != LUA_TSTRING) {
      lua_pushnil(L);
      return 1;
    }
    const char* key = lua_tostring(L, 2);
    const int method =
        FindByName(object->methods, key, [](const TWrenScriptMethod& m) { return m.name; });
    if (method >= 0) {
      lua_pushvalue(L, 1);
      lua_pushinteger(L, method);
      lua_pushcclosure(L, MethodThunk, 2);
      return 1;
    }
    const int field =
        FindByName(object->fields, key, [](const auto& f) -> std::string { return f.first; });
    if (field < 0 || !object->fields[static_cast<size_t>(field)].second) {
      lua_pushnil(L);
      return 1;
    }
    const WrenVariant value = object->fields[static_cast<size_t>(field)].second();
    PushVariant(L, value);
    return 1;
  } catch (const std::exception& ex) {
    CopyMessage(message, ex.what());
  } catch (...) {
    CopyMessage(message, "unknown error");
  }
  return -1;
}

int IndexThunk(lua_State* L) {
  char message[kMessageSize];
  const int results = IndexObject(L, message);
  if (results < 0) return luaL_error(L, "%s", message);
  return results;
}

int ToStringThunk(lua_State* L) {
  TWrenScriptObject* object = ObjectAt(L, 1);
  lua_pushstring(L, object ? object->typeName.c_str() : "object");
  return 1;
}

void PushObject(lua_State* L, TWrenScriptObject* object) {
  auto** box = static_cast<TWrenScriptObject**>(lua_newuserdatauv(L, sizeof(object), 0));
  *box = object;
  luaL_setmetatable(L, kObjectMeta);
}

}  // namespace

bool RunScript(TWrenActionScript& script, WrenVariant& result, std::string& error,
               const TWrenScriptLimits& limits) {
  if (!SameText(script.language, "lua")) {
    error = "script " + script.name + ": unsupported script language '" + script.language + "'";
    return false;
  }
  // Declared before the sandbox so the objects outlive every Lua reference to them.
  std::vector<std::shared_ptr<TWrenScriptObject>> objects;
  TWrenScriptSandbox sandbox(limits);
  lua_State* L = sandbox.State();
  if (!L) return sandbox.Run(script.name, script.text, error);

  luaL_newmetatable(L, kObjectMeta);
  lua_pushcfunction(L, IndexThunk);
  lua_setfield(L, -2, "__index");
  lua_pushcfunction(L, ToStringThunk);
  lua_setfield(L, -2, "__tostring");
  lua_pushliteral(L, "locked");
  lua_setfield(L, -2, "__metatable");
  lua_pop(L, 1);

  for (auto& [name, factory] : WrenRegistrations().scriptObjects) {
    std::shared_ptr<TWrenScriptObject> object = factory ? factory() : nullptr;
    if (!object) continue;
    PushObject(L, object.get());
    lua_setglobal(L, name.c_str());
    objects.push_back(std::move(object));
  }
  for (const IWrenActionScriptParameter& param : script.params.items) {
    if (param.object) {
      PushObject(L, param.object.get());
      objects.push_back(param.object);
    } else {
      PushVariant(L, param.value);
    }
    lua_setglobal(L, param.name.c_str());
  }

  if (!sandbox.Run(script.name, script.text, error)) return false;

  WrenVariant returned;
  if (!ToVariant(L, -1, returned)) {
    error = "script " + script.name + ": the script returned a " + luaL_typename(L, -1) +
            " value, which a build step cannot use";
    return false;
  }
  lua_pop(L, 1);
  // Raw reads: the globals' __index answers for names the sandbox leaves out.
  lua_pushglobaltable(L);
  for (IWrenActionScriptParameter& param : script.params.items) {
    if (param.object) continue;
    lua_pushlstring(L, param.name.data(), param.name.size());
    lua_rawget(L, -2);
    WrenVariant value;
    if (!ToVariant(L, -1, value)) {
      error = "script " + script.name + ": parameter '" + param.name + "' holds a " +
              luaL_typename(L, -1) + " value, which cannot be passed back";
      return false;
    }
    lua_pop(L, 1);
    param.value = std::move(value);
  }
  result = std::move(returned);
  return true;
}

}  // namespace wren
