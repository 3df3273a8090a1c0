#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Texts of documents and kinds as a terminal may be given them.
namespace velmorak {

/// A control character, or one that ends a line or turns the direction of writing.
bool hasControlCharacter(std::string_view text);

/// The text with its control characters, and with bytes that are no UTF-8, written out: "\n", "\x1B", "\u202E". What
/// it says can then neither begin a line nor change what stands on the terminal.
std::string visible(std::string_view text);

/// The same where line ends and tabulators belong to the text.
std::string visibleLines(std::string_view text);

/// A name as a part of a message: its beginning and "..." where it is longer than anybody reads.
std::string shortened(const std::string& name);

}  // namespace velmorak
