#include "aida/text/AidaText.h"

#include <velmorak/Aida.h>

#include <array>
#include <charconv>

namespace velmorak {

namespace {

void appendInteger(std::int64_t number, std::string& target) {
    std::array<char, 24> text{};
    target.append(text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr);
}

void appendEntry(const Column& column, std::size_t position, std::string& target) {
    target += R"(<entry value=")";
    switch (column.type()) {
        case ColumnType::Real:
            io::appendNumber(column.reals()[position], target);
            break;
        case ColumnType::Integer:
            appendInteger(column.integers()[position], target);
            break;
        case ColumnType::Boolean:
            target += column.booleans()[position] != 0 ? "true" : "false";
            break;
        case ColumnType::Text:
            io::appendEscaped(column.texts()[position], target);
            break;
    }
    target += R"("/>)";
}

void appendList(const Column& column, std::size_t row, std::string& target) {
    const std::uint64_t end = column.offsets[row + 1];
    std::uint64_t position = column.offsets[row];
    if (position == end) {
        target += "<entryITuple/>";
        return;
    }
    target += "<entryITuple>";
    for (; position < end; ++position) {
        target += "<row>";
        appendEntry(column, position, target);
        target += "</row>";
    }
    target += "</entryITuple>";
}

}  // namespace

std::string aidaRows(const Schema& schema, const Chunk& chunk) {
    std::string rows;
    rows.reserve(chunk.rows * (16 + schema.size() * 40));
    for (std::size_t row = 0; row < chunk.rows; ++row) {
        rows += "<row>";
        for (std::size_t column = 0; column < schema.size(); ++column) {
            if (schema[column].isList) {
                appendList(*chunk.columns[column], row, rows);
            } else {
                appendEntry(*chunk.columns[column], row, rows);
            }
        }
        rows += "</row>\n";
    }
    return rows;
}

}  // namespace velmorak
