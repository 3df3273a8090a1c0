#include "Table/kinds.h"

#include "shared/SortedRows.h"

#include <velmorak/ChunkSize.h>
#include <velmorak/RowMemory.h>
#include <velmorak/StoredTable.h>

#include <algorithm>
#include <deque>
#include <memory>
#include <span>
#include <utility>

namespace velmorak {

namespace {

constexpr double maxTailRows = 9007199254740992.0;  // All integers up to here are doubles.

/// Rows of one chunk, and the memory that they take.
struct KeptRows {
    SortedRowsPtr rows;
    std::shared_ptr<MemoryShare> memory;
};

using Parts = std::deque<KeptRows>;

/// Rows in memory, in the order in which they came.
class LastRows : public StoredTable {
public:
    /// @param skipped number of rows of the first part that do not belong to the table.
    LastRows(Schema schema, const Parts& all, std::size_t skipped);

    const Schema& schema() const override { return columns; }
    std::unique_ptr<TableReader> open() const override;

private:
    class Reader;

    Schema columns;
    std::vector<SortedRowsPtr> parts;
    std::vector<RowAt> rows;
    std::vector<std::shared_ptr<MemoryShare>> memory;
};

LastRows::LastRows(Schema schema, const Parts& all, std::size_t skipped) : columns(std::move(schema)) {
    for (const KeptRows& kept : all) {
        parts.push_back(kept.rows);
        memory.push_back(kept.memory);
    }
    for (std::uint32_t part = 0; part < parts.size(); ++part) {
        const std::size_t first = part == 0 ? skipped : 0;
        for (std::size_t row = first; row < parts[part]->rows; ++row) {
            rows.push_back({0, part, static_cast<std::uint32_t>(row)});
        }
    }
}

class LastRows::Reader : public TableReader {
public:
    explicit Reader(const LastRows& table) : table(table) {}

    const Schema& schema() const override { return table.columns; }
    bool next(Chunk& chunk) override;

private:
    const LastRows& table;
    std::size_t at = 0;
};

bool LastRows::Reader::next(Chunk& chunk) {
    const std::size_t most = std::min(rowsInChunk(table.columns), table.rows.size() - at);
    for (std::size_t bytes = 0; chunk.rows < most && bytes < maxChunkBytes; ++chunk.rows) {
        const RowAt& row = table.rows[at + chunk.rows];
        bytes += bytesOfRow(*table.parts[row.part], row.row);
    }
    for (std::size_t column = 0; column < table.columns.size() && chunk.rows > 0; ++column) {
        chunk.columns.push_back(gathered(table.parts, column, std::span(table.rows).subspan(at, chunk.rows)));
    }
    at += chunk.rows;
    return chunk.rows > 0;
}

std::unique_ptr<TableReader> LastRows::open() const {
    return std::make_unique<Reader>(*this);
}

class TailState : public AccumulatorState {
public:
    TailState(std::size_t wanted, std::shared_ptr<MemoryBudget> budget) : wanted(wanted), budget(std::move(budget)) {}

    void fill(const Chunk& chunk) override;
    void merge(AccumulatorState& other) override;
    std::shared_ptr<const StoredTable> table(const Schema& schema) const;

private:
    void keep(SortedRowsPtr more);

    std::size_t wanted;
    std::shared_ptr<MemoryBudget> budget;
    SortedRowsPtr filled;  ///< Until it is merged.
    Parts parts;
    std::size_t rows = 0;  ///< In the parts.
};

void TailState::fill(const Chunk& chunk) {
    filled = std::make_shared<const SortedRows>(SortedRows{chunk.columns, {}, chunk.rows});
}

std::shared_ptr<const StoredTable> TailState::table(const Schema& schema) const {
    return std::make_shared<const LastRows>(schema, parts, rows - std::min(rows, wanted));
}

void TailState::merge(AccumulatorState& other) {
    auto& next = static_cast<TailState&>(other);
    if (next.filled && next.filled->rows > 0 && wanted > 0) {
        keep(std::move(next.filled));
    }
}

void TailState::keep(SortedRowsPtr more) {
    rows += more->rows;
    while (!parts.empty() && rows - parts.front().rows->rows >= wanted) {
        rows -= parts.front().rows->rows;
        parts.pop_front();
    }
    auto memory = std::make_shared<MemoryShare>(budget);
    if (!memory->take(more->bytesInMemory())) {
        throw Failure("rows", "the last " + std::to_string(std::min(rows, wanted)) +
                                  " rows do not fit into the memory; set VELMORAK_MEMORY_LIMIT to more, or keep fewer "
                                  "rows");
    }
    parts.push_back({std::move(more), std::move(memory)});
}

class TailAccumulation : public Accumulation {
public:
    TailAccumulation(Schema schema, std::size_t wanted, std::shared_ptr<MemoryBudget> budget);

    std::unique_ptr<AccumulatorState> newState() const override { return std::make_unique<TailState>(wanted, budget); }
    void finish(AccumulatorState& state, Results& results) override;

private:
    Schema schema;
    std::size_t wanted;
    std::shared_ptr<MemoryBudget> budget;
};

TailAccumulation::TailAccumulation(Schema schema, std::size_t wanted, std::shared_ptr<MemoryBudget> budget)
    : schema(std::move(schema)), wanted(wanted), budget(std::move(budget)) {}

void TailAccumulation::finish(AccumulatorState& state, Results& results) {
    results.set("table", Value(DataObjectPtr(static_cast<TailState&>(state).table(schema))));
}

/// Keeps the last rows of a table.
class TailKind : public Accumulator {
public:
    std::string name() const override { return "Tail"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    MergeOrder mergeOrder() const override { return MergeOrder::FirstToLast; }
    std::unique_ptr<Accumulation> prepare(const Arguments& arguments, const Schema* schema,
                                          RunContext& context) const override;
};

}  // namespace

std::string TailKind::summary() const {
    return "Keeps the last rows of a table.";
}

std::string TailKind::notes() const {
    return "The first rows are kept by Range, with the input last one below their number. The last rows are kept in "
           "memory; the plug-in fails if they exceed `VELMORAK_MEMORY_LIMIT`.";
}

Ports TailKind::ports(const ValueTexts&) const {
    return {{{.name = "table", .description = "Table of any length.", .type = ValueType::Table},
             {.name = "rows",
              .description = "Number of rows to keep; all if the table has fewer.",
              .value = "10",
              .minimum = 0,
              .maximum = maxTailRows,
              .isInteger = true}},
            {{.name = "table", .description = "The last rows, in their order.", .type = ValueType::Table}}};
}

std::unique_ptr<Accumulation> TailKind::prepare(const Arguments& arguments, const Schema* schema,
                                                RunContext& context) const {
    return std::make_unique<TailAccumulation>(*schema, static_cast<std::size_t>(arguments.integer("rows")),
                                              memoryOf(context));
}

std::unique_ptr<Kind> makeTail() {
    return std::make_unique<TailKind>();
}

}  // namespace velmorak
