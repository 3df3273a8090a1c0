#include "shared/StoredRows.h"

#include <velmorak/TableReader.h>

#include <optional>

namespace velmorak {

namespace {

class StoredRowsReader : public TableReader {
public:
    StoredRowsReader(const Schema& columns, const std::vector<StoredRows::Piece>& pieces);

    const Schema& schema() const override { return columns; }
    bool next(Chunk& chunk) override;
    std::optional<double> fraction() const override;

private:
    const Schema& columns;
    const std::vector<StoredRows::Piece>& pieces;
    std::size_t at = 0;
};

StoredRowsReader::StoredRowsReader(const Schema& columns, const std::vector<StoredRows::Piece>& pieces)
    : columns(columns), pieces(pieces) {}

bool StoredRowsReader::next(Chunk& chunk) {
    if (at == pieces.size()) {
        return false;
    }
    chunk.rows = pieces[at].rows;
    chunk.columns = pieces[at].columns;
    ++at;
    return true;
}

std::optional<double> StoredRowsReader::fraction() const {
    return pieces.empty() ? 1.0 : static_cast<double>(at) / static_cast<double>(pieces.size());
}

}  // namespace

std::unique_ptr<TableReader> StoredRows::open() const {
    return std::make_unique<StoredRowsReader>(columns, pieces);
}

}  // namespace velmorak
