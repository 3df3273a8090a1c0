#pragma once

#include "ObjectTable.h"

#include <velmorak/Table.h>

#include <string>
#include <vector>

/// Formats values for people.
namespace velmorak {

/// Formats rows of texts below their headings, in columns of minimal width; numbers are right-aligned.
std::string alignedTable(const std::vector<std::string>& names, const std::vector<std::vector<std::string>>& rows);

/// Formats a value that is not a table: a number, with its error, or a text on its line or lines; of an object its
/// title, statistics and first rows.
/// @param name of the plug-in and its output.
/// @throws Failure, without an input, for an object without numbers.
std::string printedValue(const std::string& name, const Value& value, std::size_t rows);

/// Replaces control characters, which could affect a terminal, by blanks; line ends and tabs are kept.
std::string withoutControls(std::string text);

}  // namespace velmorak
