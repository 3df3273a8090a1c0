#pragma once

#include "ObjectTable.h"

#include <velmorak/Table.h>

#include <string>
#include <vector>

/// Values as a person reads them.
namespace velmorak {

/// Rows of texts below their names, in columns that are as wide as they must be. Numbers stand to the right.
std::string alignedTable(const std::vector<std::string>& names, const std::vector<std::vector<std::string>>& rows);

/// What is printed of a value that is no table: a number or text in its line or lines; of an object its title, its
/// statistics and its first rows.
/// @throws Failure, without an input, for what has no numbers to show.
std::string printedValue(const std::string& name, const Value& value, std::size_t rows);

/// Control characters, which could change what a terminal shows, become blanks; line ends and tabulators stay.
std::string withoutControls(std::string text);

}  // namespace velmorak
