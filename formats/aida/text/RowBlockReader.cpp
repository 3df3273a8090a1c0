#include "aida/text/RowBlockReader.h"

#include <algorithm>

namespace velmorak::io {

namespace {

constexpr std::size_t maxSlowRows = 1024;

}  // namespace

bool RowBlockReader::takeRows(XmlHandler& handler) {
    RowBlocks::Block* const block = blocks.front();
    if (!block) {
        return false;
    }
    if (block->scannedFrom != cursor) {
        block->scanFrom(cursor);
        rowsTaken = 0;
    }
    if (block->rows.bytes() == 0) {
        return false;
    }
    rowsTaken += handler.takeRows(block->rows, rowsTaken);
    if (rowsTaken == block->rows.count()) {
        passRows(*block);
    }
    return true;
}

void RowBlockReader::passRows(RowBlocks::Block& block) {
    bytes += block.rows.bytes();
    lines += block.rows.lines();
    cursor += block.rows.bytes();
    if (block.rows.count() > 0) {
        slowRows = 1;
    }
    rowsTaken = 0;
    blockFraction = block.fraction;
    if (cursor < block.size) {
        block.scannedFrom = cursor;
        block.rows.clear();
    } else {
        blocks.pop();
        cursor = 0;
    }
}

std::string_view RowBlockReader::nextSlowRows() {
    for (;;) {
        const RowBlocks::Block* const block = blocks.front();
        if (!block) {
            return {};
        }
        if (cursor == block->size) {
            blocks.pop();
            cursor = 0;
            continue;
        }
        blockFraction = block->fraction;
        const std::string_view text = block->text();
        std::size_t end = cursor;
        for (std::size_t row = 0; row < slowRows && end < text.size(); ++row) {
            const std::size_t found = text.find(rowEnd, end);
            end = found == std::string_view::npos ? text.size() : found + rowEnd.size();
        }
        slowRows = std::min(2 * slowRows, maxSlowRows);
        const std::string_view rows = text.substr(cursor, end - cursor);
        cursor = end;
        return rows;
    }
}

}  // namespace velmorak::io
