#include "run/pass/ChunkCheck.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace velmorak {
namespace {

[[noreturn]] void fail(const std::string& sentence) {
    throw std::logic_error("the kind yields " + sentence);
}

[[noreturn]] void failFor(const ColumnInfo& column, const std::string& sentence) {
    fail("a column \"" + column.name + "\" " + sentence);
}

std::string counted(std::size_t number, const std::string& what) {
    return std::to_string(number) + ' ' + what + (number == 1 ? "" : "s");
}

void checkOffsets(const ColumnInfo& column, const Column& values, std::size_t rows) {
    const std::vector<std::uint64_t>& offsets = values.offsets;
    if (offsets.size() != rows + 1) {
        failFor(column, "with " + counted(offsets.size(), "offset") + " for the lists of " + counted(rows, "row"));
    }
    // Without an early exit, so that the compiler vectorises the loop.
    bool falls = false;
    for (std::size_t row = 0; row < rows; ++row) {
        falls |= offsets[row + 1] < offsets[row];
    }
    if (falls || offsets.front() != 0 || offsets.back() != values.valueCount()) {
        failFor(column, "whose offsets do not lead through its " + counted(values.valueCount(), "value"));
    }
}

/// @return bytes of the values, including the characters of texts.
std::size_t bytesOfValues(const Column& column, std::size_t begin, std::size_t end) {
    return std::visit(
        [&](const auto& values) {
            std::size_t bytes = (end - begin) * sizeof(values.front());
            if constexpr (std::is_same_v<std::decay_t<decltype(values)>, Column::Texts>) {
                for (std::size_t i = begin; i < end; ++i) {
                    bytes += values[i].size();
                }
            }
            return bytes;
        },
        column.values);
}

std::size_t bytesOfRow(const Chunk& chunk, std::size_t row) {
    std::size_t bytes = 0;
    for (const ColumnPtr& column : chunk.columns) {
        if (!column) {
            continue;
        }
        bytes += column->isList() ? bytesOfValues(*column, column->offsets[row], column->offsets[row + 1])
                                  : bytesOfValues(*column, row, row + 1);
    }
    return bytes;
}

/// A column that was left out may be as large as that.
bool mayBeHeavy(const Chunk& chunk) {
    std::size_t bytes = 0;
    for (const ColumnPtr& column : chunk.columns) {
        if (!column) {
            return true;
        }
        bytes += !column->values.valueless_by_exception() ? bytesIn(*column) : 0;
    }
    return bytes >= maxChunkBytes;
}

}  // namespace

void ChunkCheck::checkFile(const Chunk& chunk) {
    if (chunk.file >= files) {
        fail("a chunk of file " + std::to_string(chunk.file) + ", counted from 0, and there are " +
             std::to_string(files));
    }
    if (chunk.file < file) {
        fail("a chunk of file " + std::to_string(chunk.file) + " after one of file " + std::to_string(file));
    }
    shortRows = chunk.file > file ? 0 : shortRows;
    file = chunk.file;
}

void ChunkCheck::checkRows(const Chunk& chunk, std::size_t maxRows) {
    checkFile(chunk);
    if (chunk.rows == 0) {
        fail("a chunk without rows");
    }
    if (chunk.rows > maxRows) {
        fail("a chunk of " + counted(chunk.rows, "row") + ", and " + std::to_string(maxRows) + " are the most");
    }
    if (shortRows > 0) {
        fail("a chunk of " + counted(shortRows, "row") + " before its last one, and " + std::to_string(maxRows) +
             " are needed");
    }
    shortRows = chunk.rows < maxRows && !mayBeHeavy(chunk) ? chunk.rows : 0;
}

void ChunkCheck::check(const Chunk& chunk) const {
    if (chunk.columns.size() != promised.size()) {
        fail("a chunk of " + counted(chunk.columns.size(), "column") + ", and its table has " +
             std::to_string(promised.size()));
    }
    for (std::size_t i = 0; i < promised.size(); ++i) {
        if (chunk.columns[i] || isNeeded(i)) {
            checkColumn(promised[i], chunk.columns[i], chunk.rows);
        }
    }
    checkWidth(chunk);
}

void ChunkCheck::freeColumns(Chunk& chunk) const {
    for (std::size_t i = 0; i < needed.size(); ++i) {
        if (!needed[i]) {
            chunk.columns[i].reset();
        }
    }
}

void ChunkCheck::checkColumn(const ColumnInfo& column, const ColumnPtr& values, std::size_t rows) const {
    if (!values || values->values.valueless_by_exception()) {
        failFor(column, "without values");
    }
    if (values->type() != column.type) {
        failFor(column, "of type " + std::string(nameOf(values->type())) + ", and its table says " +
                            std::string(nameOf(column.type)));
    }
    if (values->isList() != column.isList) {
        failFor(column, column.isList ? "without lists, and its table says that it has them"
                                      : "with lists, and its table says that it has none");
    }
    if (column.isList) {
        checkOffsets(column, *values, rows);
    } else if (values->valueCount() != rows) {
        failFor(column, "with " + counted(values->valueCount(), "value") + " for " + counted(rows, "row"));
    }
}

/// A single row can be too large only if texts and lists are large together.
void ChunkCheck::checkWidth(const Chunk& chunk) const {
    std::size_t most = rowBytes;
    for (const ColumnPtr& column : chunk.columns) {
        const bool isEqual = !column || (!column->isList() && column->type() != ColumnType::Text);
        most += isEqual ? 0 : bytesIn(*column);
    }
    if (most <= maxChunkBytes) {
        return;
    }
    for (std::size_t row = 0; row < chunk.rows; ++row) {
        if (const std::size_t bytes = bytesOfRow(chunk, row); bytes > maxChunkBytes) {
            throw std::runtime_error("row " + std::to_string(chunk.firstRow + row + 1) + " takes " +
                                     counted(bytes, "byte") + ", and " + std::to_string(maxChunkBytes) +
                                     " are the most");
        }
    }
}

}  // namespace velmorak
