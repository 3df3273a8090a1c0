#include "TreeFile.h"

#include <root/write/TreeWriter.h>

#include <velmorak/ChunkSize.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace velmorak::bench {

namespace {

/// Numbers that are the same in every run.
class Numbers {
public:
    std::uint64_t bits() {
        state = state * 6364136223846793005U + 1442695040888963407U;
        return state >> 33U;
    }
    /// With the precision of a float, as most files have.
    double real() { return static_cast<double>(static_cast<float>(bits() % 100000) / 1000.0F); }

private:
    std::uint64_t state = 0x9E3779B97F4A7C15U;
};

ColumnPtr realColumn(Numbers& numbers, std::size_t rows) {
    Column::Reals values(rows);
    std::generate(values.begin(), values.end(), [&] { return numbers.real(); });
    return std::make_shared<Column>(Column{.values = std::move(values), .offsets = {}});
}

ColumnPtr listColumn(Numbers& numbers, std::size_t rows) {
    Column::Reals values;
    std::vector<std::uint64_t> offsets{0};
    for (std::size_t row = 0; row < rows; ++row) {
        offsets.push_back(offsets.back() + numbers.bits() % 8);
    }
    values.resize(offsets.back());
    std::generate(values.begin(), values.end(), [&] { return numbers.real(); });
    return std::make_shared<Column>(Column{.values = std::move(values), .offsets = std::move(offsets)});
}

Schema schemaOf(const TreeShape& shape) {
    Schema schema;
    for (std::size_t i = 0; i < shape.columns; ++i) {
        schema.add({.name = "c" + std::to_string(i)});
    }
    for (std::size_t i = 0; i < shape.listColumns; ++i) {
        schema.add({.name = "l" + std::to_string(i), .isList = true});
    }
    return schema;
}

}  // namespace

void writeTree(const std::filesystem::path& file, const TreeShape& shape) {
    root::FileWriter writer({.path = file, .name = file.filename().string()}, shape.packing);
    const root::TreeLayout layout("events", schemaOf(shape));
    root::TreeWriter tree(writer, layout);
    Numbers numbers;
    for (std::size_t row = 0; row < shape.rows; row += chunkRows) {
        Chunk chunk{.firstRow = row, .rows = std::min(chunkRows, shape.rows - row), .columns = {}};
        for (const ColumnInfo& column : layout.schema.columns()) {
            chunk.columns.push_back(column.isList ? listColumn(numbers, chunk.rows) : realColumn(numbers, chunk.rows));
        }
        root::TreeRows rows = treeRowsOf(layout, chunk);
        rows.pack(layout, shape.packing);
        tree.append(bytesOfRows(rows));
    }
    tree.finish();
    writer.close();
}

}  // namespace velmorak::bench
