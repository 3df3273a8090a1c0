#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Small operations on texts that users write and read.
namespace velmorak {

/// Removes blanks (space, tab, carriage return, line feed) from both ends.
/// @return a view of the same memory.
constexpr std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(blanks);
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

/// @return the text in double quotes, as messages show names and values. Nothing is escaped.
std::string quoted(std::string_view text);

/// Levenshtein distance: how many characters must be inserted, removed or replaced to turn one text into the other.
/// ASCII letters of either case are equal; other text is compared byte by byte.
std::size_t editDistance(std::string_view a, std::string_view b);

/// Completes a message about an unknown name.
/// @return '; did you mean "gauss"?' with the nearest of the known names; empty when none is near, that is when more
///         than a third of the characters differ (one character in a short name).
std::string suggestion(std::string_view unknown, const std::vector<std::string>& known);

/// Completes a message about a column that does not exist.
/// @return '; the columns are "pt", "eta" and 12 more': at most twenty, the most similar first, else in their order.
///         Empty if there are none.
std::string columnsThere(std::string_view unknown, const std::vector<std::string>& columns);

}  // namespace velmorak
