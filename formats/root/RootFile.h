#pragma once

#include <velmorak/FileFormat.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

/// ROOT files: trees, ntuples and RNTuples as tables. See docs/root.md.
namespace velmorak {

/// An object of a file.
struct RootEntry {
    std::string path;       ///< "/" separated, such as "run1/events".
    std::string className;  ///< "TTree", "ROOT::RNTuple", "TH1D", ...
    bool isTable = false;
};

/// @throws Failure if the file is missing or is not a ROOT file.
std::vector<RootEntry> listRoot(const std::filesystem::path& file);

/// Opens a tree, ntuple or RNTuple. Columns are decoded when a chunk is completed, on any thread.
/// @param object  path of the object; empty for the only table in the file.
/// @param columns names of the columns to provide, in this order; empty for all that can be read.
/// @throws Failure also if there is no such object or column, with a list of the existing ones, and for a column that
///         cannot be read, with the reason.
std::unique_ptr<TableReader> openRootTable(const std::filesystem::path& file, const std::string& object,
                                           const std::vector<std::string>& columns, RunContext& context);

/// The rows of a table and its columns, with those that cannot be read.
struct RootTableContent {
    std::uint64_t rows = 0;
    std::vector<FileColumn> columns;
};

/// @throws as openRootTable.
RootTableContent lookAtRootTable(const std::filesystem::path& file, const std::string& object);

}  // namespace velmorak
