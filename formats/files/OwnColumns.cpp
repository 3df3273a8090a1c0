#include "files/OwnColumns.h"

#include <velmorak/Failure.h>
#include <velmorak/Text.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <type_traits>
#include <utility>
#include <variant>

namespace velmorak {

namespace {

ColumnPtr repeated(const Column& values, std::size_t row, std::size_t count) {
    return std::visit(
        [&](const auto& all) {
            std::decay_t<decltype(all)> copies(count, all[row]);
            return std::make_shared<const Column>(Column{std::move(copies), {}});
        },
        values.values);
}

template <typename Number>
std::string bytesOfNumber(Number number) {
    std::string bytes(sizeof number, '\0');
    std::memcpy(bytes.data(), &number, sizeof number);
    return bytes;
}

std::string bytesOfText(const std::string& text) {
    return bytesOfNumber<std::uint64_t>(text.size()) + text;
}

std::string bytesOfValue(const Column& column, std::size_t row) {
    return std::visit(
        [row](const auto& all) {
            using Value = typename std::decay_t<decltype(all)>::value_type;
            if constexpr (std::is_same_v<Value, std::string>) {
                return bytesOfText(all[row]);
            } else {
                return bytesOfNumber<Value>(all[row]);
            }
        },
        column.values);
}

}  // namespace

Column emptyColumn(const ColumnInfo& info) {
    Column column;
    switch (info.type) {
        case ColumnType::Integer:
            column.values = Column::Integers();
            break;
        case ColumnType::Boolean:
            column.values = Column::Booleans();
            break;
        case ColumnType::Text:
            column.values = Column::Texts();
            break;
        default:
            break;
    }
    if (info.isList) {
        column.offsets = {0};
    }
    return column;
}

void OwnColumns::addTo(Schema& columns) const {
    const auto add = [&columns](const ColumnInfo& column, const std::string& origin) {
        if (columns.find(column.name)) {
            throw Failure("file", "the column " + velmorak::quoted(column.name) + " of " + origin +
                                      " has the name of another column; rename one of them");
        }
        columns.add(column);
    };
    if (hasFileColumns) {
        add({.name = "file", .type = ColumnType::Text}, "\"file_columns\"");
        add({.name = "file_number", .type = ColumnType::Integer}, "\"file_columns\"");
    }
    for (const ColumnInfo& property : list.properties) {
        add(property, "the table of file properties");
    }
}

void OwnColumns::addTo(Chunk& chunk, const std::vector<bool>& isNeeded) const {
    const ListedFile& from = list.files[chunk.file];
    const auto add = [&](const Column& column, std::size_t row) {
        const bool isUsed = isNeeded[chunk.columns.size()];
        chunk.columns.push_back(isUsed ? repeated(column, row, chunk.rows) : nullptr);
    };
    if (hasFileColumns) {
        add({Column::Texts{from.name}, {}}, 0);
        add({Column::Integers{static_cast<std::int64_t>(chunk.file)}, {}}, 0);
    }
    for (const ColumnPtr& property : list.values) {
        add(*property, from.row);
    }
}

std::string OwnColumns::circumstancesOf(std::size_t file) const {
    const ListedFile& from = list.files[file];
    std::string bytes;
    if (hasFileColumns) {
        bytes += bytesOfText(from.name) + bytesOfNumber<std::uint64_t>(file);
    }
    for (const ColumnPtr& property : list.values) {
        bytes += bytesOfValue(*property, from.row);
    }
    return bytes;
}

}  // namespace velmorak
