#pragma once

#include "files/FileList.h"

#include <velmorak/FileOpener.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velmorak {

struct FileChainOptions {
    bool hasFileColumns = false;      ///< Adds the columns file and file_number (from 0).
    bool takesCommonColumns = false;  ///< Takes the columns that all files have, instead of failing if they differ.
    bool skipsDamaged = false;        ///< Goes on without a file that cannot be read, or not to its end.
};

/// What a look at the beginning of each file of a list has shown.
struct FileSurvey {
    Schema common;                       ///< The columns that the files have in common.
    std::vector<bool> isSkipped;         ///< Parallel to the list: the file cannot be opened.
    std::vector<std::string> reasons{};  ///< Why, of each file that is skipped, in their order.
    std::vector<std::string> leftOut{};  ///< Columns that differ between the files.
};

/// Whether a failure says that the file itself cannot be read, rather than that a value of the plug-in is wrong.
bool isDamage(const Failure& failure);

/// Looks at the columns of every file, several files at once; in a preview, only of the first that can be read; in a
/// run that was planned, of none: the columns are those that were found then (factOf). Warns about columns that are
/// left out and reports damaged files, if the options allow them.
/// @throws Failure that names both files and the column if the files differ, or that names the file if one cannot be
///         read; Stopped.
FileSurvey surveyFiles(const FileList& list, const std::shared_ptr<const FileOpener>& opener,
                       const FileChainOptions& options, RunContext& context);

}  // namespace velmorak
