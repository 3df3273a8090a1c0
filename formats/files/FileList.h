#pragma once

#include <velmorak/Table.h>

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace velmorak {

class RunContext;

/// One of the files that a source reads.
struct ListedFile {
    std::string name;            ///< As the document or the list gives it, or as a pattern found it.
    std::filesystem::path path;  ///< To open.
    std::size_t row = 0;         ///< Of the table of file properties, if there is one.
};

/// The files that a source reads, in order, with their properties.
struct FileList {
    std::vector<ListedFile> files;
    std::vector<ColumnInfo> properties;  ///< Columns of the table of file properties, without the files' names.
    std::vector<ColumnPtr> values;       ///< Of each property, with a value for each row of that table.
    std::vector<std::string> lists{};    ///< Names of the lists and tables in which files are named.
};

/// Finds the files that a user's text names: one or several, separated by line ends or commas, each of them
///  - a file; a name with commas, or with blanks at its ends, in double quotes;
///  - a pattern, such as run_*.csv or data/**/*.aida.gz (Glob.h), whose matches are sorted by code point;
///  - a folder, whose files are sorted likewise; folders in it and hidden files are left out;
///  - @list.txt: a text file with one name or pattern a line, relative to the list's folder; # begins a comment;
///  - @samples.csv: a table of file properties, with a column "file" of names or patterns relative to the table's
///    folder; its other columns are the properties. It must be the only entry of the text.
/// Relative names are searched beside the document, then in the current folder. A text that is the name of an existing
/// file means this file, whatever characters it contains. Every file is recorded in the context as an input. In a run
/// that was planned, the files are those that were found then (factOf).
/// @param input name of the plug-in's input, for messages.
/// @throws Failure if the text names no file, a pattern matches none, a file is listed twice, or a list cannot be read;
///         Stopped.
FileList findFiles(const std::string& input, const std::string& text, RunContext& context);

}  // namespace velmorak
