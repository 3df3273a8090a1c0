#pragma once

#include <string>
#include <string_view>

namespace velmorak {

/// @return whether the text is well-formed UTF-8.
bool isUtf8(std::string_view text);

/// @return the text with each byte that is no part of a well-formed sequence taken as ISO-8859-1.
std::string asUtf8(std::string_view text);

}  // namespace velmorak
