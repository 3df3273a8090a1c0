#include "Table/joins/JoinRows.h"

#include "shared/RowGather.h"

#include <velmorak/ChunkSize.h>

#include <algorithm>
#include <utility>

namespace velmorak {

namespace {

std::size_t bytesIn(const std::vector<ColumnPtr>& columns) {
    std::size_t sum = 0;
    for (const ColumnPtr& column : columns) {
        sum += velmorak::bytesIn(*column);
    }
    return sum;
}

Column emptyColumn(const ColumnInfo& info) {
    Column column;
    if (info.type == ColumnType::Integer) {
        column.values = Column::Integers();
    } else if (info.type == ColumnType::Boolean) {
        column.values = Column::Booleans();
    } else if (info.type == ColumnType::Text) {
        column.values = Column::Texts();
    }
    column.offsets.resize(info.isList ? 1 : 0);
    return column;
}

}  // namespace

JoinRows::JoinRows(const std::vector<ColumnInfo>& infos, std::shared_ptr<MemoryBudget> memory)
    : share(std::move(memory)) {
    for (const ColumnInfo& info : infos) {
        columns.push_back(emptyColumn(info));
    }
}

void JoinRows::append(const std::vector<ColumnPtr>& more, std::size_t rows) {
    if (!file && !share.take(bytesIn(more))) {
        moveToFile();
    }
    if (file) {
        firstRows.push_back(count);
        blocks.push_back(file->append(more, rows));
    } else {
        for (std::size_t i = 0; i < more.size(); ++i) {
            appendRows(columns[i], *more[i]);
        }
    }
    count += static_cast<std::uint32_t>(rows);
}

void JoinRows::moveToFile() {
    file = std::make_unique<ChunkFile>();
    std::vector<ColumnPtr> all;
    for (Column& column : columns) {
        Column empty = *gatherRows(column, {});
        all.push_back(std::make_shared<const Column>(std::exchange(column, std::move(empty))));
    }
    std::vector<std::uint32_t> rows;
    for (std::uint32_t first = 0; first < count; first += chunkRows) {
        rows.clear();
        for (std::uint32_t row = first; row < std::min<std::uint32_t>(count, first + chunkRows); ++row) {
            rows.push_back(row);
        }
        std::vector<ColumnPtr> block;
        block.reserve(all.size());
        for (const ColumnPtr& column : all) {
            block.push_back(gatherRows(*column, rows));
        }
        firstRows.push_back(first);
        blocks.push_back(file->append(block, rows.size()));
    }
    share.giveAll();
}

std::vector<ColumnPtr> JoinRows::at(const std::vector<std::uint32_t>& rows, const std::vector<bool>& wanted) const {
    if (file) {
        return read(rows, wanted);
    }
    std::vector<ColumnPtr> chosen(wanted.size());
    for (std::size_t i = 0; i < columns.size(); ++i) {
        chosen[i] = wanted[i] ? gatherRows(columns[i], rows) : nullptr;
    }
    return chosen;
}

/// Reads each block once, whatever the order of the rows.
std::vector<ColumnPtr> JoinRows::read(const std::vector<std::uint32_t>& rows, const std::vector<bool>& wanted) const {
    std::vector<std::vector<std::uint32_t>> ofBlocks(blocks.size());  // Positions in rows.
    for (std::uint32_t i = 0; i < rows.size(); ++i) {
        if (rows[i] != noRow) {
            const auto after = std::upper_bound(firstRows.begin(), firstRows.end(), rows[i]);
            ofBlocks[static_cast<std::size_t>(after - firstRows.begin()) - 1].push_back(i);
        }
    }
    std::vector<Column> found = columns;
    std::vector<std::uint32_t> places(rows.size(), noRow);  // In found.
    std::uint32_t next = 0;
    for (std::size_t block = 0; block < blocks.size(); ++block) {
        if (ofBlocks[block].empty()) {
            continue;
        }
        std::vector<std::uint32_t> inBlock;
        for (const std::uint32_t i : ofBlocks[block]) {
            inBlock.push_back(rows[i] - firstRows[block]);
            places[i] = next++;
        }
        const std::vector<ColumnPtr> read = file->read(blocks[block]);
        for (std::size_t i = 0; i < wanted.size(); ++i) {
            if (wanted[i]) {
                appendRows(found[i], *gatherRows(*read[i], inBlock));
            }
        }
    }
    std::vector<ColumnPtr> chosen(wanted.size());
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        chosen[i] = wanted[i] ? gatherRows(found[i], places) : nullptr;
    }
    return chosen;
}

}  // namespace velmorak
