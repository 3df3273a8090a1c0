#pragma once

#include <string>
#include <string_view>

namespace velmorak {

/// Prints one line to standard error, with control characters escaped. The middle of an excessively long line is
/// replaced by an ellipsis.
void printMessage(const std::string& sentence);

/// The text in double quotes, with control characters escaped, shortened where it is too long for a message.
std::string quote(std::string_view text);

/// A sentence from elsewhere as a part of another one: in UTF-8, without its full stop.
std::string withoutFullStop(std::string sentence);

}  // namespace velmorak
