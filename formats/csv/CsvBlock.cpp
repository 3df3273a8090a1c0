#include "csv/CsvBlock.h"

#include "csv/CsvScan.h"

#include <velmorak/Failure.h>

#include <algorithm>
#include <charconv>
#include <utility>

namespace velmorak {

namespace {

bool isAsciiText(std::string_view text) {
    // Without an early exit, so that the compiler vectorises the loop.
    unsigned char any = 0;
    for (const char c : text) {
        any |= static_cast<unsigned char>(c);
    }
    return any < 0x80U;
}

bool isPlainLayout(const CsvLayout& layout, std::string_view text) {
    const bool hasLists = std::any_of(layout.columns.begin(), layout.columns.end(),
                                      [](const CsvColumn& column) { return column.isList; });
    return layout.form.delimiter != ' ' && !hasLists && text.find('\0') == std::string_view::npos;
}

}  // namespace

CsvBlock::CsvBlock(const CsvLayout& layout, const CsvPiece& piece)
    : layout(layout),
      piece(piece),
      isPlain(isPlainLayout(layout, piece.text)),
      isAscii(isAsciiText(piece.text)),
      at(piece.text.data()),
      end(piece.text.data() + piece.text.size()),
      records(piece.text, layout.form, piece.line),
      line(piece.line) {
    for (const CsvColumn& column : layout.columns) {
        columns.push_back(emptyColumn(column));
        if (column.isNeeded) {
            resizeColumn(columns.back(), piece.records);
        }
    }
}

std::vector<ColumnPtr> CsvBlock::parse(const std::string& file) {
    for (std::size_t row = 0; row < piece.records; ++row) {
        if (!isPlain || !parsePlain(row)) {
            parseRecord(row, file);
        }
    }
    std::vector<ColumnPtr> made;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        made.push_back(layout.columns[i].isNeeded ? std::make_shared<const Column>(std::move(columns[i])) : nullptr);
    }
    return made;
}

/// Splits the record into fields, then reads them.
void CsvBlock::parseRecord(std::size_t row, const std::string& file) {
    records.seek(piece.text, static_cast<std::size_t>(at - piece.text.data()), line);
    records.next(fields);
    at = piece.text.data() + records.position();
    line = records.lineAfter();
    const std::string complaint = storeRecord(layout, records, fields, columns, row, repaired);
    if (!complaint.empty()) {
        throw Failure("file", "\"" + file + "\", line " + std::to_string(records.line()) + complaint);
    }
}

/// @return false, at the same place, if the record must be split first.
bool CsvBlock::parsePlain(std::size_t row) {
    const char* const begin = at;
    if (at == end || isOddLineStart(*at, layout.form.comment)) {
        return false;
    }
    const std::size_t last = columns.size() - 1;
    for (std::size_t i = 0; i <= last; ++i) {
        const char* const past = parseField(i, row);
        if (!past || !passEnd(past, i == last)) {
            at = begin;
            return false;
        }
    }
    ++line;
    return true;
}

/// Goes on after the end of a field. @return false if the record ends there and should not, or the other way round.
bool CsvBlock::passEnd(const char* fieldsEnd, bool isLast) {
    at = fieldsEnd;
    if (!isLast) {
        return at != end && *at++ == layout.form.delimiter;
    }
    return at == end || *at++ == '\n';
}

/// @return the end of a number that began at the place of the field, if the field ends there; else null.
inline const char* CsvBlock::endOf(const char* past, std::size_t column) const {
    if (past == end || *past == '\n') {
        return column + 1 == columns.size() ? past : nullptr;
    }
    if (*past == layout.form.delimiter) {
        return past;
    }
    return *past == '\r' && past + 1 != end && past[1] == '\n' ? past + 1 : nullptr;
}

/// @return the end of the field; null if it cannot be read alone.
const char* CsvBlock::parseField(std::size_t column, std::size_t row) {
    const CsvColumn& info = layout.columns[column];
    if (!info.isNeeded) {
        const bool mayBeQuoted = at != end && (*at == '"' || *at == ' ' || *at == '\t');
        return mayBeQuoted ? nullptr : fieldEnd(at, end, layout.form.delimiter);
    }
    if (layout.notation.isPlain() && info.type == ColumnType::Real && !info.isDate) {
        auto& value = std::get<Column::Reals>(columns[column].values)[row];
        const auto result = std::from_chars(at, end, value);
        const char* const past = result.ec == std::errc() ? endOf(result.ptr, column) : nullptr;
        return past ? past : parseToken(column, row);
    }
    if (layout.notation.isPlain() && info.type == ColumnType::Integer) {
        auto& value = std::get<Column::Integers>(columns[column].values)[row];
        const auto result = std::from_chars(at, end, value);
        const char* const past = result.ec == std::errc() ? endOf(result.ptr, column) : nullptr;
        return past ? past : parseToken(column, row);
    }
    return parseToken(column, row);
}

/// As parseField, for a field of any type.
const char* CsvBlock::parseToken(std::size_t column, std::size_t row) {
    const auto isBlank = [this](char c) { return c == ' ' || (c == '\t' && layout.form.delimiter != '\t'); };
    const char* begin = at;
    while (begin != end && isBlank(*begin)) {
        ++begin;
    }
    const bool isQuoted = begin != end && *begin == '"';
    const char* const past = fieldEnd(begin, end, layout.form.delimiter);
    const CsvColumn& info = layout.columns[column];
    if (isQuoted || (!isAscii && info.type == ColumnType::Text)) {
        return nullptr;
    }
    const char* last = past;
    while (last != begin && (isBlank(last[-1]) || last[-1] == '\r')) {
        --last;
    }
    const CsvField field{{begin, static_cast<std::size_t>(last - begin)}, false};
    const bool isStored = info.isDate ? storeDate(field, layout.notation, columns[column], row)
                                      : storeField(field, layout.notation, columns[column], row);
    return isStored ? past : nullptr;
}

}  // namespace velmorak
