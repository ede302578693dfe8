// Plain types shared by the whole host contract.
#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace wren {

/// An ordered list of lines: the program's form for multi-valued properties.
using TStrings = std::vector<std::string>;

/// The path delimiter of the platform the host runs on.
#ifdef _WIN32
inline constexpr char PathDelim = '\\';
#else
inline constexpr char PathDelim = '/';
#endif

/// A value passed to or returned from a user script.
using WrenVariant = std::variant<std::monostate, bool, int64_t, double, std::string>;

/// Text form of a script value ("" for nothing, "true"/"false", numbers as written).
std::string VariantToString(const WrenVariant& value);

}  // namespace wren
