#include "csv/CsvTypes.h"

#include <velmorak/Text.h>

#include <charconv>
#include <limits>

namespace velmorak {

namespace {

bool isMissing(const CsvField& field, const std::string& missing) {
    return !field.isQuoted && (field.text.empty() || field.text == missing);
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

ColumnType typeNamed(const std::string& name) {
    for (const ColumnType type : {ColumnType::Real, ColumnType::Integer, ColumnType::Boolean, ColumnType::Text}) {
        if (name == nameOf(type)) {
            return type;
        }
    }
    throw Failure("types", "\"" + name + "\" is not a column type; use real, integer, boolean or text");
}

}  // namespace

bool appendField(const CsvField& field, const std::string& missing, Column& column) {
    const bool isGone = isMissing(field, missing);
    if (auto* texts = std::get_if<Column::Texts>(&column.values)) {
        texts->emplace_back(isGone ? std::string_view() : field.text);
        return true;
    }
    if (auto* reals = std::get_if<Column::Reals>(&column.values)) {
        double value = std::numeric_limits<double>::quiet_NaN();
        const bool isRead = isGone || readReal(field.text, value);
        if (isRead) {
            reals->push_back(value);
        }
        return isRead;
    }
    if (auto* integers = std::get_if<Column::Integers>(&column.values)) {
        std::int64_t value = 0;
        const bool isRead = !isGone && readInteger(field.text, value);
        if (isRead) {
            integers->push_back(value);
        }
        return isRead;
    }
    std::uint8_t value = 0;
    const bool isRead = !isGone && (readBoolean(field.text, value) || field.text == "0" || field.text == "1");
    if (isRead) {
        std::get<Column::Booleans>(column.values).push_back(field.text == "1" ? 1 : value);
    }
    return isRead;
}

std::map<std::string, ColumnType> csvTypesIn(const std::string& text) {
    std::map<std::string, ColumnType> types;
    std::size_t begin = 0;
    for (std::size_t end = 0; end != std::string::npos; begin = end + 1) {
        end = text.find_first_of(",;\n", begin);
        const std::string part(
            trimmed(std::string_view(text).substr(begin, end == std::string::npos ? end : end - begin)));
        if (part.empty()) {
            continue;
        }
        const std::size_t colon = part.rfind(':');
        if (colon == std::string::npos) {
            throw Failure("types", "\"" + part + "\" is not of the form column: type");
        }
        const std::string name(trimmed(std::string_view(part).substr(0, colon)));
        if (!types.emplace(name, typeNamed(std::string(trimmed(std::string_view(part).substr(colon + 1))))).second) {
            throw Failure("types", "the type of column \"" + name + "\" is given twice");
        }
    }
    return types;
}

void TypeGuess::see(const CsvField& field, const std::string& missing) {
    if (velmorak::isMissing(field, missing)) {
        isMissing = true;
        return;
    }
    std::int64_t integer = 0;
    double real = 0.0;
    std::uint8_t boolean = 0;
    isSeen = true;
    isInteger = isInteger && !field.isQuoted && readInteger(field.text, integer);
    isReal = isReal && !field.isQuoted && readReal(field.text, real);
    isBoolean = isBoolean && !field.isQuoted && readBoolean(field.text, boolean);
}

ColumnType TypeGuess::type() const {
    // Integers and booleans have no value for a missing entry.
    if (isSeen && isInteger && !isMissing) {
        return ColumnType::Integer;
    }
    if (isReal) {
        return ColumnType::Real;
    }
    return isBoolean && !isMissing ? ColumnType::Boolean : ColumnType::Text;
}

}  // namespace velmorak
