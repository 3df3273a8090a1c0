#pragma once

#include "files/FileList.h"

#include <velmorak/Kind.h>

#include <functional>
#include <memory>

namespace velmorak {

struct FileChainOptions {
    bool hasFileColumns = false;      ///< Adds the columns file and file_number (from 0).
    bool takesCommonColumns = false;  ///< Takes the columns that all files have, instead of failing if they differ.
    bool skipsDamaged = false;        ///< Goes on without a file that cannot be read, or not to its end.
};

/// Opens one of the files.
/// @param wanted types that the columns should have, where the format leaves a choice; null when the columns alone are
///               wanted, so that the beginning of the file is enough.
/// Threads: several at once.
using OpenFile = std::function<std::unique_ptr<TableReader>(const std::filesystem::path& file, const Schema* wanted)>;

/// Reads several files as one table, one after the other. Their columns must have the same names and types, in any
/// order; integers become real where another file has reals. The properties of the files become columns.
/// Looks at the columns of every file before the first row is read, and opens the next files on other threads while
/// rows are read.
/// @param open outlives the run's tasks: it is copied.
/// @param context outlives the reader.
/// @throws Failure that names both files and the column if the files differ, and whatever open throws; Stopped.
std::unique_ptr<TableReader> openFiles(FileList list, OpenFile open, const FileChainOptions& options,
                                       RunContext& context);

}  // namespace velmorak
