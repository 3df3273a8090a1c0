#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Makes texts of documents and kinds safe to print on a terminal.
namespace velmorak {

/// Whether the text has a control character, or one that ends a line or changes the writing direction.
bool hasControlCharacter(std::string_view text);

/// Escapes control characters and bytes that are not UTF-8: "\n", "\x1B", "\u202E", so that the text can neither begin
/// a line nor change the terminal.
std::string visible(std::string_view text);

/// The same, but keeps the end of a line that is followed by two blanks, as before a quoted expression and its caret. A
/// message never begins with blanks, so no text can pass for another message.
std::string visibleMessage(std::string_view text);

/// The same, but keeps line ends and tabs.
std::string visibleLines(std::string_view text);

/// Shortens a long name for a message: its beginning and "...".
std::string shortened(const std::string& name);

}  // namespace velmorak
