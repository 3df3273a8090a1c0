#include "csv/CsvTypes.h"

#include <velmorak/Dates.h>
#include <velmorak/Text.h>

#include <charconv>
#include <limits>

namespace velmorak {

namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/// Appends digits in groups of three without their separators. @return false if the groups are not complete.
bool appendGroups(std::string_view digits, char separator, std::string& plain) {
    std::size_t inGroup = 0;
    bool isGrouped = false;
    for (const char c : digits) {
        if (c == separator && separator != '\0') {
            if (inGroup == 0 || inGroup > 3 || (isGrouped && inGroup != 3)) {
                return false;
            }
            isGrouped = true;
            inGroup = 0;
        } else {
            plain += c;
            ++inGroup;
        }
    }
    return !isGrouped || inGroup == 3;
}

/// Rewrites a number with the notation's signs as std::from_chars reads it. @return false if it is not a number.
bool makePlain(std::string_view text, const CsvNotation& notation, std::string& plain) {
    if (!text.empty() && (text.front() == '-' || text.front() == '+')) {
        plain += text.front();
        text.remove_prefix(1);
    }
    const bool isNumber = !text.empty() && (isDigit(text.front()) || text.front() == notation.decimal);
    std::size_t end = 0;
    while (isNumber && end < text.size() &&
           (isDigit(text[end]) || (notation.thousands != '\0' && text[end] == notation.thousands))) {
        ++end;
    }
    if (!appendGroups(text.substr(0, end), notation.thousands, plain)) {
        return false;
    }
    text.remove_prefix(end);
    if (!text.empty() && text.front() == notation.decimal) {
        plain += '.';
        text.remove_prefix(1);
    } else if (!text.empty() && text.front() == '.') {
        return false;
    }
    plain += text;
    return true;
}

/// Reads a number in any notation with a function that reads plain ones.
template <typename Number>
bool readIn(const CsvNotation& notation, std::string_view text, Number& value,
            bool (*read)(std::string_view, Number&)) {
    if (notation.isPlain()) {
        return read(text, value);
    }
    std::string plain;
    return makePlain(text, notation, plain) && read(plain, value);
}

bool readInteger(std::string_view text, std::int64_t& value) {
    if (text.starts_with('+') && !text.starts_with("+-")) {
        text.remove_prefix(1);
    }
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    return result.ec == std::errc() && result.ptr == text.data() + text.size() && !text.empty();
}

/// Tries from_chars first; what it does not accept (a plus sign, numbers out of range, "Infinity") is rare.
bool readReal(std::string_view text, double& value) {
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    return (result.ec == std::errc() && result.ptr == text.data() + text.size() && !text.empty()) ||
           readNumber(text, value);
}

bool readBoolean(std::string_view text, std::uint8_t& value) {
    const bool isTrue = text == "true" || text == "True" || text == "TRUE";
    value = isTrue ? 1 : 0;
    return isTrue || text == "false" || text == "False" || text == "FALSE";
}

bool readBit(std::string_view text, std::uint8_t& value) {
    if (text == "0" || text == "1") {
        value = text == "1" ? 1 : 0;
        return true;
    }
    return readBoolean(text, value);
}

ColumnType typeNamed(const std::string& name) {
    for (const ColumnType type : {ColumnType::Real, ColumnType::Integer, ColumnType::Boolean, ColumnType::Text}) {
        if (name == nameOf(type)) {
            return type;
        }
    }
    throw Failure("types", "\"" + name + "\" is not a column type; use real, integer, boolean, text or date");
}

void addType(const std::string& part, CsvTypes& all) {
    const std::size_t colon = part.rfind(':');
    if (colon == std::string::npos) {
        throw Failure("types", "\"" + part + "\" is not of the form column: type");
    }
    const std::string name(trimmed(std::string_view(part).substr(0, colon)));
    const std::string type(trimmed(std::string_view(part).substr(colon + 1)));
    const bool isDate = type == "date";
    if (!all.types.emplace(name, isDate ? ColumnType::Real : typeNamed(type)).second) {
        throw Failure("types", "the type of column \"" + name + "\" is given twice");
    }
    if (isDate) {
        all.dates.insert(name);
    }
}

}  // namespace

/// Not if a number marks a missing value: it would be read as one.
bool CsvNotation::isPlain() const {
    double number = 0.0;
    return decimal == '.' && thousands == '\0' && !readNumber(missing, number);
}

bool isMissing(const CsvField& field, const CsvNotation& notation) {
    return !field.isQuoted && (field.text.empty() || field.text == notation.missing);
}

bool storeField(const CsvField& field, const CsvNotation& notation, Column& column, std::size_t row) {
    const bool isGone = isMissing(field, notation);
    if (auto* reals = std::get_if<Column::Reals>(&column.values)) {
        (*reals)[row] = std::numeric_limits<double>::quiet_NaN();
        return isGone || readIn(notation, field.text, (*reals)[row], readReal);
    }
    if (auto* texts = std::get_if<Column::Texts>(&column.values)) {
        (*texts)[row] = isGone ? std::string_view() : field.text;
        return true;
    }
    if (auto* integers = std::get_if<Column::Integers>(&column.values)) {
        return !isGone && readIn(notation, field.text, (*integers)[row], readInteger);
    }
    return !isGone && readBit(field.text, std::get<Column::Booleans>(column.values)[row]);
}

bool storeDate(const CsvField& field, const CsvNotation& notation, Column& column, std::size_t row) {
    double& value = std::get<Column::Reals>(column.values)[row];
    value = std::numeric_limits<double>::quiet_NaN();
    // A writer says NaN where a date is missing.
    return isMissing(field, notation) || field.text == "NaN" || readDate(field.text, value);
}

bool appendList(const CsvField& field, const CsvNotation& notation, Column& column) {
    std::string_view rest = field.text;
    bool isRead = true;
    while (!rest.empty() && isRead) {
        const std::size_t end = std::min(rest.find(notation.vectorSeparator), rest.size());
        std::visit([](auto& values) { values.emplace_back(); }, column.values);
        isRead = storeField({rest.substr(0, end), true}, notation, column, column.valueCount() - 1);
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    column.offsets.push_back(column.valueCount());
    return isRead;
}

CsvTypes csvTypesIn(const std::string& text) {
    CsvTypes all;
    std::size_t begin = 0;
    for (std::size_t end = 0; end != std::string::npos; begin = end + 1) {
        end = text.find_first_of(",;\n", begin);
        const std::string part(
            trimmed(std::string_view(text).substr(begin, end == std::string::npos ? end : end - begin)));
        if (!part.empty()) {
            addType(part, all);
        }
    }
    return all;
}

void TypeGuess::see(const CsvField& field, const CsvNotation& notation) {
    if (isMissing(field, notation)) {
        hasMissing = true;
        return;
    }
    std::int64_t integer = 0;
    double real = 0.0;
    std::uint8_t boolean = 0;
    isSeen = true;
    const bool mayBeNumber = !field.isQuoted || notation.hasQuotedNumbers;
    isInteger = isInteger && mayBeNumber && readIn(notation, field.text, integer, readInteger);
    isReal = isReal && mayBeNumber && readIn(notation, field.text, real, readReal);
    isBoolean = isBoolean && !field.isQuoted && readBoolean(field.text, boolean);
}

ColumnType TypeGuess::type() const {
    // Integers and booleans have no value for a missing entry.
    if (isSeen && isInteger && !hasMissing) {
        return ColumnType::Integer;
    }
    if (isReal) {
        return ColumnType::Real;
    }
    return isBoolean && !hasMissing ? ColumnType::Boolean : ColumnType::Text;
}

}  // namespace velmorak
