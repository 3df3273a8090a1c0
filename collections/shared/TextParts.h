#pragma once

#include <string>
#include <vector>

namespace velmorak {

/// Splits a list of expressions at separators outside of quotes.
/// @param signs each of which separates.
std::vector<std::string> partsOutsideQuotes(const std::string& text, const std::string& signs);

}  // namespace velmorak
