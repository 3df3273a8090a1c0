#pragma once

#include <velmorak/Kind.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

/// ROOT files: trees, ntuples and RNTuples as tables. docs/root.md says what is read.
namespace velmorak {

/// An object of a file.
struct RootEntry {
    std::string path;       ///< "/" separated, such as "run1/events".
    std::string className;  ///< "TTree", "ROOT::RNTuple", "TH1D", ...
    bool isTable = false;
};

/// @throws Failure when the file is missing or is no ROOT file.
std::vector<RootEntry> listRoot(const std::filesystem::path& file);

/// Opens a tree, ntuple or RNTuple. Columns are decoded when a chunk is completed, on any thread.
/// @param object  path of the object; empty for the only table that the file holds.
/// @param columns names of the columns to offer, in this order; none for all that can be read.
/// @throws Failure also when there is no such object or column, with the list of those that there are, and for a column
///         that cannot be read, with the reason.
std::unique_ptr<TableReader> openRootTable(const std::filesystem::path& file, const std::string& object,
                                           const std::vector<std::string>& columns, RunContext& context);

}  // namespace velmorak
