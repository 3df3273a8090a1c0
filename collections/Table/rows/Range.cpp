#include "Table/kinds.h"

#include "Table/cuts/Condition.h"

#include <velmorak/Parts.h>

#include <cstdint>
#include <optional>
#include <utility>

namespace velmorak {

namespace {

/// Positions of rows in the input table, counted from 0.
struct Positions {
    std::uint64_t first = 0;
    std::optional<std::uint64_t> limit{};  ///< One more than the last; nothing when the table's end is the last.
    std::uint64_t every = 1;

    bool contains(std::uint64_t row) const;
};

bool Positions::contains(std::uint64_t row) const {
    return row >= first && (!limit || row < *limit) && (row - first) % every == 0;
}

class RangeOperation : public RowOperation {
public:
    RangeOperation(Schema columns, Positions positions) : columns(std::move(columns)), positions(positions) {}

    const Schema& schema() const override { return columns; }
    bool countsRows() const override { return true; }
    std::optional<std::uint64_t> rowLimit() const override { return positions.limit; }

    Chunk apply(const Chunk& chunk) const override;
    void markColumns(const std::vector<bool>& wanted, std::vector<bool>& needed) override { needed = wanted; }

private:
    Schema columns;
    Positions positions;
};

Chunk RangeOperation::apply(const Chunk& chunk) const {
    std::vector<std::uint8_t> keep(chunk.rows);
    for (std::size_t row = 0; row < chunk.rows; ++row) {
        keep[row] = positions.contains(chunk.rowsBefore + row) ? 1 : 0;
    }
    return onlyRows(chunk, keep);
}

/// Keeps the rows between two positions, or every n-th of them.
class RangeKind : public RowWise, public CountingKind {
public:
    std::string name() const override { return "Range"; }
    std::string summary() const override;
    Ports ports(const ValueTexts& values) const override;
    std::unique_ptr<RowOperation> prepare(const Arguments& arguments, const Schema& schema,
                                          RunContext& context) const override;
};

}  // namespace

std::string RangeKind::summary() const {
    return "Keeps the rows of a table from one position to another, or every n-th of them.";
}

Ports RangeKind::ports(const ValueTexts&) const {
    const double largest = 9007199254740992.0;  // All integers up to here are doubles.
    return {{{.name = "table", .description = "Table whose rows are counted.", .type = ValueType::Table},
             {.name = "first",
              .description = "Position of the first row to keep; 0 is the first row of the table.",
              .value = "0",
              .minimum = 0,
              .maximum = largest,
              .isInteger = true},
             {.name = "last",
              .description = "Position of the last row to keep. Infinity: to the end. The source is not read much "
                             "further if nothing else needs its rows.",
              .value = "Infinity",
              .minimum = 0,
              .isInteger = true},
             {.name = "every",
              .description = "Keep every n-th row, starting with the first.",
              .value = "1",
              .minimum = 1,
              .maximum = largest,
              .isInteger = true}},
            {{.name = "table", .description = "The rows kept, with all their columns.", .type = ValueType::Table}}};
}

std::unique_ptr<RowOperation> RangeKind::prepare(const Arguments& arguments, const Schema& schema, RunContext&) const {
    Positions positions;
    positions.first = static_cast<std::uint64_t>(arguments.integer("first"));
    positions.every = static_cast<std::uint64_t>(arguments.integer("every"));
    if (const double last = arguments.number("last"); last < 0x1p63) {
        positions.limit = static_cast<std::uint64_t>(last) + 1;
    }
    return std::make_unique<RangeOperation>(schema, positions);
}

std::unique_ptr<Kind> makeRange() {
    return std::make_unique<RangeKind>();
}

}  // namespace velmorak
