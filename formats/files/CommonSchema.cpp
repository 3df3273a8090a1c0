#include "files/CommonSchema.h"

#include <velmorak/Failure.h>
#include <velmorak/Text.h>

#include <algorithm>

namespace velmorak {

namespace {

std::string typeOf(const ColumnInfo& column) {
    return column.isList ? "a list of " + std::string(nameOf(column.type)) + " values"
                         : std::string(nameOf(column.type));
}

bool isNumeric(const ColumnInfo& column) {
    return column.type == ColumnType::Real || column.type == ColumnType::Integer;
}

}  // namespace

void CommonSchema::add(const std::string& file, const Schema& schema) {
    if (first.empty()) {
        first = file;
        common = schema.columns();
        return;
    }
    if (schema.columns() == common) {
        return;
    }
    checkNoMore(file, schema);
    std::erase_if(common, [&](ColumnInfo& column) { return !merge(column, file, schema); });
}

/// A file that does not know the unit agrees with all others.
void CommonSchema::uniteUnits(ColumnInfo& column, const std::string& file, const ColumnInfo& other) const {
    if (column.unit.empty()) {
        column.unit = other.unit;
    } else if (!other.unit.empty() && other.unit != column.unit) {
        throw Failure("file", "the column " + velmorak::quoted(column.name) + " is in " + column.unit + " in " +
                                  velmorak::quoted(first) + " but in " + other.unit + " in " + velmorak::quoted(file));
    }
}

/// @return false if the column is to be left out.
bool CommonSchema::merge(ColumnInfo& column, const std::string& file, const Schema& schema) {
    const std::optional<std::size_t> position = schema.find(column.name);
    if (!position && !takesCommonColumns) {
        throw Failure("file", velmorak::quoted(file) + " has no column " + velmorak::quoted(column.name) + ", which " +
                                  velmorak::quoted(first) +
                                  " has; \"differing files\" can be set to \"common columns\"");
    }
    if (!position) {
        drop(column.name);
        return false;
    }
    const ColumnInfo& other = schema[*position];
    const bool isSame = other.type == column.type || (isNumeric(other) && isNumeric(column));
    if (other.isList == column.isList && isSame) {
        uniteUnits(column, file, other);
        column.type = other.type == column.type ? column.type : ColumnType::Real;
        return true;
    }
    if (!takesCommonColumns) {
        throw Failure("file", "the column " + velmorak::quoted(column.name) + " is " + typeOf(column) + " in " +
                                  velmorak::quoted(first) + " but " + typeOf(other) + " in " + velmorak::quoted(file));
    }
    drop(column.name);
    return false;
}

void CommonSchema::checkNoMore(const std::string& file, const Schema& schema) {
    const Schema known(common);
    for (const ColumnInfo& column : schema.columns()) {
        const bool isKnown = known.find(column.name).has_value();
        if (!isKnown && !takesCommonColumns) {
            throw Failure("file", velmorak::quoted(file) + " has a column " + velmorak::quoted(column.name) +
                                      ", which " + velmorak::quoted(first) +
                                      " has not; \"differing files\" can be set to \"common columns\"");
        }
        if (!isKnown) {
            drop(column.name);
        }
    }
}

void CommonSchema::drop(const std::string& name) {
    if (std::find(dropped.begin(), dropped.end(), name) == dropped.end()) {
        dropped.push_back(name);
    }
}

}  // namespace velmorak
