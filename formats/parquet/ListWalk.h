#pragma once

#include "parquet/Leaves.h"

#include <velmorak/Table.h>

namespace velmorak::parquet {

/// Counts the elements of lists within lists, or tells their lists, from the levels of a leaf in them.
class ListWalk {
public:
    /// @param column of counts or rows; its leaf outlives this.
    ListWalk(const columnar::NestedColumn& column, const Leaf& leaf);

    /// @param repetition 0 where a row begins.
    /// @throws Failure if the levels contradict each other.
    void step(unsigned repetition, unsigned definition);
    /// Number of integers so far.
    std::size_t size() const { return values.size(); }
    /// @return the integers of all rows.
    Column take();

private:
    bool isCounting;
    unsigned level;              ///< Repetition level of further elements of a list.
    unsigned listDefinition;     ///< Least definition level where there is a list, which may be missing.
    unsigned elementDefinition;  ///< Least definition level where it has an element.
    std::int64_t lists = 0;      ///< Of the row so far.
    Column::Integers values;
    std::vector<std::uint64_t> offsets;
};

}  // namespace velmorak::parquet
