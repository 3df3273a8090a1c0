#include "files/CommonSchema.h"

#include <velmorak/Failure.h>
#include <velmorak/Text.h>

#include <algorithm>
#include <string_view>

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

std::vector<ColumnInfo> CommonSchema::columns() const {
    std::vector<ColumnInfo> infos;
    for (const Known& known : common) {
        infos.push_back(known.info);
    }
    return infos;
}

void CommonSchema::add(const std::string& file, const FileColumns& columns) {
    if (isEmpty()) {
        first = file;
        previous = columns;
        for (const ColumnInfo& column : columns.schema.columns()) {
            common.push_back({column, file, file, columns.undecided.contains(column.name)});
        }
        return;
    }
    if (columns == previous) {
        return;
    }
    previous = columns;
    checkNoMore(file, columns.schema);
    std::erase_if(common, [&](Known& known) { return !merge(known, file, columns); });
}

/// @return false if the column is to be left out.
bool CommonSchema::merge(Known& known, const std::string& file, const FileColumns& columns) {
    const std::string& name = known.info.name;
    const std::optional<std::size_t> position = columns.schema.find(name);
    if (!position && !takesCommonColumns) {
        throw Failure("file", velmorak::quoted(file) + " has no column " + velmorak::quoted(name) + ", which " +
                                  velmorak::quoted(first) +
                                  R"( has; set "differing_files" to "common columns" to leave it out)");
    }
    if (position && uniteTypes(known, file, columns.schema[*position], columns.undecided.contains(name))) {
        uniteUnits(known, file, columns.schema[*position]);
        return true;
    }
    drop(name);
    return false;
}

/// @return false if the column is to be left out because the types differ.
bool CommonSchema::uniteTypes(Known& known, const std::string& file, const ColumnInfo& other, bool isUndecided) const {
    ColumnInfo& column = known.info;
    if (isUndecided) {
        return true;
    }
    if (known.isUndecided) {
        known.isUndecided = false;
        known.file = file;
        column.type = other.type;
        column.isList = other.isList;
        return true;
    }
    if (other.isList == column.isList && (other.type == column.type || (isNumeric(other) && isNumeric(column)))) {
        column.type = other.type == column.type ? column.type : ColumnType::Real;
        return true;
    }
    if (!takesCommonColumns) {
        throw Failure("file", "the column " + velmorak::quoted(column.name) + " is " + typeOf(column) + " in " +
                                  velmorak::quoted(known.file) + " but " + typeOf(other) + " in " +
                                  velmorak::quoted(file));
    }
    return false;
}

/// A file that does not know the unit agrees with all others.
void CommonSchema::uniteUnits(Known& known, const std::string& file, const ColumnInfo& other) {
    if (known.info.unit.empty()) {
        known.info.unit = other.unit;
        known.unitFile = file;
    } else if (!other.unit.empty() && other.unit != known.info.unit) {
        throw Failure("file", "the column " + velmorak::quoted(known.info.name) + " is in " + known.info.unit + " in " +
                                  velmorak::quoted(known.unitFile) + " but in " + other.unit + " in " +
                                  velmorak::quoted(file));
    }
}

void CommonSchema::checkNoMore(const std::string& file, const Schema& schema) {
    std::set<std::string_view> names;
    for (const Known& known : common) {
        names.insert(known.info.name);
    }
    for (const ColumnInfo& column : schema.columns()) {
        const bool isKnown = names.contains(column.name);
        if (!isKnown && !takesCommonColumns) {
            throw Failure("file", velmorak::quoted(file) + " has a column " + velmorak::quoted(column.name) +
                                      ", which " + velmorak::quoted(first) +
                                      R"( does not have; set "differing_files" to "common columns" to leave it out)");
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
