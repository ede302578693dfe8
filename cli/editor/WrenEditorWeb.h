// The editor's page (HTML, script, style), compiled into the executable so that it works offline
// and is always the page the server was built with.
#pragma once

#include <cstddef>
#include <string_view>

namespace wren {

struct TWrenWebAsset {
  const char* name;  // file name in cli/editor/web ("editor.js")
  const unsigned char* data;
  size_t size;
  std::string_view Bytes() const { return {reinterpret_cast<const char*>(data), size}; }
};

/// The embedded files; nullptr when there is no such file.
const TWrenWebAsset* FindWebAsset(std::string_view name);

/// The content type a file is served with, from its extension.
const char* WebContentType(std::string_view name);

}  // namespace wren
