#include "aida/text/RowFastPath.h"

#include "aida/text/EntryValues.h"

#include <velmorak/Value.h>

#include <charconv>
#include <cmath>
#include <cstring>
#include <string_view>

namespace velmorak::io {

namespace {

constexpr std::string_view rowBegin = "<row>";
constexpr std::string_view entryBegin = R"(<entry value=")";
constexpr std::string_view entryEnd = R"("/>)";

/// The shortest row of so many columns.
std::size_t minBytes(std::size_t columns) {
    return rowBegin.size() + rowEnd.size() + columns * (entryBegin.size() + entryEnd.size());
}

/// The mark is a short constant, so that this compiles to one or two comparisons.
template <std::size_t Size>
bool isAt(const char* text, const char (&mark)[Size]) {
    static_assert(Size - 1 <= plainRowsMargin);
    return std::memcmp(text, mark, Size - 1) == 0;
}

/// @return the first byte that is not blank. A lone carriage return is not: a parser takes it for a line end.
const char* skipBlanks(const char* text, std::uint64_t& lines) {
    for (;; ++text) {
        if (*text == '\n') {
            ++lines;
        } else if (*text != ' ' && *text != '\t' && !(*text == '\r' && text[1] == '\n')) {
            return text;
        }
    }
}

/// @return the quote that ends a value; null if an escape or a byte beyond ASCII comes before it.
const char* endOfValue(const char* text) {
    while (*text != '"') {
        if (*text < 0x20 || *text > 0x7E || *text == '&' || *text == '<') {
            return nullptr;
        }
        ++text;
    }
    return text;
}

std::string_view between(const char* begin, const char* end) {
    return {begin, static_cast<std::size_t>(end - begin)};
}

/// @return the quote after an integer of up to 18 digits; null for anything else.
const char* scanInteger(const char* text, std::int64_t& value) {
    const bool isNegative = *text == '-';
    const char* const first = isNegative ? text + 1 : text;
    const char* digit = first;
    std::int64_t number = 0;
    for (; static_cast<unsigned char>(*digit - '0') < 10 && digit - first < 18; ++digit) {
        number = number * 10 + (*digit - '0');
    }
    if (digit == first || *digit != '"') {
        return nullptr;
    }
    value = isNegative ? -number : number;
    return digit;
}

}  // namespace

RowFastPath::RowFastPath(const std::vector<PlainColumn>& columns) : values(columns.size()) {
    for (std::size_t i = 0; i < columns.size(); ++i) {
        targets.push_back({columns[i]});
        switch (columns[i].type) {
            case ColumnType::Real:
                values[i].values.emplace<Column::Reals>();
                break;
            case ColumnType::Integer:
                values[i].values.emplace<Column::Integers>();
                break;
            case ColumnType::Boolean:
                values[i].values.emplace<Column::Booleans>();
                break;
            case ColumnType::Text:
                values[i].values.emplace<Column::Texts>();
                break;
        }
    }
}

void RowFastPath::makeRoom(std::size_t size) {
    const std::size_t most = size / minBytes(targets.size()) + 1;
    if (most > room) {
        room = most;
        for (std::size_t i = 0; i < targets.size(); ++i) {
            const std::size_t rows = targets[i].column.isUsed ? room : 0;
            std::visit([rows](auto& all) { all.resize(rows); }, values[i].values);
        }
    }
    for (std::size_t i = 0; i < targets.size(); ++i) {
        Target& target = targets[i];
        if (auto* reals = std::get_if<Column::Reals>(&values[i].values)) {
            target.reals = reals->data();
        } else if (auto* integers = std::get_if<Column::Integers>(&values[i].values)) {
            target.integers = integers->data();
        } else if (auto* booleans = std::get_if<Column::Booleans>(&values[i].values)) {
            target.booleans = booleans->data();
        } else {
            target.texts = std::get<Column::Texts>(values[i].values).data();
        }
    }
}

void RowFastPath::clear() {
    rowCount = 0;
    byteCount = 0;
    lineCount = 0;
    linesSeen = 0;
}

void RowFastPath::scan(const char* text, std::size_t size) {
    clear();
    makeRoom(size);
    textEnd = text + size;
    const char* position = text;
    while (position) {
        position = skipBlanks(position, linesSeen);
        byteCount = static_cast<std::size_t>(position - text);
        lineCount = linesSeen;
        position = scanRow(position);
        rowCount += position ? 1 : 0;
    }
}

/// @return the first byte after the row; null if it is not a plain one.
const char* RowFastPath::scanRow(const char* text) {
    if (!isAt(text, "<row>")) {
        return nullptr;
    }
    text += rowBegin.size();
    for (const Target& target : targets) {
        text = scanEntry(skipBlanks(text, linesSeen), target);
        if (!text) {
            return nullptr;
        }
    }
    text = skipBlanks(text, linesSeen);
    return isAt(text, "</row>") ? text + rowEnd.size() : nullptr;
}

const char* RowFastPath::scanEntry(const char* text, const Target& target) {
    if (!isAt(text, R"(<entry value=")")) {
        return nullptr;
    }
    text = scanValue(text + entryBegin.size(), target);
    if (!text) {
        return nullptr;
    }
    if (isAt(text, R"("/>)")) {
        return text + entryEnd.size();
    }
    text = skipBlanks(text + 1, linesSeen);
    return isAt(text, "/>") ? text + 2 : nullptr;
}

/// @return the quote that ends the value; null if the value does not fit the column.
const char* RowFastPath::scanValue(const char* text, const Target& target) {
    if (!target.column.isUsed) {
        return endOfValue(text);
    }
    const ColumnType type = target.column.type;
    double number = 0.0;
    if (type == ColumnType::Real) {
        const auto [end, error] = std::from_chars(text, textEnd, number);
        if (error == std::errc() && *end == '"' && std::isfinite(number)) {
            target.reals[rowCount] = number;
            return end;
        }
    }
    if (type == ColumnType::Integer) {
        if (const char* const end = scanInteger(text, target.integers[rowCount])) {
            return end;
        }
    }
    const char* const end = endOfValue(text);
    if (!end) {
        return nullptr;
    }
    const std::string_view value = between(text, end);
    bool isValue = true;
    if (type == ColumnType::Real) {
        isValue = readNumber(value, target.reals[rowCount]);
    } else if (type == ColumnType::Integer) {
        isValue = readInteger(value, target.integers[rowCount]);
    } else if (type == ColumnType::Boolean) {
        isValue = readBoolean(value, target.booleans[rowCount]);
    } else {
        target.texts[rowCount] = target.column.isSingleCharacter ? value.substr(0, 1) : value;
    }
    return isValue ? end : nullptr;
}

}  // namespace velmorak::io
