#pragma once

#include <velmorak/Kind.h>

#include "QuietContext.h"

#include <map>
#include <string>

namespace velmorak {

/// A table that was read to its end.
struct ReadTable {
    Schema schema;
    std::uint64_t rows = 0;
    std::map<std::string, Column> columns;

    const Column& operator[](const std::string& name) const { return columns.at(name); }
};

/// Appends the values of one chunk to those of the chunks before.
inline void appendColumn(const Column& from, Column& to) {
    if (to.values.index() != from.values.index()) {
        to.values = from.values;
        to.offsets = from.offsets;
        return;
    }
    const std::size_t before = to.valueCount();
    std::visit(
        [&](auto& values) {
            const auto& more = std::get<std::remove_reference_t<decltype(values)>>(from.values);
            values.insert(values.end(), more.begin(), more.end());
        },
        to.values);
    for (std::size_t i = 1; i < from.offsets.size(); ++i) {
        to.offsets.push_back(before + from.offsets[i]);
    }
}

inline ReadTable readTable(TableReader& reader) {
    ReadTable table{reader.schema(), 0, {}};
    Chunk chunk;
    for (std::uint64_t number = 0; reader.next(chunk); ++number) {
        chunk.number = number;
        chunk.firstRow = table.rows;
        table.rows += chunk.rows;
        reader.complete(chunk);
        for (std::size_t i = 0; i < chunk.columns.size(); ++i) {
            const std::string& name = table.schema[i].name;
            if (number == 0) {
                table.columns[name] = *chunk.columns[i];
            } else {
                appendColumn(*chunk.columns[i], table.columns[name]);
            }
        }
        chunk = {};
    }
    return table;
}

}  // namespace velmorak
