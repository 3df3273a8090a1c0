#pragma once

#include "shared/RowGroups.h"

#include <velmorak/Table.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace velmorak {

enum class Aggregate;

/// The values of one expression in each of several groups. A value that is missing (NaN, or an empty
/// text) is left out.
/// Threads: one at a time.
class GroupValues {
public:
    virtual ~GroupValues() = default;
    /// Takes the values of a chunk. Called once, while there are no groups.
    virtual void fill(const Column& values, const RowsByGroup& rows) = 0;
    /// Adds the groups of another object of the same class, whose rows follow.
    /// @param targets for each of its groups, the one to add it to; new ones have the next numbers.
    virtual void merge(const GroupValues& other, const std::vector<std::uint32_t>& targets) = 0;
    /// Appends the columns that load reads: one row for each of the groups.
    virtual void store(const std::vector<std::uint32_t>& groups, std::vector<ColumnPtr>& columns) const = 0;
    /// Reads what store wrote. Called while there are no groups.
    /// @param columns those of store; taken away.
    /// @throws std::invalid_argument if the columns are not such columns of that many groups.
    virtual void load(std::span<const ColumnPtr>& columns, std::size_t groups) = 0;
    /// Memory that the values occupy.
    virtual std::size_t bytes() const = 0;
    /// Values that were left out, in all groups.
    virtual std::int64_t missing() const = 0;
    /// Appends one row for each of the groups: two columns for a mean, of which the second is its error.
    virtual void finish(Aggregate function, const std::vector<std::uint32_t>& groups,
                        std::vector<ColumnPtr>& columns) const = 0;
};

/// @param isKept every value is kept, for a median.
std::unique_ptr<GroupValues> makeGroupValues(ColumnType type, bool isKept);

}  // namespace velmorak
