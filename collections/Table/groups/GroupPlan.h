#pragma once

#include "Table/groups/Aggregates.h"

#include <velmorak/Axis.h>
#include <velmorak/Expression.h>
#include <velmorak/Kind.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace velmorak {

class GroupTable;

/// Keys and aggregates of a grouping, compiled for the columns of a table.
/// Threads: keysOf and valuesOf may be called by several threads at once.
class GroupPlan {
public:
    /// Reads the inputs "keys", "edges" and "aggregates".
    /// @throws Failure if they do not suit the schema.
    GroupPlan(const Arguments& arguments, const Schema& schema);

    /// An expression whose values are aggregated.
    struct Quantity {
        std::string text;
        Expression expression;
        ColumnType type = ColumnType::Real;  ///< Integer for truth values.
        bool isKept = false;                 ///< For a median.
    };

    void markColumns(std::vector<bool>& needed) const;
    /// @return one column for each key; the lower edge of its bin for one that is binned.
    std::vector<ColumnPtr> keysOf(const Chunk& chunk) const;
    const std::vector<ColumnType>& keyTypes() const { return types; }
    const std::vector<Quantity>& quantities() const { return all; }
    ColumnPtr valuesOf(std::size_t quantity, const Chunk& chunk) const;

    /// Of the result: the keys, and then the aggregates.
    const Schema& schema() const { return result; }
    /// @return the rows of the result for some groups.
    std::vector<ColumnPtr> rowsOf(const GroupTable& table, const std::vector<std::uint32_t>& groups) const;

private:
    struct Key {
        std::string name;
        std::string text;
        Expression expression;
        std::optional<Axis> bins;
    };
    struct Output {
        Aggregate function = Aggregate::Count;
        std::optional<std::size_t> quantity;  ///< None for the number of rows.
    };

    void addKeys(const std::string& text, const Schema& schema);
    void addBins(const std::string& text);
    void bin(const std::string& name, const std::string& edges);
    void addAggregate(const AggregateText& text, const Schema& schema);
    std::size_t quantityFor(const AggregateText& text, const Schema& schema);
    void addColumn(const std::string& input, ColumnInfo column);

    std::vector<Key> keys;
    std::vector<ColumnType> types;
    std::vector<Quantity> all;
    std::vector<Output> outputs;
    Schema result;
};

/// @return why the text cannot be parsed; empty if it can. @param input "keys", "edges" or "aggregates".
std::string groupingRefusal(const std::string& input, const std::string& text);

}  // namespace velmorak
