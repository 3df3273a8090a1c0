#pragma once

#include <cstdint>
#include <string_view>

/// Values as AIDA files write them in entries. Blanks around a value are ignored.
namespace velmorak::io {

/// Reads an integer, which may be written with an exponent or a zero fraction: "1e3", "7.0".
/// @return false, with value unchanged, if the text is anything else or out of range.
bool readInteger(std::string_view text, std::int64_t& value);

/// Reads 0, 1, true or false, in any case.
/// @return false, with value unchanged, if the text is anything else.
bool readBoolean(std::string_view text, std::uint8_t& value);

}  // namespace velmorak::io
