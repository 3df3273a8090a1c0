#pragma once

#include "shared/RowSorter.h"
#include "shared/SortedRows.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace velmorak {

/// Some rows in order, in the blocks of the runs that they come from.
struct MergedRows {
    std::vector<SortedRowsPtr> parts;
    std::vector<RowAt> rows;
};

/// Merges sorted runs from front to back. Of rows with equal keys those of earlier runs come first.
/// Threads: one at a time.
class RunMerge {
public:
    /// @param schema of the rows.
    RunMerge(const Schema& schema, std::shared_ptr<const KeyMaker> keyMaker,
             std::vector<std::shared_ptr<const SortedRun>> runs);

    /// @param maxBytes after which no further row is taken; rows of numbers alone are not measured.
    /// @return the next rows, at most maxRows; none at the end.
    MergedRows next(std::size_t maxRows, std::size_t maxBytes);

private:
    struct Cursor {
        std::shared_ptr<const SortedRun> run;
        std::size_t block = 0;  ///< Number of the next.
        SortedRowsPtr rows{};   ///< Null at the end of the run.
        std::uint32_t row = 0;
        std::uint32_t part = 0;  ///< Of rows, in the MergedRows that are being made.
        bool isKnown = false;    ///< Whether it is there.
    };

    void readBlock(Cursor& cursor) const;
    void advance(Cursor& cursor) const;
    bool isBefore(std::size_t one, std::size_t other) const;
    void sink(std::size_t position);
    void take(MergedRows& merged);

    std::size_t columns;
    bool hasHeavyRows;
    std::shared_ptr<const KeyMaker> keys;
    std::vector<Cursor> cursors;
    std::vector<std::size_t> heap;  ///< Cursors that have rows: each comes before those at twice its position.
};

}  // namespace velmorak
