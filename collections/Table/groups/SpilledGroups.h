#pragma once

#include "Table/groups/GroupTable.h"

#include <velmorak/ChunkFile.h>
#include <velmorak/StoredTable.h>

#include <array>
#include <cstddef>
#include <memory>
#include <vector>

namespace velmorak {

/// Groups that are too many for the memory, in a temporary file. Their keys divide them among partitions, of which only
/// one is in memory at a time.
class SpilledGroups {
public:
    static constexpr std::size_t partitions = 64;

    /// @param plan outlives this.
    explicit SpilledGroups(const GroupPlan& plan) : plan(plan) {}

    /// Adds groups of rows that follow. They are merged only when they are read, in this order, so that the sums do not
    /// depend on how much memory there was.
    void append(const GroupTable& table);
    /// All groups of one partition.
    GroupTable partition(std::size_t number) const;

private:
    const GroupPlan& plan;
    ChunkFile file;
    std::array<std::vector<ChunkFile::Place>, partitions> places;
};

/// @return the result of a grouping in the order of the keys, in another temporary file. @param missing receives the
/// number of values that were left out. @param groups receives the number of groups.
std::shared_ptr<const StoredTable> sortedGroups(const GroupPlan& plan, const SpilledGroups& spilled,
                                                std::int64_t& missing, std::size_t& groups);

}  // namespace velmorak
