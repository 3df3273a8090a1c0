#pragma once

#include <velmorak/TableReader.h>
#include <velmorak/Value.h>

#include <memory>

namespace velmorak {

/// The table that an Accumulator yields: rows that do not depend on one row of the input alone, such as sorted ones.
/// The kind has an output of type table and sets it in Accumulation::finish; what is wired to it reads the rows in
/// later passes, as from a source. The rows are in memory or in temporary files (RowMemory.h, ChunkFile.h), which the
/// destructor frees: the run keeps the table until nobody needs it any more.
/// Threads: any number of readers at once.
class StoredTable : public DataObject {
public:
    ValueType type() const override { return ValueType::Table; }
    virtual const Schema& schema() const = 0;
    /// A reader of all rows, which this outlives. Each gives the same rows in the same chunks.
    virtual std::unique_ptr<TableReader> open() const = 0;
};

}  // namespace velmorak
