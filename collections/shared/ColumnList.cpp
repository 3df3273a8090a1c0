#include "shared/ColumnList.h"

#include <velmorak/Failure.h>
#include <velmorak/Text.h>

#include <algorithm>
#include <optional>

namespace velmorak {

namespace {

std::vector<std::string> namesOf(const Schema& schema) {
    std::vector<std::string> names;
    for (const ColumnInfo& column : schema.columns()) {
        names.push_back(column.name);
    }
    return names;
}

}  // namespace

std::vector<std::string> columnNames(const std::string& input, const std::string& list) {
    static constexpr const char* separators = " ,\t\n";
    std::vector<std::string> names;
    std::size_t begin = 0;
    while ((begin = list.find_first_not_of(separators, begin)) != std::string::npos) {
        if (list[begin] != '`') {
            const std::size_t end = std::min(list.find_first_of(separators, begin), list.size());
            names.push_back(list.substr(begin, end - begin));
            begin = end;
            continue;
        }
        const std::size_t end = list.find('`', begin + 1);
        if (end == std::string::npos) {
            throw Failure(input, "a back quote is not closed");
        }
        names.push_back(list.substr(begin + 1, end - begin - 1));
        begin = end + 1;
    }
    return names;
}

std::size_t columnPosition(const std::string& input, const std::string& name, const Schema& schema) {
    const std::optional<std::size_t> position = schema.find(name);
    if (!position) {
        throw Failure(input, "there is no column \"" + name + "\"" + columnsThere(name, namesOf(schema)),
                      Failure::Cause::UnknownColumn);
    }
    return *position;
}

std::vector<std::size_t> columnPositions(const std::string& input, const std::string& list, const Schema& schema) {
    std::vector<std::size_t> positions;
    for (const std::string& name : columnNames(input, list)) {
        const std::size_t position = columnPosition(input, name, schema);
        if (std::find(positions.begin(), positions.end(), position) != positions.end()) {
            throw Failure(input, "column \"" + name + "\" is listed twice");
        }
        positions.push_back(position);
    }
    return positions;
}

std::string columnListRefusal(const std::string& input, const std::string& list) {
    try {
        columnNames(input, list);
        return {};
    } catch (const Failure& failure) {
        return failure.what();
    }
}

}  // namespace velmorak
