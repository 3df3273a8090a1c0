#include "shared/RowSorter.h"

#include "shared/RunMerge.h"

#include <velmorak/ChunkSize.h>
#include <velmorak/Failure.h>

#include <algorithm>
#include <functional>
#include <span>
#include <utility>

namespace velmorak {

namespace {

/// Runs that are read at the same time, each with one block in memory.
constexpr std::size_t maxRuns = 64;
constexpr std::size_t blockBytes = std::size_t{256} << 10U;
constexpr std::size_t maxBlockRows = 4096;

using Files = std::vector<std::shared_ptr<const SortedRun>>;

void append(SortedRun& run, const std::vector<SortedRowsPtr>& parts, std::size_t columns, std::span<const RowAt> rows) {
    std::vector<ColumnPtr> block;
    for (std::size_t column = 0; column < columns; ++column) {
        block.push_back(gathered(parts, column, rows));
    }
    run.blocks.push_back(run.file.append(block, rows.size()));
}

std::size_t rowsInBlock(std::size_t bytes, std::size_t rows) {
    const std::size_t bytesOfRow = std::max<std::size_t>(bytes / std::max<std::size_t>(rows, 1), 1);
    return std::clamp<std::size_t>(blockBytes / bytesOfRow, 1, maxBlockRows);
}

/// What both forms of a sorted table have in common.
class SortedReader : public TableReader {
public:
    explicit SortedReader(const Schema& columns) : columns(columns), isNeeded(columns.size(), true) {}

    const Schema& schema() const override { return columns; }
    void selectColumns(const std::vector<bool>& needed) override { isNeeded = needed; }

protected:
    void gather(Chunk& chunk, const std::vector<SortedRowsPtr>& parts, std::span<const RowAt> rows) const;

private:
    const Schema& columns;
    std::vector<bool> isNeeded;
};

void SortedReader::gather(Chunk& chunk, const std::vector<SortedRowsPtr>& parts, std::span<const RowAt> rows) const {
    chunk.columns.assign(columns.size(), nullptr);
    for (std::size_t column = 0; column < columns.size(); ++column) {
        if (isNeeded[column]) {
            chunk.columns[column] = gathered(parts, column, rows);
        }
    }
}

/// Rows in memory, whose order is known: chunks are made by all threads.
class TableInMemory : public StoredTable {
public:
    TableInMemory(Schema schema, std::vector<SortedRowsPtr> parts, std::vector<RowAt> rows,
                  std::unique_ptr<MemoryShare> memory);

    const Schema& schema() const override { return columns; }
    std::unique_ptr<TableReader> open() const override;

private:
    class Reader;

    Schema columns;
    std::vector<SortedRowsPtr> parts;
    std::vector<RowAt> rows;
    std::unique_ptr<MemoryShare> memory;
};

TableInMemory::TableInMemory(Schema schema, std::vector<SortedRowsPtr> parts, std::vector<RowAt> rows,
                             std::unique_ptr<MemoryShare> memory)
    : columns(std::move(schema)), parts(std::move(parts)), rows(std::move(rows)), memory(std::move(memory)) {}

class TableInMemory::Reader : public SortedReader {
public:
    explicit Reader(const TableInMemory& table);

    bool next(Chunk& chunk) override;
    void complete(Chunk& chunk) const override;
    std::optional<double> fraction() const override;

private:
    const TableInMemory& table;
    bool hasHeavyRows;
    std::size_t at = 0;
};

TableInMemory::Reader::Reader(const TableInMemory& table)
    : SortedReader(table.columns),
      table(table),
      hasHeavyRows(
          std::any_of(table.columns.columns().begin(), table.columns.columns().end(),
                      [](const ColumnInfo& column) { return column.isList || column.type == ColumnType::Text; })) {}

void TableInMemory::Reader::complete(Chunk& chunk) const {
    gather(chunk, table.parts, std::span(table.rows).subspan(chunk.firstRow, chunk.rows));
}

std::optional<double> TableInMemory::Reader::fraction() const {
    return table.rows.empty() ? 1.0 : static_cast<double>(at) / static_cast<double>(table.rows.size());
}

bool TableInMemory::Reader::next(Chunk& chunk) {
    const std::size_t most = std::min(rowsInChunk(table.columns), table.rows.size() - at);
    if (!hasHeavyRows) {
        chunk.rows = most;
    } else {
        chunk.columns.assign(table.columns.size(), nullptr);
        for (std::size_t bytes = 0; chunk.rows < most && bytes < maxChunkBytes; ++chunk.rows) {
            const RowAt& row = table.rows[at + chunk.rows];
            bytes += bytesOfRow(*table.parts[row.part], row.row);
        }
    }
    at += chunk.rows;
    return chunk.rows > 0;
}

std::unique_ptr<TableReader> TableInMemory::open() const {
    return std::make_unique<Reader>(*this);
}

/// Rows in files, which are merged while they are read.
class TableInFiles : public StoredTable {
public:
    TableInFiles(Schema schema, std::shared_ptr<const KeyMaker> keys, Files files);

    const Schema& schema() const override { return columns; }
    std::unique_ptr<TableReader> open() const override;

private:
    class Reader;

    Schema columns;
    std::shared_ptr<const KeyMaker> keys;
    Files files;
    std::size_t rows = 0;
};

TableInFiles::TableInFiles(Schema schema, std::shared_ptr<const KeyMaker> keys, Files files)
    : columns(std::move(schema)), keys(std::move(keys)), files(std::move(files)) {
    for (const auto& run : this->files) {
        for (const ChunkFile::Place& block : run->blocks) {
            rows += block.rows;
        }
    }
}

class TableInFiles::Reader : public SortedReader {
public:
    explicit Reader(const TableInFiles& table);

    bool next(Chunk& chunk) override;
    void complete(Chunk& chunk) const override;
    std::optional<double> fraction() const override;

private:
    const TableInFiles& table;
    RunMerge merge;
    std::size_t at = 0;
};

TableInFiles::Reader::Reader(const TableInFiles& table)
    : SortedReader(table.columns), table(table), merge(table.columns, table.keys, table.files) {}

bool TableInFiles::Reader::next(Chunk& chunk) {
    auto merged = std::make_shared<const MergedRows>(merge.next(rowsInChunk(table.columns), maxChunkBytes));
    chunk.columns.assign(table.columns.size(), nullptr);
    chunk.rows = merged->rows.size();
    chunk.owner = std::move(merged);
    at += chunk.rows;
    return chunk.rows > 0;
}

void TableInFiles::Reader::complete(Chunk& chunk) const {
    const auto& merged = *static_cast<const MergedRows*>(chunk.owner.get());
    gather(chunk, merged.parts, merged.rows);
    chunk.owner.reset();
}

std::optional<double> TableInFiles::Reader::fraction() const {
    return table.rows == 0 ? 1.0 : static_cast<double>(at) / static_cast<double>(table.rows);
}

std::unique_ptr<TableReader> TableInFiles::open() const {
    return std::make_unique<Reader>(*this);
}

}  // namespace

RowSorter::RowSorter(Schema schema, std::shared_ptr<const KeyMaker> keys, RunContext& context)
    : schema(std::move(schema)),
      keys(std::move(keys)),
      context(context),
      memory(std::make_unique<MemoryShare>(memoryOf(context))) {}

RowSorter::~RowSorter() = default;

void RowSorter::add(SortedRows rows) {
    const std::size_t bytes = rows.bytesInMemory();
    if (!memory->take(bytes)) {
        spill();
        if (!memory->take(bytes)) {
            memory->force(bytes);
        }
    }
    parts.push_back(std::make_shared<const SortedRows>(std::move(rows)));
}

/// Writes the rows in memory as one run.
void RowSorter::spill() {
    if (parts.empty()) {
        return;
    }
    if (files.size() == maxRuns) {
        mergeFiles();
    }
    const std::vector<RowAt> rows = mergedRows(parts, [this] { return context.isStopping(); });
    const auto run = std::make_shared<SortedRun>();
    const std::size_t most = rowsInBlock(memory->bytes(), rows.size());
    for (std::size_t first = 0; first < rows.size(); first += most) {
        append(*run, parts, schema.size(), std::span(rows).subspan(first, std::min(most, rows.size() - first)));
    }
    files.push_back(run);
    parts.clear();
    memory->giveAll();
}

/// Makes one run of all, so that there are never too many to be read at the same time.
void RowSorter::mergeFiles() {
    const auto run = std::make_shared<SortedRun>();
    const std::size_t most = rowsInBlock(bytesInRow(schema), 1);
    RunMerge merge(schema, keys, files);
    for (MergedRows rows = merge.next(most, blockBytes); !rows.rows.empty(); rows = merge.next(most, blockBytes)) {
        if (context.isStopping()) {
            throw Stopped();
        }
        append(*run, rows.parts, schema.size(), rows.rows);
    }
    files = {run};
}

std::shared_ptr<const StoredTable> RowSorter::finish() {
    if (!files.empty()) {
        spill();
        return std::make_shared<const TableInFiles>(schema, keys, std::move(files));
    }
    std::vector<RowAt> rows = mergedRows(parts, [this] { return context.isStopping(); });
    return std::make_shared<const TableInMemory>(schema, std::move(parts), std::move(rows), std::move(memory));
}

}  // namespace velmorak
