#pragma once

#include "ObjectTable.h"

#include <velmorak/Table.h>

#include <string>
#include <vector>

/// Lines of text with a row each, as CsvTable reads them: numbers read back to the last bit, with their type.
namespace velmorak {

/// A line with the names. A name is in quotes where it could be mistaken.
std::string csvHeader(const std::vector<std::string>& names, char delimiter);

/// May be called by several threads at once.
std::string csvRows(const Schema& schema, const Chunk& chunk, char delimiter);
std::string csvRows(const ObjectTable& table, char delimiter);

/// The value of one row as it stands in a field, without quotes; of a list all its values, with blanks between them.
std::string fieldText(const Column& column, std::size_t row);

}  // namespace velmorak
