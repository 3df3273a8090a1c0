#pragma once

#include <velmorak/FileFormat.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

/// Tables, views and queries of SQLite databases. See docs/sqlite.md.
namespace velmorak {

/// Whether a file begins like one.
bool isSqlite(const FileStart& start);

/// @throws Failure if the file cannot be read; Stopped.
std::vector<FileObject> listSqlite(const std::filesystem::path& file, RunContext& context);

/// Opens a table, a view, or what a query gives.
/// @param object  name of a table or view, or one SELECT; empty for the only table or view.
/// @param columns names of the columns to provide, in this order; empty for all that can be read.
/// @throws Failure also if there is no such table or column, with the existing ones, and for a column that cannot be
///         read, with the reason; Stopped.
std::unique_ptr<TableReader> openSqliteTable(const std::filesystem::path& file, const std::string& object,
                                             const std::vector<std::string>& columns, RunContext& context);

}  // namespace velmorak
