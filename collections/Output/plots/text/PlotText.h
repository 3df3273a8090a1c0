#pragma once

#include <string>

namespace velmorak {

/// Quotes a text for gnuplot, in single quotes, where no character has a special meaning; quotes in it are
/// concatenated. Line ends and invalid UTF-8 are replaced, so that no text can become a command.
std::string quotedForGnuplot(const std::string& text);

/// Formats a number for people, with at most so many digits.
std::string roundedText(double number, int digits = 5);

/// As roundedText, but a whole number, such as a sum of weights that is a count, keeps all its digits: "1000000".
std::string roundedOrWhole(double number);

/// @return the text of numbers as a label: real minus signs, and powers of ten as "×10^{6}" instead of "e+06".
std::string numberLabel(const std::string& text);

}  // namespace velmorak
