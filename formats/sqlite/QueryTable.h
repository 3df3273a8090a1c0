#pragma once

#include "sqlite/Database.h"

#include <velmorak/FileFormat.h>

#include <memory>
#include <string>
#include <vector>

namespace velmorak::sqlite {

/// @return the columns of a query with their types, which follow from all values: text if any is one, else real if any
///         is one or is missing, else integer, or boolean if declared so with values 0 and 1.
/// @param maxRows to look at; 0 for all.
std::vector<FileColumn> columnsOf(const Database& database, const std::string& text, std::size_t maxRows);

/// @param query   that gives just these columns.
/// @param columns all can be read.
std::unique_ptr<TableReader> openQuery(std::unique_ptr<Database> database, const std::string& query,
                                       const std::vector<FileColumn>& columns, RunContext& context);

}  // namespace velmorak::sqlite
