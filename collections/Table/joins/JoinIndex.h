#pragma once

#include "Table/joins/JoinPlan.h"

#include "shared/RowGroups.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace velmorak {

/// Finds the rows of the second table of a join that belong to a row of the first one.
/// Threads: matches may be called by several threads at once.
class JoinIndex {
public:
    /// @param plan outlives this.
    explicit JoinIndex(const JoinPlan& plan) : plan(plan) {}

    /// Adds rows of the second table that follow.
    void append(const Chunk& chunk);
    /// Called once, after the last rows.
    /// @throws Failure if a range ends before it begins.
    void finish();

    /// Rows of both tables that belong together, in the order of the first table and then of the second.
    struct Matches {
        std::vector<std::uint32_t> first;
        std::vector<std::uint32_t> second;
        std::vector<std::uint32_t> counts;  ///< By row of the first table.
    };
    /// @param chunk of the first table.
    /// @throws Failure if there are too many for the memory.
    Matches matches(const Chunk& chunk) const;

private:
    struct Slot {
        std::uint64_t word = 0;
        std::uint32_t group = 0;  ///< 1 + group; 0 if free.
    };
    using Words = std::vector<std::uint64_t>;
    /// One word for each row: that of its only key, or a hash of all of them.
    struct KeyWords {
        Words words;
        std::vector<std::uint8_t> areMissing;  ///< Some key is NaN or an empty text, which equals nothing.
    };

    void indexGroups();
    void sortRanges();
    std::vector<ColumnPtr> firstKeys(const Chunk& chunk) const;
    static KeyWords wordsOf(const std::vector<ColumnPtr>& columns, std::size_t size);
    std::uint32_t groupOf(std::uint64_t word, const std::vector<ColumnPtr>& columns, std::size_t row) const;
    bool isGroup(std::uint32_t group, const std::vector<ColumnPtr>& columns, std::size_t row) const;
    void addInRange(std::uint32_t group, std::uint64_t value, std::vector<std::uint32_t>& found) const;

    const JoinPlan& plan;
    std::vector<Column> keys;  ///< Of the rows of the second table; of its groups, when they are known.
    bool isExact = false;      ///< Keys are equal where their words are.
    Words from;                ///< Range of each row, as ordered words; as is to.
    Words to;                  ///< Empty if a range ends where the next one begins.
    std::uint32_t count = 0;
    RowGroups groups;
    RowsByGroup rows;         ///< Those of a group by the beginnings of their ranges, if there are ranges.
    Words largestEnd;         ///< Of the rows of the group up to this one, in the order of rows.
    std::vector<Slot> slots;  ///< Hash table, at most half full.
};

}  // namespace velmorak
