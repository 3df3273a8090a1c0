#pragma once

#include <velmorak/Table.h>

#include <memory>

namespace velmorak {

/// A second base of a RowOperation that countsRows, for rows that depend on those before them: running sums, or rows
/// that occur for the first time. Only look is called in order; apply works on several chunks at once.
class OrderedRows {
public:
    virtual ~OrderedRows() = default;
    /// Called once for every chunk, one after the other in the order of the rows, with Chunk::rowsBefore.
    /// @return what apply, called later for the chunk, finds in Chunk::owner.
    virtual std::shared_ptr<const void> look(const Chunk& chunk) = 0;
};

}  // namespace velmorak
