#pragma once

#include <string>
#include <string_view>

namespace velmorak::io {

/// Appends a text escaped for an attribute. Characters that XML does not allow, for example control characters, become
/// U+FFFD; bytes that are not UTF-8 are taken as ISO-8859-1.
void appendEscaped(std::string_view text, std::string& target);
std::string escaped(std::string_view text);

/// Appends the shortest text that reads back as the same number, as velmorak::textOf does.
void appendNumber(double number, std::string& target);

}  // namespace velmorak::io
