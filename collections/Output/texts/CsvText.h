#pragma once

#include "ObjectTable.h"

#include <velmorak/Table.h>

#include <string>
#include <vector>

/// Formats rows as lines of text for CsvTable: numbers read back to the last bit, with their type.
namespace velmorak {

/// The header line. A name is quoted if it could be misread.
std::string csvHeader(const std::vector<std::string>& names, char delimiter);

/// Threads: any number at once.
std::string csvRows(const Schema& schema, const Chunk& chunk, char delimiter);
std::string csvRows(const ObjectTable& table, char delimiter);

/// Text of one value, without quotes; of a list all its values, separated by blanks.
std::string fieldText(const Column& column, std::size_t row);
/// As above; a number of seconds since 1970 as a date (velmorak/Dates.h).
std::string fieldText(const ColumnInfo& info, const Column& column, std::size_t row);

}  // namespace velmorak
