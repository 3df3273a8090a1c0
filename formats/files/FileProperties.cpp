#include "files/FileProperties.h"

#include "csv/CsvReader.h"

#include <velmorak/Failure.h>
#include <velmorak/Run.h>
#include <velmorak/Text.h>

#include <algorithm>
#include <cctype>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>

namespace velmorak {

namespace {

constexpr const char* fileColumn = "file";

/// @return the name in lower case, without the ending of a compressed file.
std::string plainName(std::string name) {
    std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::tolower(c); });
    for (const std::string_view ending : {".gz", ".bz2", ".zip"}) {
        if (name.ends_with(ending)) {
            return name.substr(0, name.size() - ending.size());
        }
    }
    return name;
}

void append(const Column& from, Column& to) {
    std::visit(
        [&](const auto& values) {
            auto& all = std::get<std::decay_t<decltype(values)>>(to.values);
            all.insert(all.end(), values.begin(), values.end());
        },
        from.values);
}

/// @return the columns of all rows; without rows, none has a value.
std::vector<Column> columnsOf(TableReader& reader) {
    std::vector<Column> columns(reader.schema().size());
    bool isFirst = true;
    for (Chunk chunk; reader.next(chunk); chunk = {}) {
        reader.complete(chunk);
        for (std::size_t i = 0; i < columns.size(); ++i) {
            if (isFirst) {
                columns[i] = *chunk.columns[i];
            } else {
                append(*chunk.columns[i], columns[i]);
            }
        }
        isFirst = false;
    }
    return columns;
}

FileProperties propertiesIn(const std::string& name, CsvOptions options, RunContext& context) {
    options.types = {{fileColumn, ColumnType::Text}};
    options.ignoresOtherTypes = true;
    CsvReader reader(std::move(options), context);
    const std::optional<std::size_t> position = reader.schema().find(fileColumn);
    if (!position) {
        throw Failure(velmorak::quoted(name) +
                      " has no column \"file\" with the names of the files; its first line must name the columns");
    }
    std::vector<Column> columns = columnsOf(reader);
    FileProperties table;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (i == *position) {
            table.files = columns[i].type() == ColumnType::Text ? columns[i].texts() : std::vector<std::string>();
        } else {
            table.properties.push_back(reader.schema()[i]);
            table.values.push_back(std::make_shared<const Column>(std::move(columns[i])));
        }
    }
    return table;
}

}  // namespace

bool isPropertyTable(const std::string& name) {
    const std::string plain = plainName(name);
    return plain.ends_with(".csv") || plain.ends_with(".tsv");
}

FileProperties readFileProperties(const std::string& input, const std::string& name, RunContext& context) {
    const char delimiter = plainName(name).ends_with(".tsv") ? '\t' : ',';
    FileProperties table;
    try {
        table = propertiesIn(name,
                             {.file = context.inputFile(name),
                              .form = {.delimiter = delimiter, .comment = "#"},
                              .missing = "NA",
                              .types = {}},
                             context);
    } catch (const Failure& failure) {
        throw Failure(input, failure.what());
    }
    for (std::size_t row = 0; row < table.files.size(); ++row) {
        if (trimmed(table.files[row]).empty()) {
            throw Failure(input, velmorak::quoted(name) + ", row " + std::to_string(row + 1) + ": the file is missing");
        }
    }
    return table;
}

}  // namespace velmorak
