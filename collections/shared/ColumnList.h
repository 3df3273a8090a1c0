#pragma once

#include <velmorak/Table.h>

#include <string>
#include <vector>

/// Inputs that name columns of a table: "x, y `transverse momentum`".
namespace velmorak {

/// Names in a list separated by blanks or commas; a name that contains other characters is put in back quotes.
/// @throws Failure for the input when a back quote is not closed.
std::vector<std::string> columnNames(const std::string& input, const std::string& list);

/// Position of one column.
/// @throws Failure for the input when it does not exist; names similar columns.
std::size_t columnPosition(const std::string& input, const std::string& name, const Schema& schema);

/// Positions of the named columns in the schema, in the order of the list.
/// @throws Failure for the input when a column does not exist or is listed twice.
std::vector<std::size_t> columnPositions(const std::string& input, const std::string& list, const Schema& schema);

/// @return why the list cannot be parsed; empty if it can.
std::string columnListRefusal(const std::string& input, const std::string& list);

}  // namespace velmorak
