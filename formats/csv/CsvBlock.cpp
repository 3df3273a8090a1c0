#include "csv/CsvBlock.h"

#include "csv/CsvDecimal.h"
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
    for (std::size_t i = 0; i < columns.size(); ++i) {
        steps.push_back(stepOf(i));
    }
}

CsvBlock::Step CsvBlock::stepOf(std::size_t column) {
    const CsvColumn& info = layout.columns[column];
    if (!info.isNeeded) {
        return {.kind = Step::Kind::Skip};
    }
    const bool isNumber = layout.notation.isPlain() && !info.isDate && !info.isList;
    if (isNumber && info.type == ColumnType::Real) {
        return {.kind = Step::Kind::Real, .reals = std::get<Column::Reals>(columns[column].values).data()};
    }
    if (isNumber && info.type == ColumnType::Integer) {
        return {.kind = Step::Kind::Integer, .integers = std::get<Column::Integers>(columns[column].values).data()};
    }
    return {};
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

/// @return the end of a number, if the field ends there; else null.
inline const char* CsvBlock::endOf(const char* past, bool isLast) const {
    if (past == end || *past == '\n') {
        return isLast ? past : nullptr;
    }
    if (*past == layout.form.delimiter) {
        return past;
    }
    return *past == '\r' && past + 1 != end && past[1] == '\n' ? past + 1 : nullptr;
}

/// @return the end of the field; null if it is not a number alone.
inline const char* CsvBlock::parseNumber(const Step& step, const char* place, std::size_t row, bool isLast) const {
    if (step.kind == Step::Kind::Integer) {
        const auto result = std::from_chars(place, end, step.integers[row]);
        return result.ec == std::errc() ? endOf(result.ptr, isLast) : nullptr;
    }
    const char* const shortEnd = readShortDecimal(place, end, step.reals[row]);
    const char* const past = shortEnd ? endOf(shortEnd, isLast) : nullptr;
    if (past) {
        return past;
    }
    const auto result = std::from_chars(place, end, step.reals[row]);
    return result.ec == std::errc() ? endOf(result.ptr, isLast) : nullptr;
}

/// @return the end of a field that is not needed; null if it may be in quotes.
inline const char* CsvBlock::skipField(const char* place) const {
    const bool mayBeQuoted = place != end && (*place == '"' || *place == ' ' || *place == '\t');
    return mayBeQuoted ? nullptr : fieldEnd(place, end, layout.form.delimiter);
}

/// @return false, at the same place, if the record must be split first.
bool CsvBlock::parsePlain(std::size_t row) {
    if (at == end || isOddLineStart(*at, layout.form.comment)) {
        return false;
    }
    const std::size_t last = steps.size() - 1;
    const char* place = at;
    for (std::size_t i = 0; i <= last; ++i) {
        const Step& step = steps[i];
        const bool isNumber = step.kind == Step::Kind::Real || step.kind == Step::Kind::Integer;
        const char* past = isNumber                        ? parseNumber(step, place, row, i == last)
                           : step.kind == Step::Kind::Skip ? skipField(place)
                                                           : parseToken(place, i, row);
        if (!past && isNumber) {
            past = parseToken(place, i, row);
        }
        const bool isAtEnd = past == end;
        if (!past || (i == last ? !isAtEnd && *past != '\n' : isAtEnd || *past != layout.form.delimiter)) {
            return false;
        }
        place = isAtEnd ? past : past + 1;
    }
    at = place;
    ++line;
    return true;
}

/// Reads a field of any type without quotes. @return its end; null if it cannot be read alone.
const char* CsvBlock::parseToken(const char* field, std::size_t column, std::size_t row) {
    const auto isBlank = [this](char c) { return c == ' ' || (c == '\t' && layout.form.delimiter != '\t'); };
    const char* begin = field;
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
    const CsvField token{{begin, static_cast<std::size_t>(last - begin)}, false};
    const bool isStored = info.isDate ? storeDate(token, layout.notation, columns[column], row)
                                      : storeField(token, layout.notation, columns[column], row);
    return isStored ? past : nullptr;
}

}  // namespace velmorak
