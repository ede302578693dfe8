// Turns the bytes of a text file into UTF-8: the host's shared reader of byte-order marks.
#pragma once

#include <string>
#include <string_view>

namespace wren {

/// The text of a file's bytes as UTF-8: a UTF-8 byte-order mark is dropped, UTF-16 (LE or BE)
/// with a byte-order mark is converted, anything else is returned as it is (8-bit text stays bytes).
/// Unpaired UTF-16 surrogates become U+FFFD.
std::string DecodeTextBytes(std::string_view bytes);

/// Appends the UTF-8 form of a code point.
void AppendUtf8(std::string& out, char32_t codePoint);

}  // namespace wren
