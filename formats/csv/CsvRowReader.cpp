#include "csv/CsvRowReader.h"

#include "csv/CsvReader.h"

#include <velmorak/ChunkSize.h>

#include <algorithm>
#include <utility>

namespace velmorak {

CsvChunkLimits chunkLimitsOf(const Schema& columns) {
    CsvChunkLimits limits{.maxRows = rowsInChunk(columns), .rowBytes = bytesInRow(columns)};
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (columns[i].type == ColumnType::Text || columns[i].isList) {
            limits.textColumns.push_back(i);
        }
        limits.rowBytes -= columns[i].isList ? bytesInValue(columns[i].type) : 0;
    }
    // No more than four bytes in memory come from a byte of the file: in a list of digits that are converted to reals.
    constexpr std::size_t growth = 4;
    const std::size_t equal = std::min(maxChunkBytes, limits.maxRows * limits.rowBytes);
    limits.maxBytesOfFile = limits.textColumns.empty() ? growth * maxChunkBytes : (maxChunkBytes - equal) / growth + 1;
    return limits;
}

CsvRowReader::CsvRowReader(const CsvOptions& options, const CsvLayout& layout, CsvStream& stream, const Schema& columns,
                           const CsvRepairs& repairs, RunContext& context)
    : options(options), layout(layout), stream(stream), columns(columns), repairs(repairs), context(context) {}

bool CsvRowReader::next(Chunk& chunk, const CsvChunkLimits& limits) {
    std::vector<Column> target;
    for (const CsvColumn& column : layout.columns) {
        target.push_back(emptyColumn(column));
    }
    chunk.rows = 0;
    chunk.owner.reset();
    try {
        while (!failure && !isFull(chunk.rows, limits) && readRow(target, chunk.rows, limits)) {
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
        repairs.report();
        reportSkipped();
    }
    return chunk.rows > 0;
}

/// Long texts end a chunk before it has its full number of rows.
bool CsvRowReader::isFull(std::size_t rows, const CsvChunkLimits& limits) {
    if (rows == 0) {
        textBytes = 0;
    }
    return rows >= limits.maxRows || rows * limits.rowBytes + textBytes >= maxChunkBytes;
}

/// Counts the texts and lists of the record, also of columns that are not needed: these do not change the chunks.
void CsvRowReader::countTexts(const CsvChunkLimits& limits) {
    for (const std::size_t position : limits.textColumns) {
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
bool CsvRowReader::readRow(std::vector<Column>& target, std::size_t& rows, const CsvChunkLimits& limits) {
    if (++recordsSeen % 4096 == 0 && context.isStopping()) {
        throw Stopped();
    }
    if (!stream.next(fields)) {
        return false;
    }
    for (Column& column : target) {
        if (rows >= column.valueCount() || column.isList()) {
            resizeColumn(column, std::min(limits.maxRows, 2 * rows + 1));
        }
    }
    std::uint64_t repaired = noLine;
    const std::string complaint = storeRecord(layout, stream.record(), fields, target, rows, repaired);
    repairs.note(repaired);
    if (complaint.empty()) {
        countTexts(limits);
        ++rows;
        return true;
    }
    if (!options.isSkipping) {
        failAtLine(options, stream.line(), complaint);
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

void CsvRowReader::reportSkipped() {
    if (skippedRows == 0) {
        return;
    }
    context.warn(std::to_string(skippedRows) + (skippedRows == 1 ? " row was" : " rows were") +
                 " skipped; the first: " + firstComplaint);
    skippedRows = 0;
}

}  // namespace velmorak
