#include "shared/StoredColumns.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <variant>

namespace velmorak {

namespace {

constexpr std::uint8_t listMark = 4;

void save(const Column& column, StateWriter& writer) {
    const auto type = static_cast<std::uint8_t>(column.values.index());
    writer.number<std::uint8_t>(column.isList() ? type + listMark : type);
    if (column.type() != ColumnType::Text) {
        std::visit(
            [&]<typename Values>(const Values& values) {
                if constexpr (!std::is_same_v<Values, Column::Texts>) {
                    writer.list(values);
                }
            },
            column.values);
    } else {
        writer.number<std::uint64_t>(column.texts().size());
        for (const std::string& text : column.texts()) {
            writer.text(text);
        }
    }
    if (column.isList()) {
        writer.list(column.offsets);
    }
}

Column::Texts loadTexts(StateReader& reader) {
    Column::Texts texts(reader.length(sizeof(std::uint64_t)));
    std::generate(texts.begin(), texts.end(), [&] { return reader.text(); });
    return texts;
}

Column load(StateReader& reader) {
    const auto mark = reader.number<std::uint8_t>();
    reader.require(mark < 2 * listMark, "a column has no known type");
    Column column;
    switch (static_cast<ColumnType>(mark % listMark)) {
        case ColumnType::Real:
            column.values = reader.list<Column::Reals>();
            break;
        case ColumnType::Integer:
            column.values = reader.list<Column::Integers>();
            break;
        case ColumnType::Boolean:
            column.values = reader.list<Column::Booleans>();
            break;
        case ColumnType::Text:
            column.values = loadTexts(reader);
            break;
    }
    if (mark >= listMark) {
        column.offsets = reader.list<std::vector<std::uint64_t>>();
        const std::vector<std::uint64_t>& offsets = column.offsets;
        reader.require(!offsets.empty() && offsets.front() == 0 && std::is_sorted(offsets.begin(), offsets.end()) &&
                           offsets.back() == column.valueCount(),
                       "the lists of a column overlap");
    }
    return column;
}

}  // namespace

void saveColumns(const std::vector<ColumnPtr>& columns, StateWriter& writer) {
    writer.number<std::uint64_t>(columns.size());
    for (const ColumnPtr& column : columns) {
        save(*column, writer);
    }
}

std::vector<ColumnPtr> loadColumns(StateReader& reader) {
    std::vector<ColumnPtr> columns;
    for (std::size_t left = reader.length(1 + sizeof(std::uint64_t)); left > 0; --left) {
        columns.push_back(std::make_shared<const Column>(load(reader)));
    }
    return columns;
}

}  // namespace velmorak
