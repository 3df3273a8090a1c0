#include "numpy/write/RowStore.h"

#include <velmorak/Failure.h>
#include <velmorak/Utf8.h>

#include <algorithm>
#include <utility>

namespace velmorak::numpy {
namespace {

void measure(const Column& column, ColumnExtent& extent) {
    extent.values += column.valueCount();
    for (std::size_t row = 0; row + 1 < column.offsets.size(); ++row) {
        const std::uint64_t length = column.offsets[row + 1] - column.offsets[row];
        extent.shortestList = std::min(extent.shortestList, length);
        extent.longestList = std::max(extent.longestList, length);
    }
    if (column.type() == ColumnType::Text) {
        for (const std::string& text : column.texts()) {
            extent.characters = std::max<std::uint64_t>(extent.characters, characterCount(text));
        }
    }
}

}  // namespace

RowStore::RowStore(std::filesystem::path path, Schema schema)
    : name(std::move(path)),
      types(std::move(schema)),
      file(name, std::ios::binary | std::ios::in | std::ios::out | std::ios::trunc),
      extents(types.size()) {
    if (!file) {
        throw Failure(name.string() + " cannot be written");
    }
}

void RowStore::append(const std::vector<ColumnPtr>& columns, std::size_t rows) {
    if (rows == 0) {
        return;
    }
    Block block{rows, {}};
    for (std::size_t i = 0; i < columns.size(); ++i) {
        block.columns.push_back({end, columns[i]->valueCount()});
        write(*columns[i]);
        measure(*columns[i], extents[i]);
    }
    rowCount += rows;
    stored.push_back(std::move(block));
}

void RowStore::writeBytes(const void* bytes, std::size_t count) {
    if (!file.write(static_cast<const char*>(bytes), static_cast<std::streamsize>(count))) {
        throw Failure("its rows cannot be stored in " + name.string());
    }
    end += count;
}

void RowStore::write(const Column& column) {
    writeBytes(column.offsets.data(), column.offsets.size() * sizeof(std::uint64_t));
    if (column.type() != ColumnType::Text) {
        std::visit([&](const auto& values) { writeBytes(values.data(), values.size() * sizeof(values.front())); },
                   column.values);
        return;
    }
    for (const std::string& text : column.texts()) {
        const std::uint64_t bytes = text.size();
        writeBytes(&bytes, sizeof(bytes));
        writeBytes(text.data(), text.size());
    }
}

template <typename Number>
std::vector<Number> RowStore::readNumbers(std::uint64_t count) {
    std::vector<Number> numbers(count);
    file.read(reinterpret_cast<char*>(numbers.data()), static_cast<std::streamsize>(count * sizeof(Number)));
    return numbers;
}

Column::Texts RowStore::readTexts(std::uint64_t count) {
    Column::Texts texts(count);
    for (std::string& text : texts) {
        text.resize(file ? readNumbers<std::uint64_t>(1).front() : 0);
        file.read(text.data(), static_cast<std::streamsize>(text.size()));
    }
    return texts;
}

Column RowStore::read(std::size_t block, std::size_t column) {
    const auto& [position, values] = stored[block].columns[column];
    file.seekg(static_cast<std::streamoff>(position));
    Column found;
    if (types[column].isList) {
        found.offsets = readNumbers<std::uint64_t>(stored[block].rows + 1);
    }
    switch (types[column].type) {
        case ColumnType::Real:
            found.values = readNumbers<double>(values);
            break;
        case ColumnType::Integer:
            found.values = readNumbers<std::int64_t>(values);
            break;
        case ColumnType::Boolean:
            found.values = readNumbers<std::uint8_t>(values);
            break;
        case ColumnType::Text:
            found.values = readTexts(values);
            break;
    }
    if (!file) {
        throw Failure("its rows cannot be read back from " + name.string());
    }
    return found;
}

}  // namespace velmorak::numpy
