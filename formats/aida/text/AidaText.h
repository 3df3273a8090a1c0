#pragma once

#include <string>
#include <string_view>

namespace velmorak::io {

/// Appends a text as it stands between the quotes of an attribute. What XML cannot hold, control characters for
/// example, becomes U+FFFD; bytes that are not UTF-8 are taken as ISO-8859-1.
void appendEscaped(std::string_view text, std::string& target);
std::string escaped(std::string_view text);

/// Appends the shortest text that reads back as the same number, as velmorak::textOf makes it.
void appendNumber(double number, std::string& target);

}  // namespace velmorak::io
