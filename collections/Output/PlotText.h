#pragma once

#include <string>

namespace velmorak {

/// A text as gnuplot takes it, in single quotes, where no character has a meaning of its own; the quote itself is
/// joined on. Whatever ends a line or is no valid UTF-8 is replaced, so that no text can become a command.
std::string quotedForGnuplot(const std::string& text);

/// At most so many digits, as people read them.
std::string roundedText(double number, int digits = 5);

/// A number with its error, both to the place of the error's second digit: "91.188 ± 0.021".
std::string withError(double number, double error);

/// Length of the well-formed UTF-8 sequence at a position (the table of well-formed sequences of the Unicode standard);
/// 0 if there is none.
std::size_t utf8LengthAt(const std::string& text, std::size_t at);

/// Characters of a text, roughly as many as take room in a line.
std::size_t lengthOf(const std::string& text);

}  // namespace velmorak
