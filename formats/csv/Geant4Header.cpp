#include "csv/Geant4Header.h"

#include <velmorak/Failure.h>
#include <velmorak/Text.h>

#include <algorithm>
#include <charconv>
#include <utility>

namespace velmorak {

namespace {

/// Takes the word at the beginning.
std::string_view takeWord(std::string_view& text) {
    text = trimmed(text);
    const std::size_t end = std::min(text.find_first_of(" \t"), text.size());
    const std::string_view word = text.substr(0, end);
    text = trimmed(text.substr(end));
    return word;
}

/// A character is given by its code.
char characterIn(std::string_view text, std::string_view key) {
    int code = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), code);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size() || code < 1 || code > 126) {
        throw Failure("file", "the line #" + std::string(key) + " has " + velmorak::quoted(text) +
                                  " where it needs the code of a character, such as 44 for a comma");
    }
    return static_cast<char>(code);
}

ColumnType typeNamed(std::string_view name) {
    constexpr std::string_view integers[] = {"char",   "short", "int",    "long",   "int64", "uchar",
                                             "ushort", "uint",  "uint32", "uint64", "ulong", "int32"};
    if (name == "float" || name == "double") {
        return ColumnType::Real;
    }
    if (name == "string" || name == "std::string") {
        return ColumnType::Text;
    }
    if (name == "bool") {
        return ColumnType::Boolean;
    }
    if (std::find(std::begin(integers), std::end(integers), name) != std::end(integers)) {
        return ColumnType::Integer;
    }
    throw Failure("file", "a line #column has the unknown type " + velmorak::quoted(name));
}

ColumnInfo columnIn(std::string_view text) {
    std::string_view type = takeWord(text);
    ColumnInfo column{.name = std::string(text)};
    for (const std::string_view vector : {"std::vector<", "vector<"}) {
        if (type.starts_with(vector) && type.ends_with('>')) {
            type = type.substr(vector.size(), type.size() - vector.size() - 1);
            column.isList = true;
        }
    }
    if (type.ends_with("[]")) {
        type.remove_suffix(2);
        column.isList = true;
    }
    column.type = typeNamed(type);
    return column;
}

std::vector<std::string> wordsIn(std::string_view text) {
    std::vector<std::string> words;
    while (!trimmed(text).empty()) {
        words.emplace_back(takeWord(text));
    }
    return words;
}

void takeLine(std::string_view key, std::string_view value, Geant4Header& header) {
    if (key == "class") {
        header.className = value;
    } else if (key == "title") {
        header.title = value;
    } else if (key == "separator") {
        header.separator = characterIn(value, key);
    } else if (key == "vector_separator") {
        header.vectorSeparator = characterIn(value, key);
    } else if (key == "column") {
        header.columns.push_back(columnIn(value));
    } else if (key == "axis") {
        header.axes.push_back(wordsIn(value));
    } else if (key == "annotation") {
        const std::string_view name = takeWord(value);
        header.annotations.emplace_back(name, value);
    }
}

}  // namespace

std::optional<Geant4Header> geant4HeaderIn(std::string_view head) {
    if (!head.starts_with("#class ")) {
        return std::nullopt;
    }
    Geant4Header header;
    while (head.substr(header.bytes).starts_with('#')) {
        const std::string_view rest = head.substr(header.bytes + 1);
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        std::string_view line = rest.substr(0, end);
        header.bytes += 1 + std::min(end + 1, rest.size());
        const std::string_view key = takeWord(line);
        takeLine(key, line, header);
    }
    return header;
}

}  // namespace velmorak
