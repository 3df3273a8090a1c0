#pragma once

#include "FillExpression.h"
#include "FillList.h"

#include <velmorak/Axis.h>
#include <velmorak/Expression.h>
#include <velmorak/HistogramList.h>
#include <velmorak/Kind.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velmorak {

/// The quantity, the weight and the key of the fills of a table.
/// Threads: fillsOf may be called by several threads at once.
class GroupedQuantity {
public:
    static constexpr std::size_t maxGroups = 1000;

    /// Reads the inputs "key", "keyedges", "expression" and "weight".
    /// @throws Failure if they do not suit the schema.
    GroupedQuantity(const Arguments& arguments, const Schema& schema);

    struct Group {
        std::string key;  ///< As bytes whose order is that of the keys (shared/KeyBytes.h).
        FillList fills;   ///< In the order of the rows.
    };
    /// The fills of one chunk. A row without a key is in no group.
    struct Fills {
        std::vector<Group> groups;
        std::int64_t rowsWithoutKey = 0;

        void save(StateWriter& writer) const;
        void load(StateReader& reader);
    };
    /// @throws Failure if there are too many groups, or if a row's lists have different lengths.
    Fills fillsOf(const Chunk& chunk) const;

    /// Sets the entries of the columns that are used to true. @param needed by column of the schema.
    void markColumns(std::vector<bool>& needed) const;
    const std::string& label() const { return quantity.label(); }

    /// @param bytes key of a group.
    /// @return the group without its histogram. @throws std::invalid_argument if the bytes are not those of a key.
    HistogramList::Group describe(const std::string& bytes, const std::string& title) const;

private:
    ColumnPtr keysOf(const Chunk& chunk) const;

    Expression key;
    std::optional<Axis> bins;  ///< Of the key.
    std::string unit;          ///< Of the key, after a blank.
    FillExpression quantity;
};

/// @throws Failure that says what to do instead.
[[noreturn]] void refuseGroups(std::size_t most);

}  // namespace velmorak
