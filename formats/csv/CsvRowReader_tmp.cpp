#include "csv/CsvReader.h"

#include <velmorak/ChunkSize.h>

#include <algorithm>
#include <utility>

/// Reading row by row, where a bad row is skipped or ends the table, and where long texts end a chunk early.
namespace velmorak {

bool CsvReader::nextInOrder(Chunk& chunk) {
    std::vector<Column> target;
    for (const CsvColumn& column : layout.columns) {
        target.push_back(emptyColumn(column));
    }
    chunk.rows = 0;
    chunk.owner.reset();
    try {
        while (!failure && !isFull(chunk.rows) && readRow(target, chunk.rows)) {
        }
    } catch (const Failure& damage) {
        failure = damage;
    }
    // Complete rows before the damage are returned first.
    if (failure && chunk.rows == 0) {
        throw Failure(*failure);
    }
    chunk.columns.clear();
    for (std::size_t i = 0; i < target.size(); ++i) {
        resizeColumn(target[i], chunk.rows);
        chunk.columns.push_back(layout.columns[i].isNeeded ? std::make_shared<const Column>(std::move(target[i]))
                                                           : nullptr);
    }
    if (chunk.rows == 0) {
        reportRepaired();
        reportSkipped();
    }
    return chunk.rows > 0;
}

/// Long texts end a chunk before it has its full number of rows.
bool CsvReader::isFull(std::size_t rows) {
    if (rows == 0) {
        textBytes = 0;
    }
    return rows >= maxRows || rows * rowBytes + textBytes >= maxChunkBytes;
}

/// Counts the texts and lists of the record, also of columns that are not needed: these do not change the chunks.
void CsvReader::countTexts() {
    for (const std::size_t position : textColumns) {
        const std::string_view text = fields[position].text;
        if (!columns[position].isList) {
            textBytes += text.size();
        } else if (!text.empty()) {
            const auto separators = std::count(text.begin(), text.end(), layout.notation.vectorSeparator);
            textBytes += (static_cast<std::size_t>(separators) + 1) * bytesInValue(columns[position].type);
        }
    }
}

/// Appends the next record to the columns, or skips it. @return false at the end of the file.
bool CsvReader::readRow(std::vector<Column>& target, std::size_t& rows) {
    if (++recordsSeen % 4096 == 0 && context.isStopping()) {
        throw Stopped();
    }
    if (!stream.next(fields)) {
        return false;
    }
    for (std::size_t i = 0; i < target.size(); ++i) {
        if (rows >= target[i].valueCount() || target[i].isList()) {
            resizeColumn(target[i], std::min(maxRows, 2 * rows + 1));
        }
    }
    std::uint64_t repaired = noLine;
    const std::string complaint = storeRecord(layout, stream.record(), fields, target, rows, repaired);
    noteRepaired(repaired);
    if (complaint.empty()) {
        countTexts();
        ++rows;
        return true;
    }
    if (!options.isSkipping) {
        fail(stream.line(), complaint);
    }
    for (Column& column : target) {
        if (column.isList()) {
            resizeColumn(column, rows);
        }
    }
    if (skippedRows++ == 0) {
        firstComplaint = "\"" + options.file.string() + "\", line " + std::to_string(stream.line()) + complaint;
    }
    return true;
}

void CsvReader::reportSkipped() {
    if (skippedRows == 0) {
        return;
    }
    context.warn(std::to_string(skippedRows) + (skippedRows == 1 ? " row was" : " rows were") +
                 " skipped; the first: " + firstComplaint);
    skippedRows = 0;
}

}  // namespace velmorak
