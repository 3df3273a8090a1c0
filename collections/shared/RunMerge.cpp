#include "shared/RunMerge.h"

#include <algorithm>
#include <utility>

namespace velmorak {

RunMerge::RunMerge(const Schema& schema, std::shared_ptr<const KeyMaker> keyMaker,
                   std::vector<std::shared_ptr<const SortedRun>> runs)
    : columns(schema.size()),
      hasHeavyRows(
          std::any_of(schema.columns().begin(), schema.columns().end(),
                      [](const ColumnInfo& column) { return column.isList || column.type == ColumnType::Text; })),
      keys(std::move(keyMaker)) {
    for (auto& run : runs) {
        cursors.push_back({.run = std::move(run)});
        readBlock(cursors.back());
        if (cursors.back().rows) {
            heap.push_back(cursors.size() - 1);
        }
    }
    for (std::size_t position = heap.size() / 2; position-- > 0;) {
        sink(position);
    }
}

/// The keys are computed again: that takes less time than writing and reading them.
void RunMerge::readBlock(Cursor& cursor) const {
    cursor.rows = nullptr;
    cursor.row = 0;
    cursor.isKnown = false;
    if (cursor.block == cursor.run->blocks.size()) {
        return;
    }
    const ChunkFile::Place& place = cursor.run->blocks[cursor.block++];
    Chunk chunk;
    chunk.rows = place.rows;
    chunk.columns = cursor.run->file.read(place);
    RowKeys made = keys->keysOf(chunk);
    cursor.rows = std::make_shared<const SortedRows>(SortedRows{std::move(chunk.columns), std::move(made), chunk.rows});
}

void RunMerge::advance(Cursor& cursor) const {
    if (++cursor.row == cursor.rows->rows) {
        readBlock(cursor);
    }
}

bool RunMerge::isBefore(std::size_t one, std::size_t other) const {
    const Cursor& a = cursors[one];
    const Cursor& b = cursors[other];
    const auto order = RowKeys::compare(a.rows->keys, a.row, b.rows->keys, b.row);
    return std::is_neq(order) ? std::is_lt(order) : one < other;
}

void RunMerge::sink(std::size_t position) {
    for (std::size_t child = 2 * position + 1; child < heap.size(); child = 2 * position + 1) {
        child += child + 1 < heap.size() && isBefore(heap[child + 1], heap[child]) ? 1 : 0;
        if (!isBefore(heap[child], heap[position])) {
            return;
        }
        std::swap(heap[child], heap[position]);
        position = child;
    }
}

/// Takes the first row of all.
void RunMerge::take(MergedRows& merged) {
    Cursor& cursor = cursors[heap.front()];
    if (!cursor.isKnown) {
        cursor.isKnown = true;
        cursor.part = static_cast<std::uint32_t>(merged.parts.size());
        merged.parts.push_back(cursor.rows);
    }
    merged.rows.push_back({cursor.rows->keys.prefix(cursor.row), cursor.part, cursor.row});
    advance(cursor);
    if (!cursor.rows) {
        heap.front() = heap.back();
        heap.pop_back();
    }
    sink(0);
}

MergedRows RunMerge::next(std::size_t maxRows, std::size_t maxBytes) {
    MergedRows merged;
    for (Cursor& cursor : cursors) {
        cursor.isKnown = false;
    }
    std::size_t bytes = 0;
    while (!heap.empty() && merged.rows.size() < maxRows && bytes < maxBytes) {
        take(merged);
        if (hasHeavyRows) {
            const RowAt& last = merged.rows.back();
            bytes += bytesOfRow(*merged.parts[last.part], last.row);
        }
    }
    return merged;
}

}  // namespace velmorak
