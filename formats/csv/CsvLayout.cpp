#include "csv/CsvLayout.h"

#include <velmorak/Text.h>
#include <velmorak/Utf8.h>

#include <algorithm>

namespace velmorak {

namespace {

/// @return the type that a user would enter for the field.
std::string_view typeFor(const CsvField& field, const CsvNotation& notation) {
    TypeGuess guess;
    guess.see(field, notation);
    return isMissing(field, notation) ? "text" : nameOf(guess.type());
}

std::string complaintAbout(const CsvField& field, const CsvLayout& layout, std::size_t position) {
    const CsvColumn& column = layout.columns[position];
    const std::string place = ", column " + std::to_string(position + 1) + " (" + column.name + "): ";
    const bool isGone = field.text.empty() || isMissing(field, layout.notation);
    std::string what = isGone          ? "the value is missing, and only reals and texts may be missing"
                       : column.isDate ? velmorak::quoted(toUtf8(field.text.substr(0, 40))) +
                                             " is not a date, such as 2024-02-29T12:30:00Z"
                                       : velmorak::quoted(toUtf8(field.text.substr(0, 40))) +
                                             " is not a value of type " + std::string(nameOf(column.type));
    if (column.isInferred) {
        what += std::string(isGone ? "; the type " : "; that type ") +
                (isGone ? std::string(nameOf(column.type)) + " " : "") + "was inferred from the first " +
                std::to_string(layout.rowsToInfer) + " rows: enter " +
                velmorak::quoted(column.name + ": " + std::string(typeFor(field, layout.notation))) + R"( for "types")";
    }
    return place + what;
}

bool store(const CsvField& field, const CsvLayout& layout, std::size_t position, Column& column, std::size_t row) {
    const CsvColumn& info = layout.columns[position];
    if (info.isList) {
        return appendList(field, layout.notation, column);
    }
    return info.isDate ? storeDate(field, layout.notation, column, row)
                       : storeField(field, layout.notation, column, row);
}

}  // namespace

std::size_t bytesInValue(ColumnType type) {
    return type == ColumnType::Boolean ? sizeof(std::uint8_t)
           : type == ColumnType::Text  ? sizeof(std::string)
                                       : sizeof(double);
}

Column emptyColumn(const CsvColumn& column) {
    Column empty;
    switch (column.type) {
        case ColumnType::Integer:
            empty.values = Column::Integers();
            break;
        case ColumnType::Boolean:
            empty.values = Column::Booleans();
            break;
        case ColumnType::Text:
            empty.values = Column::Texts();
            break;
        case ColumnType::Real:
            break;
    }
    if (column.isList) {
        empty.offsets.push_back(0);
    }
    return empty;
}

void resizeColumn(Column& column, std::size_t rows) {
    if (!column.isList()) {
        std::visit([rows](auto& values) { values.resize(rows); }, column.values);
    } else if (column.offsets.size() > rows + 1) {
        column.offsets.resize(rows + 1);
        std::visit([&](auto& values) { values.resize(column.offsets.back()); }, column.values);
    }
}

std::string storeRecord(const CsvLayout& layout, const CsvRecords& record, const std::vector<CsvField>& fields,
                        std::vector<Column>& columns, std::size_t row, std::uint64_t& repaired) {
    if (!record.complaint().empty()) {
        return ": " + record.complaint();
    }
    if (fields.size() != columns.size()) {
        return (fields.size() == 1 ? ": there is 1 field"
                                   : ": there are " + std::to_string(fields.size()) + " fields") +
               " instead of " + std::to_string(columns.size());
    }
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (!layout.columns[i].isNeeded) {
            continue;
        }
        CsvField field = fields[i];
        std::string text;
        if (layout.columns[i].type == ColumnType::Text && !isUtf8(field.text)) {
            text = toUtf8(field.text);
            field.text = text;
            repaired = std::min(repaired, record.line());
        }
        if (!store(field, layout, i, columns[i], row)) {
            return complaintAbout(fields[i], layout, i);
        }
    }
    return {};
}

}  // namespace velmorak
