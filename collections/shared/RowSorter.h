#pragma once

#include "shared/SortedRows.h"

#include <velmorak/ChunkFile.h>
#include <velmorak/RowMemory.h>
#include <velmorak/Run.h>
#include <velmorak/StoredTable.h>

#include <cstddef>
#include <memory>
#include <vector>

namespace velmorak {

/// Sorted rows in a temporary file: blocks of rows that are small enough for many runs to be read at the same time.
struct SortedRun {
    ChunkFile file;
    std::vector<ChunkFile::Place> blocks;
};

/// Sorts any number of rows. They stay in memory as long as the run's budget allows it; then those in memory are merged
/// to a run in a temporary file, and the runs are merged when the table is read. The rows of the table, and its chunks,
/// do not depend on that.
/// Threads: one at a time.
class RowSorter {
public:
    /// @param schema of the rows.
    /// @param keys and context outlive this and the table.
    RowSorter(Schema schema, std::shared_ptr<const KeyMaker> keys, RunContext& context);
    ~RowSorter();

    /// Adds rows that come after all former ones where keys are equal.
    void add(SortedRows rows);
    /// @return the rows in the order of their keys. The sorter is then used up.
    std::shared_ptr<const StoredTable> finish();
    /// Number of runs in temporary files.
    std::size_t runs() const { return files.size(); }

private:
    void spill();
    void mergeFiles();

    Schema schema;
    std::shared_ptr<const KeyMaker> keys;
    RunContext& context;
    std::unique_ptr<MemoryShare> memory;
    std::vector<SortedRowsPtr> parts;  ///< In memory.
    std::vector<std::shared_ptr<const SortedRun>> files;
};

}  // namespace velmorak
