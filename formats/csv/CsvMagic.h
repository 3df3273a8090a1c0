#pragma once

#include <string_view>

namespace velmorak {

/// @param head the first bytes of a file.
/// @return what a file is that is certainly no text of rows, and that nothing here reads, with what to do, for example
///         "packed with xz (unpack it first)"; empty if it may be text.
std::string_view binaryFormatOf(std::string_view head);

}  // namespace velmorak
