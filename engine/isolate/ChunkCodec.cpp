#include "isolate/ChunkCodec.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>

namespace velmorak::isolation {
namespace {

enum class ColumnForm : std::uint8_t { Null, Known, Values };

void writeTexts(MessageWriter& message, const Column::Texts& texts) {
    std::vector<std::uint64_t> lengths;
    lengths.reserve(texts.size());
    std::uint64_t total = 0;
    for (const std::string& text : texts) {
        lengths.push_back(text.size());
        total += text.size();
    }
    message.list(lengths);
    message.number(total);
    for (const std::string& text : texts) {
        message.raw(text.data(), text.size());
    }
}

Column::Texts readTextValues(MessageReader& message) {
    const auto lengths = message.list<std::vector<std::uint64_t>>();
    std::string_view all = message.view();
    Column::Texts texts;
    texts.reserve(lengths.size());
    for (const std::uint64_t length : lengths) {
        texts.emplace_back(all.substr(0, length));
        all.remove_prefix(std::min<std::size_t>(length, all.size()));
    }
    return texts;
}

void writeColumn(MessageWriter& message, const Column& column) {
    message.number<std::uint8_t>(static_cast<std::uint8_t>(column.values.index()));
    message.flag(column.isList());
    if (column.isList()) {
        message.list(column.offsets);
    }
    std::visit(
        [&](const auto& values) {
            if constexpr (std::is_same_v<std::decay_t<decltype(values)>, Column::Texts>) {
                writeTexts(message, values);
            } else {
                message.list(values);
            }
        },
        column.values);
}

ColumnPtr readColumn(MessageReader& message) {
    const auto type = static_cast<ColumnType>(message.number<std::uint8_t>());
    auto column = std::make_shared<Column>();
    if (message.flag()) {
        column->offsets = message.list<std::vector<std::uint64_t>>();
    }
    switch (type) {
        case ColumnType::Real:
            column->values = message.list<Column::Reals>();
            break;
        case ColumnType::Integer:
            column->values = message.list<Column::Integers>();
            break;
        case ColumnType::Boolean:
            column->values = message.list<Column::Booleans>();
            break;
        case ColumnType::Text:
            column->values = readTextValues(message);
            break;
    }
    return column;
}

void write(MessageWriter& message, const ColumnPtr& column, const std::vector<ColumnPtr>& known) {
    if (!column || column->values.valueless_by_exception()) {
        message.number(ColumnForm::Null);
        return;
    }
    const auto found = std::find(known.begin(), known.end(), column);
    if (found != known.end()) {
        message.number(ColumnForm::Known);
        message.number<std::uint64_t>(static_cast<std::uint64_t>(found - known.begin()));
    } else {
        message.number(ColumnForm::Values);
        writeColumn(message, *column);
    }
}

ColumnPtr read(MessageReader& message, const std::vector<ColumnPtr>& known) {
    switch (message.number<ColumnForm>()) {
        case ColumnForm::Null:
            return nullptr;
        case ColumnForm::Known:
            return known.at(message.number<std::uint64_t>());
        case ColumnForm::Values:
            return readColumn(message);
    }
    throw std::runtime_error("a message between the program and a helper process is damaged");
}

}  // namespace

void writeChunk(MessageWriter& message, const Chunk& chunk, const std::vector<ColumnPtr>& known) {
    message.number(chunk.number);
    message.number(chunk.firstRow);
    message.number<std::uint64_t>(chunk.rows);
    message.number(chunk.rowsBefore);
    message.number(chunk.file);
    message.number<std::uint64_t>(chunk.columns.size());
    for (const ColumnPtr& column : chunk.columns) {
        write(message, column, known);
    }
}

Chunk readChunk(MessageReader& message, const std::vector<ColumnPtr>& known) {
    Chunk chunk;
    chunk.number = message.number<std::uint64_t>();
    chunk.firstRow = message.number<std::uint64_t>();
    chunk.rows = message.number<std::uint64_t>();
    chunk.rowsBefore = message.number<std::uint64_t>();
    chunk.file = message.number<std::uint64_t>();
    chunk.columns.resize(message.count());
    for (ColumnPtr& column : chunk.columns) {
        column = read(message, known);
    }
    return chunk;
}

}  // namespace velmorak::isolation
