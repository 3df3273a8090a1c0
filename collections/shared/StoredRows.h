#pragma once

#include <velmorak/StoredTable.h>

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace velmorak {

/// Rows in memory, in pieces of at most rowsInChunk(schema) rows; only the last one has fewer.
class StoredRows : public StoredTable {
public:
    struct Piece {
        std::size_t rows = 0;
        std::vector<ColumnPtr> columns;
    };

    StoredRows(Schema schema, std::vector<Piece> pieces) : columns(std::move(schema)), pieces(std::move(pieces)) {}

    const Schema& schema() const override { return columns; }
    std::unique_ptr<TableReader> open() const override;

private:
    Schema columns;
    std::vector<Piece> pieces;
};

}  // namespace velmorak
