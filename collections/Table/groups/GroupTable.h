#pragma once

#include "Table/groups/GroupPlan.h"
#include "Table/groups/GroupValues.h"

#include <velmorak/StateBytes.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace velmorak {

/// Groups of rows with equal keys, in the order in which the keys appear.
/// Threads: one at a time.
class GroupTable {
public:
    /// @param plan outlives this.
    explicit GroupTable(const GroupPlan& plan);

    void fill(const Chunk& chunk);
    /// Adds groups of rows that follow.
    void merge(const GroupTable& other);

    std::size_t size() const { return keys.size(); }
    /// Memory that the groups occupy.
    std::size_t bytes() const;
    /// Number of values that were left out because they are missing.
    std::int64_t missing() const;
    /// All groups in the order of their keys.
    std::vector<std::uint32_t> inOrder() const;
    const std::string& key(std::uint32_t group) const { return keys[group]; }
    std::vector<std::string> keysOf(const std::vector<std::uint32_t>& groups) const;
    ColumnPtr rowCounts(const std::vector<std::uint32_t>& groups) const;
    const GroupValues& values(std::size_t quantity) const { return *all[quantity]; }

    /// @return columns of which each row is one of the groups.
    std::vector<ColumnPtr> store(const std::vector<std::uint32_t>& groups) const;
    /// Reads what store gave, into a table without groups.
    /// @throws std::invalid_argument if the columns are not such columns.
    void load(const std::vector<ColumnPtr>& columns);
    void save(StateWriter& writer) const;
    void load(StateReader& reader);

private:
    std::uint32_t groupFor(const std::string& key);
    void index();

    const GroupPlan* plan;
    std::vector<std::string> keys;
    std::vector<std::int64_t> rows;                 ///< By group.
    std::vector<std::unique_ptr<GroupValues>> all;  ///< By quantity.
    std::size_t keyBytesUsed = 0;
    std::vector<std::uint32_t> slots;  ///< Hash table of 1 + group, at most half full; empty until it is needed.
};

}  // namespace velmorak
