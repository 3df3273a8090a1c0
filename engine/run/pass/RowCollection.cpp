#include "run/pass/RowCollection.h"

#include <velmorak/ChunkFile.h>
#include <velmorak/ChunkSize.h>

#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

namespace velmorak {
namespace {

/// The rows of one chunk, in memory or in the file.
struct Piece {
    std::size_t rows = 0;
    std::vector<ColumnPtr> columns{};
    std::optional<ChunkFile::Place> place{};
};

class CollectedRows : public StoredTable {
public:
    CollectedRows(Schema schema, std::shared_ptr<MemoryBudget> memory);

    const Schema& schema() const override { return columns; }
    std::unique_ptr<TableReader> open() const override;

    void append(const Chunk& chunk);

private:
    class Reader;

    Schema columns;
    MemoryShare share;
    std::vector<Piece> pieces;
    std::unique_ptr<ChunkFile> file;
};

CollectedRows::CollectedRows(Schema schema, std::shared_ptr<MemoryBudget> memory)
    : columns(std::move(schema)), share(std::move(memory)) {}

class CollectedRows::Reader : public TableReader {
public:
    explicit Reader(const CollectedRows& table) : table(table) {}

    const Schema& schema() const override { return table.columns; }
    bool next(Chunk& chunk) override;

private:
    const CollectedRows& table;
    std::size_t at = 0;
};

bool CollectedRows::Reader::next(Chunk& chunk) {
    if (at == table.pieces.size()) {
        return false;
    }
    const Piece& piece = table.pieces[at++];
    chunk.rows = piece.rows;
    chunk.columns = piece.place ? table.file->read(*piece.place) : piece.columns;
    return true;
}

std::unique_ptr<TableReader> CollectedRows::open() const {
    return std::make_unique<Reader>(*this);
}

void CollectedRows::append(const Chunk& chunk) {
    std::size_t bytes = 0;
    for (const ColumnPtr& column : chunk.columns) {
        bytes += bytesIn(*column);
    }
    if (chunk.rows == 0) {
        return;
    }
    if (!file && share.take(bytes)) {
        pieces.push_back({chunk.rows, chunk.columns});
        return;
    }
    if (!file) {
        file = std::make_unique<ChunkFile>();
    }
    pieces.push_back({chunk.rows, {}, file->append(chunk.columns, chunk.rows)});
}

/// One chunk, or all chunks up to one.
class CollectionState : public AccumulatorState {
public:
    CollectionState(const Schema& schema, std::shared_ptr<MemoryBudget> memory);

    void fill(const Chunk& rows) override { chunk = rows; }
    void merge(AccumulatorState& other) override;
    std::shared_ptr<const StoredTable> result();

private:
    void flush() { table->append(std::exchange(chunk, {})); }

    Chunk chunk;
    std::shared_ptr<CollectedRows> table;
};

CollectionState::CollectionState(const Schema& schema, std::shared_ptr<MemoryBudget> memory)
    : table(std::make_shared<CollectedRows>(schema, std::move(memory))) {}

void CollectionState::merge(AccumulatorState& other) {
    flush();
    table->append(static_cast<CollectionState&>(other).chunk);
}

std::shared_ptr<const StoredTable> CollectionState::result() {
    flush();
    return std::move(table);
}

}  // namespace

std::unique_ptr<AccumulatorState> RowCollection::newState() const {
    return std::make_unique<CollectionState>(schema, memory);
}

std::shared_ptr<const StoredTable> RowCollection::tableOf(AccumulatorState& state) {
    return static_cast<CollectionState&>(state).result();
}

}  // namespace velmorak
