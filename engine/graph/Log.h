#pragma once

#include <string>
#include <string_view>

namespace velmorak {

/// Writes one line to standard error, with control characters written out; in the middle of what is longer than any
/// message some is left out.
void printMessage(const std::string& sentence);

/// The text in double quotes, with control characters written out, and shortened where it is too long for a message.
std::string quote(std::string_view text);

/// What someone else has said, as a part of a sentence: without its own full stop, in UTF-8.
std::string withoutFullStop(std::string sentence);

}  // namespace velmorak
