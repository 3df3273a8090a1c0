#pragma once

#include "files/FileList.h"
#include "files/FileSurvey.h"

#include <velmorak/FileOpener.h>

#include <memory>

namespace velmorak {

/// Reads several files as one table, one after the other. Their columns must have the same names and types, in any
/// order; integers become real where another file has reals. The properties of the files become columns.
/// Looks at the columns of every file before the first row is read, unless that was done when the run was planned, and
/// opens the next files on other threads while rows are read. At most 64 files are open at once, counted over all such
/// readers of the run (OpenFiles.h).
/// If damaged files are skipped, their rows before the damage are kept; of a file whose blocks are read on their own,
/// also the chunks after it. The rows that are kept do not depend on the number of threads.
/// @param context outlives the reader.
/// @throws as surveyFiles.
std::unique_ptr<TableReader> openFiles(FileList list, std::shared_ptr<const FileOpener> opener,
                                       const FileChainOptions& options, RunContext& context);

}  // namespace velmorak
