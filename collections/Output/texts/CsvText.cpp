#include "CsvText.h"

#include <velmorak/Dates.h>
#include <velmorak/FormatMeasurement.h>

#include <array>
#include <charconv>
#include <cmath>

namespace velmorak {

namespace {

/// An integral real keeps its decimal point, so that it is read back as a real, and -0 keeps its sign.
void append(std::string& text, double number) {
    if (!std::isfinite(number)) {
        text += textOf(number);
        return;
    }
    std::array<char, 32> buffer{};
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
    const std::size_t before = text.size();
    text.append(buffer.data(), end.ptr);
    if (text.find_first_not_of("-0123456789", before) == std::string::npos) {
        text += ".0";
    }
}

void append(std::string& text, std::int64_t number) {
    std::array<char, 32> buffer{};
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
    text.append(buffer.data(), end.ptr);
}

void append(std::string& text, std::uint8_t flag) {
    text += flag != 0 ? "true" : "false";
}

void append(std::string& text, const std::string& words) {
    text += words;
}

void appendQuoted(std::string& text, const std::string& words) {
    text += '"';
    for (const char c : words) {
        if (c == '"') {
            text += '"';
        }
        text += c;
    }
    text += '"';
}

void appendField(std::string& text, const Column& column, std::size_t row) {
    if (column.isList() || column.type() == ColumnType::Text) {
        appendQuoted(text, fieldText(column, row));
        return;
    }
    std::visit([&](const auto& values) { append(text, values[row]); }, column.values);
}

bool isDate(const ColumnInfo& column) {
    return column.unit == dateUnit && column.type == ColumnType::Real && !column.isList;
}

bool isPlain(const std::string& name, char delimiter) {
    const bool hasPlainEnds = !name.empty() && name.front() != ' ' && name.back() != ' ' && name.front() != '#';
    return hasPlainEnds && name.find_first_of("\"\n\r\t") == std::string::npos &&
           name.find(delimiter) == std::string::npos;
}

}  // namespace

std::string csvHeader(const std::vector<std::string>& names, char delimiter) {
    std::string text;
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (i > 0) {
            text += delimiter;
        }
        if (isPlain(names[i], delimiter)) {
            text += names[i];
        } else {
            appendQuoted(text, names[i]);
        }
    }
    return text + "\n";
}

std::string csvRows(const Schema& schema, const Chunk& chunk, char delimiter) {
    std::string text;
    for (std::size_t row = 0; row < chunk.rows; ++row) {
        for (std::size_t i = 0; i < schema.size(); ++i) {
            if (i > 0) {
                text += delimiter;
            }
            if (isDate(schema[i])) {
                text += fieldText(schema[i], *chunk.columns[i], row);
            } else {
                appendField(text, *chunk.columns[i], row);
            }
        }
        text += '\n';
    }
    return text;
}

std::string csvRows(const ObjectTable& table, char delimiter) {
    std::string text;
    for (const auto& row : table.rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            if (i > 0) {
                text += delimiter;
            }
            if (row[i].text) {
                appendQuoted(text, *row[i].text);
            } else if (row[i].isCount) {
                text += formatNumber(row[i].value);
            } else {
                append(text, row[i].value);
            }
        }
        text += '\n';
    }
    return text;
}

std::string fieldText(const Column& column, std::size_t row) {
    std::string text;
    const std::size_t begin = column.isList() ? column.offsets[row] : row;
    const std::size_t end = column.isList() ? column.offsets[row + 1] : row + 1;
    for (std::size_t i = begin; i < end; ++i) {
        if (i > begin) {
            text += ' ';
        }
        std::visit([&](const auto& values) { append(text, values[i]); }, column.values);
    }
    return text;
}

std::string fieldText(const ColumnInfo& info, const Column& column, std::size_t row) {
    return isDate(info) ? dateText(column.reals()[row]) : fieldText(column, row);
}

}  // namespace velmorak
