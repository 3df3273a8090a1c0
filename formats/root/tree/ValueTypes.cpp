#include "root/tree/ValueTypes.h"

#include <algorithm>
#include <array>

namespace velmorak::root {
namespace {

constexpr std::array<std::string_view, 9> lists{
    "vector",      "list", "set", "multiset", "deque", "unordered_set", "unordered_multiset", "ROOT::VecOps::RVec",
    "forward_list"};
constexpr std::array<std::string_view, 4> maps{"map", "multimap", "unordered_map", "unordered_multimap"};

bool isContainer(const std::string& name) {
    return std::find(lists.begin(), lists.end(), name) != lists.end() ||
           std::find(maps.begin(), maps.end(), name) != maps.end();
}

/// Reads the name of a C++ type, such as "map<string,vector<int> >".
class TypeParser {
public:
    explicit TypeParser(std::string_view text) : text(text) {}

    std::optional<ValueType> parse();

private:
    std::optional<ValueType> next();

    std::optional<ValueType> container(const std::string& name);

    std::optional<ValueType> classTemplate(std::size_t begin);

    std::string word();

    void skipBlanks();

    std::string_view text;
    std::size_t at = 0;
    int depth = 0;
};

constexpr int maxValueDepth = 16;

std::optional<ValueType> TypeParser::parse() {
    std::optional<ValueType> type = next();
    skipBlanks();
    return at == text.size() ? type : std::nullopt;
}

std::optional<ValueType> TypeParser::next() {
    skipBlanks();
    const std::size_t begin = at;
    const std::string name = word();
    if (at < text.size() && text[at] == '<') {
        return isContainer(name) ? container(name) : classTemplate(begin);
    }
    if (name == "string" || name == "TString") {
        return ValueType{.kind = ValueType::Kind::Text, .className = name};
    }
    if (const std::optional<NumberType> number = numberTypeNamed(name)) {
        return ValueType{.kind = ValueType::Kind::Number, .number = *number};
    }
    if (name.empty() || text.substr(begin, at - begin).find('*') != std::string_view::npos) {
        return std::nullopt;
    }
    return ValueType{.kind = ValueType::Kind::Object, .className = name};
}

/// A class whose name has arguments, such as "pair<int,float>".
std::optional<ValueType> TypeParser::classTemplate(std::size_t begin) {
    int open = 0;
    do {
        open += text[at] == '<' ? 1 : text[at] == '>' ? -1 : 0;
        ++at;
    } while (at < text.size() && open > 0);
    if (open != 0 || (at < text.size() && text[at] == '*')) {
        return std::nullopt;
    }
    return ValueType{.kind = ValueType::Kind::Object, .className = std::string(text.substr(begin, at - begin))};
}

std::optional<ValueType> TypeParser::container(const std::string& name) {
    const bool isMap = std::find(maps.begin(), maps.end(), name) != maps.end();
    std::vector<ValueType> arguments;
    if (++depth > maxValueDepth) {
        return std::nullopt;
    }
    do {
        ++at;
        std::optional<ValueType> argument = next();
        if (!argument) {
            return std::nullopt;
        }
        arguments.push_back(std::move(*argument));
        skipBlanks();
    } while (at < text.size() && text[at] == ',');
    if (at == text.size() || text[at] != '>' || arguments.size() < (isMap ? 2U : 1U)) {
        return std::nullopt;
    }
    ++at;
    --depth;
    arguments.resize(isMap ? 2 : 1);  // Without allocators and orders.
    return ValueType{.kind = isMap ? ValueType::Kind::Map : ValueType::Kind::List, .arguments = std::move(arguments)};
}

std::string TypeParser::word() {
    skipBlanks();
    const std::size_t begin = at;
    while (at < text.size() && text[at] != '<' && text[at] != '>' && text[at] != ',') {
        ++at;
    }
    std::string name(text.substr(begin, at - begin));
    name.erase(name.find_last_not_of(" *") + 1);
    return name.starts_with("std::") ? name.substr(5) : name;
}

void TypeParser::skipBlanks() {
    while (at < text.size() && text[at] == ' ') {
        ++at;
    }
}

}  // namespace

std::optional<ValueType> valueTypeNamed(std::string_view name) {
    return TypeParser(name).parse();
}

}  // namespace velmorak::root
