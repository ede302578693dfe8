# Writes a C++ source holding the bytes of each web file: cmake -DOUTPUT=... -DFILES="a;b" -P ...
# (plain CMake, so the build needs no xxd).
string(REPLACE "|" ";" FILES "${FILES}")
set(body "")
set(table "")
set(n 0)
foreach(file ${FILES})
  get_filename_component(name "${file}" NAME)
  file(READ "${file}" hex HEX)
  string(LENGTH "${hex}" length)
  math(EXPR size "${length} / 2")
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${hex}")
  # A file of no bytes still needs one element; its size says 0.
  if(size EQUAL 0)
    set(bytes "0")
  endif()
  string(APPEND body "const unsigned char kAsset${n}[] = {${bytes}};\n")
  string(APPEND table "    {\"${name}\", kAsset${n}, ${size}},\n")
  math(EXPR n "${n} + 1")
endforeach()
file(WRITE "${OUTPUT}.tmp" "// Generated from cli/editor/web by EmbedWeb.cmake; do not edit.
#include \"cli/editor/WrenEditorWeb.h\"

namespace wren {
namespace {
${body}
const TWrenWebAsset kAssets[] = {
${table}    {nullptr, nullptr, 0},
};
}  // namespace

const TWrenWebAsset* FindWebAsset(std::string_view name) {
  for (const TWrenWebAsset* a = kAssets; a->name; ++a)
    if (name == a->name) return a;
  return nullptr;
}

}  // namespace wren
")
# Unchanged output keeps its time stamp, so nothing recompiles.
execute_process(COMMAND ${CMAKE_COMMAND} -E copy_if_different "${OUTPUT}.tmp" "${OUTPUT}")
file(REMOVE "${OUTPUT}.tmp")
