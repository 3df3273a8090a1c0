#include "run/pass/TableHeads.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

namespace velmorak {
namespace {

constexpr std::size_t wantedRows = 20;
constexpr std::size_t maxColumns = 50;

/// The first rows, without those columns that nobody uses.
Chunk beginningOf(const Chunk& chunk) {
    Chunk beginning;
    beginning.rows = std::min(chunk.rows, wantedRows);
    std::vector<std::uint8_t> keep(chunk.rows, 0);
    std::fill_n(keep.begin(), beginning.rows, 1);
    for (std::size_t i = 0; i < std::min(chunk.columns.size(), maxColumns); ++i) {
        beginning.columns.push_back(chunk.columns[i] ? keepRows(*chunk.columns[i], keep) : nullptr);
    }
    return beginning;
}

}  // namespace

TableHeads::TableHeads(RunState& state, const SourceSet& sources, OperatorChain& chain)
    : state(state), sources(sources), chain(chain) {}

void TableHeads::begin() {
    if (!state.listener || !state.listener->wantsTables()) {
        return;
    }
    for (std::size_t segment = 0; segment < sources.size(); ++segment) {
        add(sources.sourceOf(segment), sources.schema(segment));
    }
    for (std::size_t i = 0; i < chain.size(); ++i) {
        const Operator& op = chain.at(i);
        if (!op.isDropped && !op.accumulation && op.parents.front().check) {
            add(op.node, op.parents.front().check->schema());
        }
    }
    left = tables.size();
}

void TableHeads::add(std::size_t node, const Schema& schema) {
    auto table = std::make_unique<Table>();
    table->head.node = node;
    const std::vector<ColumnInfo>& columns = schema.columns();
    table->head.columns.assign(columns.begin(),
                               columns.begin() + static_cast<std::ptrdiff_t>(std::min(columns.size(), maxColumns)));
    table->head.columnsInAll = columns.size();
    tables.try_emplace(node, std::move(table));
}

const TableHeads::Table* TableHeads::wantedOf(std::size_t node) const {
    const auto found = tables.find(node);
    return found == tables.end() || !found->second->isWanted ? nullptr : found->second.get();
}

void TableHeads::take(ChunkTask& task) const {
    if (left == 0) {
        return;
    }
    // A copy that cannot be made is a picture less, no failure.
    (void)errorIn([&] {
        if (task.isComplete && !task.error && wantedOf(sources.sourceOf(task.segment))) {
            task.beginning = beginningOf(task.chunk);
        }
        for (std::size_t i = 0; i < chain.size(); ++i) {
            OperatorOutput& output = task.outputs[i];
            if (output.table && !output.error && wantedOf(chain.at(i).node)) {
                output.beginning = beginningOf(*output.table);
            }
        }
    });
}

void TableHeads::commit(ChunkTask& task) {
    if (left == 0) {
        return;
    }
    append(sources.sourceOf(task.segment), std::exchange(task.beginning, std::nullopt));
    for (std::size_t i = 0; i < chain.size(); ++i) {
        append(chain.at(i).node, std::exchange(task.outputs[i].beginning, std::nullopt));
    }
}

void TableHeads::append(std::size_t node, std::optional<Chunk> rows) {
    const auto found = tables.find(node);
    if (!rows || rows->rows == 0 || found == tables.end() || !found->second->isWanted) {
        return;
    }
    Table& table = *found->second;
    table.rows += rows->rows;
    table.head.pieces.push_back(std::move(*rows));
    if (table.rows >= wantedRows) {
        publish(table);
    }
}

void TableHeads::publish(Table& table) {
    table.isWanted = false;
    --left;
    (void)errorIn([&] { state.listener->sawTable(table.head); });
}

void TableHeads::end() {
    for (const auto& [node, table] : tables) {
        if (table->isWanted && !table->head.pieces.empty()) {
            publish(*table);
        }
    }
}

}  // namespace velmorak
