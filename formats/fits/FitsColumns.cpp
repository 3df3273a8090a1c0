#include "fits/FitsColumns.h"

#include <velmorak/Failure.h>
#include <velmorak/Text.h>
#include <velmorak/Utf8.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <set>

namespace velmorak::fits {
namespace {

constexpr std::uint64_t maxValuesInRow = std::uint64_t{1} << 22U;
constexpr std::size_t maxValuesAtOnce = std::size_t{1} << 20U;

std::string keyText(fitsfile* file, const std::string& key) {
    std::array<char, FLEN_VALUE> value{};
    int status = 0;
    fits_read_key(file, TSTRING, key.c_str(), value.data(), nullptr, &status);
    return status == 0 ? toUtf8(trimmed(value.data())) : std::string();
}

/// An integer column may have a number that marks missing values; it is then read as real.
bool hasMissing(fitsfile* file, int number) {
    return !keyText(file, "TNULL" + std::to_string(number)).empty();
}

void describeType(int type, FitsColumn& column) {
    ColumnType& shown = column.about.info.type;
    switch (type) {
        case TLOGICAL:
        case TBIT:
            column.kind = FitsColumn::Kind::Boolean;
            shown = ColumnType::Boolean;
            break;
        case TSTRING:
            column.kind = FitsColumn::Kind::Text;
            shown = ColumnType::Text;
            break;
        case TBYTE:
        case TSBYTE:
        case TSHORT:
        case TUSHORT:
        case TINT:
        case TUINT:
        case TLONG:
        case TULONG:
        case TLONGLONG:
        case TULONGLONG:
            column.kind = column.hasMissing    ? FitsColumn::Kind::Real
                          : type == TULONGLONG ? FitsColumn::Kind::Unsigned
                                               : FitsColumn::Kind::Integer;
            shown = column.kind == FitsColumn::Kind::Real ? ColumnType::Real : ColumnType::Integer;
            break;
        case TFLOAT:
        case TDOUBLE:
            break;
        default:
            column.about.problem = "complex numbers are not read";
    }
}

FitsColumn tableColumn(fitsfile* file, int number, const std::string& place) {
    int status = 0;
    int type = 0;
    long repeat = 1;
    long width = 0;
    fits_get_eqcoltype(file, number, &type, &repeat, &width, &status);
    check(status, place + ", column " + std::to_string(number));
    FitsColumn column{.about = {.info = {.name = keyText(file, "TTYPE" + std::to_string(number)),
                                         .unit = keyText(file, "TUNIT" + std::to_string(number))}},
                      .number = number};
    if (column.about.info.name.empty()) {
        column.about.info.name = "c" + std::to_string(number);
    }
    column.hasMissing = hasMissing(file, number);
    describeType(std::abs(type), column);
    column.isVariable = type < 0;
    column.count = static_cast<std::uint64_t>(std::max(repeat, 0L));
    if (column.kind == FitsColumn::Kind::Text) {
        column.width = static_cast<int>(std::clamp(width, 1L, 1L << 20U));
        column.count =
            column.isVariable ? 1 : std::max<std::uint64_t>(1, column.count / static_cast<std::uint64_t>(column.width));
        if (column.isVariable || column.count > 1) {
            column.about.problem = "lists of texts and texts of variable length are not read";
        }
    }
    column.about.info.isList = column.isVariable || column.count != 1;
    if (column.kind == FitsColumn::Kind::Text) {
        column.about.info.isList = false;
    }
    if (column.count > maxValuesInRow) {
        column.about.problem = "its rows have too many values";
    }
    return column;
}

std::vector<FitsColumn> imageColumns(const Unit& unit) {
    constexpr std::array<const char*, 2> names = {"x", "y"};
    std::vector<FitsColumn> columns;
    for (std::size_t i = 0; i < unit.axes.size() && i < names.size(); ++i) {
        columns.push_back({.about = {.info = {.name = names[i], .type = ColumnType::Integer}},
                           .kind = FitsColumn::Kind::Position,
                           .number = static_cast<int>(i) + 1});
    }
    columns.push_back({.about = {.info = {.name = "value"}}, .kind = FitsColumn::Kind::Pixel});
    return columns;
}

/// Consecutive rows of one column.
struct CellRange {
    fitsfile* file;
    int column;
    LONGLONG row;  ///< From 1.
    LONGLONG count;
    bool hasMissing;
};

/// Reads values of one type, as those below. @return the library's status.
int readReals(const CellRange& cells, double* target) {
    int status = 0;
    int any = 0;  // The library needs a place for it.
    double missing = std::numeric_limits<double>::quiet_NaN();
    // Where it looks for missing values, the library also takes the smallest numbers for 0.
    fits_read_col(cells.file, TDOUBLE, cells.column, cells.row, 1, cells.count, cells.hasMissing ? &missing : nullptr,
                  target, &any, &status);
    return status;
}

template <typename Raw>
int readAs(int type, const CellRange& cells, std::int64_t* target) {
    std::vector<Raw> raw(static_cast<std::size_t>(cells.count));
    int status = 0;
    int any = 0;  // The library needs a place for it.
    fits_read_col(cells.file, type, cells.column, cells.row, 1, cells.count, nullptr, raw.data(), &any, &status);
    std::ranges::transform(raw, target, [](Raw value) { return static_cast<std::int64_t>(value); });
    return status;
}

int readBooleans(const CellRange& cells, std::uint8_t* target) {
    std::vector<char> raw(static_cast<std::size_t>(cells.count));
    int status = 0;
    int any = 0;  // The library needs a place for it.
    fits_read_col(cells.file, TLOGICAL, cells.column, cells.row, 1, cells.count, nullptr, raw.data(), &any, &status);
    std::ranges::transform(raw, target, [](char value) { return static_cast<std::uint8_t>(value == 1 ? 1 : 0); });
    return status;
}

/// Appends count values.
int appendValues(const FitsColumn& column, const CellRange& cells, Column& made) {
    const auto count = static_cast<std::size_t>(cells.count);
    const std::size_t before = made.valueCount();
    switch (column.kind) {
        case FitsColumn::Kind::Integer:
        case FitsColumn::Kind::Unsigned: {
            auto& values = std::get<Column::Integers>(made.values);
            values.resize(before + count);
            return column.kind == FitsColumn::Kind::Integer
                       ? readAs<LONGLONG>(TLONGLONG, cells, values.data() + before)
                       : readAs<ULONGLONG>(TULONGLONG, cells, values.data() + before);
        }
        case FitsColumn::Kind::Boolean: {
            auto& values = std::get<Column::Booleans>(made.values);
            values.resize(before + count);
            return readBooleans(cells, values.data() + before);
        }
        default: {
            auto& values = std::get<Column::Reals>(made.values);
            values.resize(before + count);
            return readReals(cells, values.data() + before);
        }
    }
}

int appendTexts(const FitsColumn& column, const CellRange& cells, Column& made) {
    const auto count = static_cast<std::size_t>(cells.count);
    const auto stride = static_cast<std::size_t>(column.width) + 1;
    std::vector<char> characters(count * stride, '\0');
    std::vector<char*> texts(count);
    for (std::size_t i = 0; i < count; ++i) {
        texts[i] = characters.data() + i * stride;
    }
    int status = 0;
    int any = 0;  // The library needs a place for it.
    std::array<char, 1> missing{};
    fits_read_col(cells.file, TSTRING, cells.column, cells.row, 1, cells.count, missing.data(), texts.data(), &any,
                  &status);
    for (const char* text : texts) {
        const std::string_view whole(text);
        const std::size_t last = whole.find_last_not_of(' ');
        std::get<Column::Texts>(made.values)
            .push_back(toUtf8(whole.substr(0, last == std::string_view::npos ? 0 : last + 1)));
    }
    return status;
}

/// A row of a list of variable length.
int appendRow(const FitsColumn& column, fitsfile* file, LONGLONG row, Column& made) {
    int status = 0;
    LONGLONG count = 0;
    LONGLONG offset = 0;
    fits_read_descriptll(file, column.number, row, &count, &offset, &status);
    if (status != 0 || count == 0) {
        return status;
    }
    if (count < 0 || static_cast<std::uint64_t>(count) > maxValuesInRow) {
        return BAD_ELEM_NUM;
    }
    return appendValues(column, {file, column.number, row, count, column.hasMissing}, made);
}

Column emptyColumn(const ColumnInfo& info) {
    Column made;
    if (info.type == ColumnType::Integer) {
        made.values = Column::Integers();
    } else if (info.type == ColumnType::Boolean) {
        made.values = Column::Booleans();
    } else if (info.type == ColumnType::Text) {
        made.values = Column::Texts();
    }
    if (info.isList) {
        made.offsets.push_back(0);
    }
    return made;
}

int readTable(fitsfile* file, const FitsColumn& column, std::uint64_t first, std::size_t rows, Column& made) {
    const auto step = static_cast<std::size_t>(
        column.isVariable ? 1 : std::max<std::uint64_t>(1, maxValuesAtOnce / std::max<std::uint64_t>(1, column.count)));
    int status = 0;
    for (std::size_t done = 0; done < rows && status == 0; done += step) {
        const std::size_t count = std::min(step, rows - done);
        const std::uint64_t number = first + done + 1;
        const std::uint64_t product = count * column.count;
        const auto row = static_cast<LONGLONG>(number);
        const auto values = static_cast<LONGLONG>(product);
        if (column.isVariable) {
            status = appendRow(column, file, row, made);
            made.offsets.push_back(made.valueCount());
            continue;
        }
        if (column.kind == FitsColumn::Kind::Text) {
            status = appendTexts(column, {file, column.number, row, values, false}, made);
        } else if (values > 0) {
            status = appendValues(column, {file, column.number, row, values, column.hasMissing}, made);
        }
        for (std::size_t i = 0; i < count && column.about.info.isList; ++i) {
            made.offsets.push_back(made.offsets.back() + column.count);
        }
    }
    return status;
}

int readImage(fitsfile* file, const Unit& unit, const FitsColumn& column, std::uint64_t first, std::size_t rows,
              Column& made) {
    if (column.kind == FitsColumn::Kind::Position) {
        auto& values = std::get<Column::Integers>(made.values);
        for (std::uint64_t pixel = first; pixel < first + rows; ++pixel) {
            const std::uint64_t at = column.number == 1 ? pixel % unit.axes[0] : pixel / unit.axes[0];
            values.push_back(static_cast<std::int64_t>(at) + 1);
        }
        return 0;
    }
    auto& values = std::get<Column::Reals>(made.values);
    values.resize(rows);
    int status = 0;
    int any = 0;  // The library needs a place for it.
    double missing = std::numeric_limits<double>::quiet_NaN();
    int bits = 0;
    fits_get_img_type(file, &bits, &status);
    fits_read_img(file, TDOUBLE, static_cast<LONGLONG>(first) + 1, static_cast<LONGLONG>(rows),
                  bits > 0 ? &missing : nullptr, values.data(), &any, &status);
    return status;
}

}  // namespace

std::vector<FitsColumn> columnsOf(fitsfile* file, const Unit& unit, const std::string& place) {
    if (unit.isImage) {
        return imageColumns(unit);
    }
    int count = 0;
    int status = 0;
    fits_get_num_cols(file, &count, &status);
    check(status, place);
    std::vector<FitsColumn> columns;
    std::set<std::string> names;
    for (int number = 1; number <= count; ++number) {
        FitsColumn column = tableColumn(file, number, place);
        if (!names.insert(column.about.info.name).second) {
            column.about.info.name += "_" + std::to_string(number);
        }
        columns.push_back(std::move(column));
    }
    return columns;
}

Column readRows(fitsfile* file, const Unit& unit, const FitsColumn& column, std::uint64_t first, std::size_t rows,
                const std::string& place) {
    Column made = emptyColumn(column.about.info);
    const int status =
        unit.isImage ? readImage(file, unit, column, first, rows, made) : readTable(file, column, first, rows, made);
    check(status, place + ", column " + column.about.info.name + ", rows from " + std::to_string(first));
    return made;
}

}  // namespace velmorak::fits
