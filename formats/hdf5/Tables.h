#pragma once

#include "hdf5/DatasetRows.h"

#include <velmorak/FileFormat.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace velmorak::hdf5 {

/// A column of a table, or why there is none.
struct TableColumn {
    FileColumn about;
    DatasetColumn source{};
};

/// Datasets of a file that are read side by side.
struct Table {
    std::string path;
    std::string type;  ///< "dataset", "group", "pandas table", "pandas frame".
    std::uint64_t rows = 0;
    std::vector<Dataset> datasets{};
    std::vector<TableColumn> columns{};
    std::string problem{};   ///< Why it is not a table; empty if it is one.
    bool isScalar = false;   ///< A single value, such as a remark; no table.
    bool isInGroup = false;  ///< A dataset whose group is a table.
};

/// Finds the tables of a file, in the order of their paths. A group is a table of its own if it has several datasets,
/// all of the same length. Called under the lock.
/// @throws Failure if the file is damaged.
std::vector<Table> tablesIn(hid_t file);

}  // namespace velmorak::hdf5
