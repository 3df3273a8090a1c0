#include "Table/groups/SpilledGroups.h"

#include <velmorak/ChunkSize.h>

#include <algorithm>
#include <functional>
#include <queue>
#include <span>
#include <string>
#include <utility>

namespace velmorak {

namespace {

/// Rows that are in memory of each partition, while the partitions are merged.
constexpr std::size_t rowsOfBlock = 1024;

std::size_t partitionOf(const std::string& key) {
    constexpr unsigned shift = 58;  // The upper bits, because the lower ones choose the places in hash tables.
    return mixed(std::hash<std::string>()(key)) >> shift;
}

/// Rows of the result with their keys before them, sorted within each partition.
struct SortedParts {
    ChunkFile file;
    std::array<std::vector<ChunkFile::Place>, SpilledGroups::partitions> places;
};

/// A row of a block that is in memory.
struct Pick {
    std::size_t block = 0;
    std::size_t row = 0;
};
using Block = std::vector<ColumnPtr>;

template <typename Values>
ColumnPtr gathered(const std::vector<Block>& blocks, const std::vector<Pick>& picks, std::size_t column) {
    Values values;
    values.reserve(picks.size());
    for (const Pick& pick : picks) {
        values.push_back(std::get<Values>(blocks[pick.block][column]->values)[pick.row]);
    }
    return std::make_shared<const Column>(Column{std::move(values), {}});
}

/// Merges the partitions.
class SortedReader : public TableReader {
public:
    SortedReader(const Schema& columns, const SortedParts& parts);

    const Schema& schema() const override { return columns; }
    bool next(Chunk& chunk) override;

private:
    struct Cursor {
        std::size_t part = 0;
        std::size_t nextBlock = 0;
        Block block{};
        std::size_t row = 0;

        const std::string& key() const { return block.front()->texts()[row]; }
    };
    struct IsLater {
        bool operator()(const Cursor* a, const Cursor* b) const { return a->key() > b->key(); }
    };

    bool load(Cursor& cursor) const;

    const Schema& columns;
    const SortedParts& parts;
    std::vector<Cursor> cursors;
    std::priority_queue<Cursor*, std::vector<Cursor*>, IsLater> queue;
};

SortedReader::SortedReader(const Schema& columns, const SortedParts& parts) : columns(columns), parts(parts) {
    cursors.resize(SpilledGroups::partitions);
    for (std::size_t part = 0; part < cursors.size(); ++part) {
        cursors[part].part = part;
        if (load(cursors[part])) {
            queue.push(&cursors[part]);
        }
    }
}

bool SortedReader::load(Cursor& cursor) const {
    const std::vector<ChunkFile::Place>& places = parts.places[cursor.part];
    if (cursor.nextBlock == places.size()) {
        return false;
    }
    cursor.block = parts.file.read(places[cursor.nextBlock++]);
    cursor.row = 0;
    return true;
}

bool SortedReader::next(Chunk& chunk) {
    std::vector<Block> blocks;
    std::vector<std::size_t> blockOf(cursors.size(), SIZE_MAX);  // By partition.
    std::vector<Pick> picks;
    for (const std::size_t rows = rowsInChunk(columns); !queue.empty() && picks.size() < rows;) {
        Cursor& cursor = *queue.top();
        queue.pop();
        if (blockOf[cursor.part] == SIZE_MAX) {
            blockOf[cursor.part] = blocks.size();
            blocks.push_back(cursor.block);
        }
        picks.push_back({blockOf[cursor.part], cursor.row});
        const bool isInBlock = ++cursor.row < cursor.block.front()->valueCount();
        if (!isInBlock) {
            blockOf[cursor.part] = SIZE_MAX;
        }
        if (isInBlock || load(cursor)) {
            queue.push(&cursor);
        }
    }
    chunk.rows = picks.size();
    for (std::size_t column = 1; column <= columns.size() && !picks.empty(); ++column) {
        chunk.columns.push_back(
            std::visit([&]<typename Values>(const Values&) { return gathered<Values>(blocks, picks, column); },
                       blocks.front()[column]->values));
    }
    return !picks.empty();
}

class SortedGroups : public StoredTable {
public:
    explicit SortedGroups(Schema columns) : columns(std::move(columns)) {}

    const Schema& schema() const override { return columns; }
    std::unique_ptr<TableReader> open() const override { return std::make_unique<SortedReader>(columns, parts); }

    void add(const GroupPlan& plan, const GroupTable& table, std::size_t part);

private:
    Schema columns;
    SortedParts parts;
};

void SortedGroups::add(const GroupPlan& plan, const GroupTable& table, std::size_t part) {
    const std::vector<std::uint32_t> all = table.inOrder();
    for (std::size_t first = 0; first < all.size(); first += rowsOfBlock) {
        const auto begin = all.begin() + static_cast<std::ptrdiff_t>(first);
        const std::size_t rows = std::min(rowsOfBlock, all.size() - first);
        const std::vector<std::uint32_t> groups(begin, begin + static_cast<std::ptrdiff_t>(rows));
        Block block{std::make_shared<const Column>(Column{table.keysOf(groups), {}})};
        for (ColumnPtr& column : plan.rowsOf(table, groups)) {
            block.push_back(std::move(column));
        }
        parts.places[part].push_back(parts.file.append(block, rows));
    }
}

}  // namespace

void SpilledGroups::append(const GroupTable& table) {
    std::array<std::vector<std::uint32_t>, partitions> groups;
    for (std::uint32_t group = 0; group < table.size(); ++group) {
        groups[partitionOf(table.key(group))].push_back(group);
    }
    for (std::size_t part = 0; part < partitions; ++part) {
        if (!groups[part].empty()) {
            places[part].push_back(file.append(table.store(groups[part]), groups[part].size()));
        }
    }
}

GroupTable SpilledGroups::partition(std::size_t number) const {
    GroupTable whole(plan);
    for (const ChunkFile::Place& place : places[number]) {
        GroupTable part(plan);
        part.load(file.read(place));
        whole.merge(part);
    }
    return whole;
}

std::shared_ptr<const StoredTable> sortedGroups(const GroupPlan& plan, const SpilledGroups& spilled,
                                                std::int64_t& missing, std::size_t& groups) {
    auto sorted = std::make_shared<SortedGroups>(plan.schema());
    for (std::size_t part = 0; part < SpilledGroups::partitions; ++part) {
        const GroupTable table = spilled.partition(part);
        missing += table.missing();
        groups += table.size();
        sorted->add(plan, table, part);
    }
    return sorted;
}

}  // namespace velmorak
