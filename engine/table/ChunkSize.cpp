#include <velmorak/ChunkSize.h>

#include <algorithm>
#include <string>
#include <type_traits>

namespace velmorak {
namespace {

std::size_t widthOf(const ColumnInfo& column) {
    const std::size_t begin = column.isList ? sizeof(std::uint64_t) : 0;
    switch (column.type) {
        case ColumnType::Boolean:
            return begin + sizeof(std::uint8_t);
        case ColumnType::Text:
            return begin + sizeof(std::string);
        default:
            return begin + sizeof(double);
    }
}

}  // namespace

std::size_t bytesInRow(const Schema& schema) {
    std::size_t bytes = 0;
    for (const ColumnInfo& column : schema.columns()) {
        bytes += widthOf(column);
    }
    return bytes;
}

std::size_t rowsInChunk(const Schema& schema) {
    const std::size_t bytes = bytesInRow(schema);
    std::size_t rows = chunkRows;
    while (rows > 1 && bytes > maxChunkBytes / rows) {
        rows /= 2;
    }
    return rows;
}

std::size_t bytesIn(const Column& column) {
    return std::visit(
        [&](const auto& values) {
            using Values = std::decay_t<decltype(values)>;
            std::size_t bytes = values.size() * sizeof(typename Values::value_type);
            if constexpr (std::is_same_v<Values, Column::Texts>) {
                for (const std::string& text : values) {
                    bytes += text.size();
                }
            }
            return bytes + column.offsets.size() * sizeof(std::uint64_t);
        },
        column.values);
}

}  // namespace velmorak
