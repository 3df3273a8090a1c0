#pragma once

#include <velmorak/Table.h>

#include <string>
#include <vector>

namespace velmorak {

class RunContext;

/// A table with the properties of files.
struct FileProperties {
    std::vector<std::string> files;  ///< The column "file": names, patterns or folders.
    std::vector<ColumnInfo> properties;
    std::vector<ColumnPtr> values;  ///< Of each property, parallel to files.
};

/// @return whether the name is that of a table: it ends with .csv or .tsv, with or without .gz, .bz2 or .zip.
bool isPropertyTable(const std::string& name);

/// Reads a table of comma-separated values, or of values separated by tabs if its name says .tsv. It has a header with
/// a column "file"; # begins a comment line; empty fields and NA are missing values.
/// @param input name of the plug-in's input, for messages.
/// @throws Failure if it cannot be read, has no column "file", or a file is missing in a row; Stopped.
FileProperties readFileProperties(const std::string& input, const std::string& name, RunContext& context);

}  // namespace velmorak
