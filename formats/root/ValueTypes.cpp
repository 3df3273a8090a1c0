#include "root/ValueTypes.h"

#include <algorithm>
#include <array>

namespace velmorak::root {
namespace {

/// Reads the name of a C++ type, such as "map<string,vector<int> >".
class TypeParser {
public:
    explicit TypeParser(std::string_view text) : text(text) {}

    std::optional<ValueType> parse();

private:
    std::optional<ValueType> next();

    std::optional<ValueType> container(const std::string& name);

    std::string word();

    void skipBlanks();

    std::string_view text;
    std::size_t at = 0;
};

std::optional<ValueType> TypeParser::parse() {
    std::optional<ValueType> type = next();
    skipBlanks();
    return at == text.size() ? type : std::nullopt;
}

std::optional<ValueType> TypeParser::next() {
    const std::string name = word();
    if (at < text.size() && text[at] == '<') {
        return container(name);
    }
    if (name == "string" || name == "TString") {
        return ValueType{ValueType::Kind::Text, {}, {}, {}};
    }
    const std::optional<NumberType> number = numberTypeNamed(name);
    return number ? std::optional(ValueType{ValueType::Kind::Number, *number, {}, {}}) : std::nullopt;
}

std::optional<ValueType> TypeParser::container(const std::string& name) {
    static constexpr std::array<std::string_view, 9> lists{
        "vector",      "list", "set", "multiset", "deque", "unordered_set", "unordered_multiset", "ROOT::VecOps::RVec",
        "forward_list"};
    static constexpr std::array<std::string_view, 4> maps{"map", "multimap", "unordered_map", "unordered_multimap"};
    const bool isList = std::find(lists.begin(), lists.end(), name) != lists.end();
    const bool isMap = std::find(maps.begin(), maps.end(), name) != maps.end();
    std::vector<ValueType> arguments;
    do {
        ++at;
        std::optional<ValueType> argument = next();
        if (!argument) {
            return std::nullopt;
        }
        arguments.push_back(std::move(*argument));
        skipBlanks();
    } while (at < text.size() && text[at] == ',');
    if (at == text.size() || text[at] != '>' || arguments.size() < (isMap ? 2U : 1U) || !(isList || isMap)) {
        return std::nullopt;
    }
    ++at;
    return ValueType{isMap ? ValueType::Kind::Map : ValueType::Kind::List, {}, {}, std::move(arguments)};
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

const ValueType& innermost(const ValueType& type) {
    return type.arguments.empty() ? type : innermost(type.arguments.back());
}

}  // namespace velmorak::root
