#include "aida/read/AidaColumns.h"

#include <velmorak/Failure.h>
#include <velmorak/Text.h>

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace velmorak::io {

namespace {

constexpr int maxDeclarationDepth = 16;

bool contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

std::string lower(std::string_view text) {
    std::string small(text);
    std::transform(small.begin(), small.end(), small.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return small;
}

void setType(AidaColumn& column, std::string_view type) {
    column.typeText = trimmed(type);
    column.isNested = contains(type, "uple");
    std::string word = lower(column.typeText);
    word.erase(0, word.find_last_of(".: ") + 1);
    constexpr std::array reals{"", "double", "float", "real"};
    constexpr std::array integers{"int", "integer", "long", "short", "byte", "unsigned", "int64", "int32"};
    constexpr std::array booleans{"boolean", "bool"};
    const auto isOneOf = [&](const auto& words) { return std::find(words.begin(), words.end(), word) != words.end(); };
    if (isOneOf(reals)) {
        column.type = ColumnType::Real;
    } else if (isOneOf(integers)) {
        column.type = ColumnType::Integer;
    } else if (isOneOf(booleans)) {
        column.type = ColumnType::Boolean;
    } else {
        column.type = ColumnType::Text;
    }
    column.isSingleCharacter = word == "char" || word == "character";
    column.isKnownType = column.type != ColumnType::Text || column.isSingleCharacter || word == "object" ||
                         contains(type, "tring") || column.isNested;
}

std::string_view unquoted(std::string_view text) {
    text = trimmed(text);
    const bool isQuoted =
        text.size() > 1 && text.front() == text.back() && (text.front() == '"' || text.front() == '\'');
    return isQuoted ? text.substr(1, text.size() - 2) : text;
}

/// Reads "{ double px = 0.0, py; ITuple hits = { int x } }" and the older "ITuple { float px, py; int q } trk".
class ColumnDeclarationParser {
public:
    explicit ColumnDeclarationParser(std::string_view text) : text(text) {}

    /// Parses the list after an opening brace up to the closing one.
    std::vector<AidaColumn> list(int depth);

    std::string_view upTo(std::string_view ends);
    bool isAt(char c) const { return here < text.size() && text[here] == c; }
    void skip() { here = std::min(here + 1, text.size()); }

private:
    AidaColumn item(std::string& type, int depth);

    void defaultOf(AidaColumn& column, int depth);

    std::vector<AidaColumn> nested(int depth);

    std::string_view text;
    std::size_t here = 0;
    std::size_t count = 0;
};

std::vector<AidaColumn> ColumnDeclarationParser::list(int depth) {
    std::vector<AidaColumn> columns;
    std::string type = "double";
    while (here < text.size() && text[here] != '}') {
        AidaColumn column = item(type, depth);
        if (!column.name.empty()) {
            columns.push_back(std::move(column));
        }
        if (here < text.size() && text[here] != '}') {
            ++here;
        }
    }
    here = std::min(here + 1, text.size());
    return columns;
}

std::string_view ColumnDeclarationParser::upTo(std::string_view ends) {
    const std::size_t begin = here;
    here = std::min(text.find_first_of(ends, here), text.size());
    return trimmed(text.substr(begin, here - begin));
}

AidaColumn ColumnDeclarationParser::item(std::string& type, int depth) {
    if (++count > maxColumns) {
        throw Failure(fmt::format("a nested column has more than {} columns", maxColumns));
    }
    AidaColumn column;
    const std::string_view words = upTo("=,;{}");
    const auto blank = words.find_last_of(" \t\r\n)");
    if (isAt('{')) {
        setType(column, words);
        column.isNested = true;
        column.children = nested(depth);
        column.name = upTo(",;}");
        return column;
    }
    if (blank != std::string_view::npos) {
        type = words.substr(0, blank + 1);
    }
    column.name = blank == std::string_view::npos ? words : trimmed(words.substr(blank + 1));
    setType(column, type);
    if (isAt('=')) {
        defaultOf(column, depth);
    }
    return column;
}

void ColumnDeclarationParser::defaultOf(AidaColumn& column, int depth) {
    skip();
    while (here < text.size() && (text[here] == ' ' || text[here] == '\t' || text[here] == '\n')) {
        ++here;
    }
    if (isAt('{')) {
        column.isNested = true;
        column.children = nested(depth);
        upTo(",;}");
        return;
    }
    const char quote = here < text.size() ? text[here] : '\0';
    const std::size_t begin = here;
    if (quote == '"' || quote == '\'') {
        here = std::min(text.find(quote, here + 1), text.size() - 1);
    }
    upTo(",;}");
    column.defaultText = unquoted(text.substr(begin, here - begin));
}

std::vector<AidaColumn> ColumnDeclarationParser::nested(int depth) {
    skip();
    if (depth < maxDeclarationDepth) {
        return list(depth + 1);
    }
    here = text.size();
    return {};
}

std::vector<AidaColumn> columnsIn(std::string_view braces) {
    ColumnDeclarationParser booking(braces);
    booking.upTo("{");
    booking.skip();
    return booking.list(0);
}

/// "(options) trk" is "trk".
std::string_view withoutOptions(std::string_view name) {
    name = trimmed(name);
    if (!name.empty() && name.front() == '(') {
        name.remove_prefix(std::min(name.find(')') + 1, name.size()));
    }
    return trimmed(name);
}

}  // namespace

bool haveSameShape(const std::vector<AidaColumn>& some, const std::vector<AidaColumn>& others) {
    return std::equal(
        some.begin(), some.end(), others.begin(), others.end(), [](const AidaColumn& one, const AidaColumn& other) {
            return one.name == other.name && one.isNested == other.isNested &&
                   (one.isNested || (one.type == other.type && one.isSingleCharacter == other.isSingleCharacter)) &&
                   haveSameShape(one.children, other.children);
        });
}

AidaColumn columnFrom(std::string_view name, std::string_view type, std::string_view booking) {
    AidaColumn column;
    setType(column, type);
    const auto equals = name.find('=');
    const auto brace = name.find('{');
    if (column.isNested && brace < equals && contains(name.substr(0, brace), "uple")) {
        column.children = columnsIn(name);
        column.name = trimmed(name.substr(std::min(name.rfind('}') + 1, name.size())));
        return column;
    }
    const auto rest = equals == std::string_view::npos ? std::string_view() : trimmed(name.substr(equals + 1));
    column.name = trimmed(name.substr(0, equals));
    if (!column.isNested) {
        column.defaultText = column.type == ColumnType::Text ? unquoted(rest) : rest;
    } else if (!booking.empty()) {
        column.children = columnsIn(booking);
    } else if (contains(rest, "{")) {
        column.children = columnsIn(rest);
        column.name = withoutOptions(column.name);
    }
    return column;
}

std::string normalPath(std::string_view path) {
    std::string normal = "/";
    for (const char c : path) {
        if (c != '/' || normal.back() != '/') {
            normal += c;
        }
    }
    if (normal.size() > 1 && normal.back() == '/') {
        normal.pop_back();
    }
    return normal;
}

std::string plainName(std::string_view name) {
    std::string plain;
    for (std::size_t position = 0; position < name.size(); ++position) {
        if (name.substr(position, 2) != "\\/") {
            plain += name[position];
        }
    }
    return plain;
}

std::string objectPath(std::string_view folder, std::string_view name) {
    const std::string path = normalPath(folder);
    return (path == "/" ? path : path + "/") + plainName(name);
}

}  // namespace velmorak::io
