#include <velmorak/NamedNumbers.h>

#include <velmorak/Expression.h>
#include <velmorak/Failure.h>
#include <velmorak/Text.h>
#include "expression/Program.h"

#include <algorithm>
#include <optional>

namespace velmorak {

namespace {

using expression::Node;

bool contains(const std::vector<std::string>& all, const std::string& name) {
    return std::find(all.begin(), all.end(), name) != all.end();
}

/// @return the names that may mean a number; none if the text is not an expression.
std::vector<Node> bareNames(const std::string& text) {
    std::vector<Node> names;
    if (!expressionRefusal(text).empty() || text.empty()) {
        return names;
    }
    for (Node& node : expression::parse(text)) {
        if (node.form == expression::Form::Name && !node.isQuoted && !expression::isConstant(node.text)) {
            names.push_back(std::move(node));
        }
    }
    std::sort(names.begin(), names.end(), [](const Node& a, const Node& b) { return a.offset < b.offset; });
    return names;
}

/// @return the number of an input. A wire provides one or fails; an empty value without a wire means none.
std::optional<double> numberAt(const Arguments& arguments, const std::string& input) {
    if (arguments.isWired(input)) {
        return arguments.number(input);
    }
    try {
        return arguments.number(input);
    } catch (const Failure&) {
        return std::nullopt;
    }
}

}  // namespace

NamedNumbers::NamedNumbers(std::vector<Text> expressions, const std::vector<InputSpec>& fixed)
    : texts(std::move(expressions)) {
    for (const InputSpec& input : fixed) {
        fixedNames.push_back(input.name);
    }
    for (const Text& text : texts) {
        for (const Node& node : bareNames(text.expression)) {
            if (!contains(names, node.text) && !contains(fixedNames, node.text) && names.size() < maxNames) {
                names.push_back(node.text);
            }
        }
    }
}

std::vector<InputSpec> NamedNumbers::inputs() const {
    std::vector<InputSpec> specs;
    for (const std::string& name : names) {
        specs.push_back({.name = name,
                         .description = "Number that \"" + name +
                                        "\" stands for, in the unit that the expression needs. Without effect where "
                                        "the table has a column of that name.",
                         .type = ValueType::Number,
                         .isOptional = true});
    }
    return specs;
}

std::map<std::string, double> NamedNumbers::values(const Arguments& arguments, const Schema& columns,
                                                   RunContext& context) const {
    std::map<std::string, double> numbers;
    const bool isByWire =
        std::any_of(texts.begin(), texts.end(), [&](const Text& text) { return arguments.isWired(text.input); });
    for (const std::string& name : isByWire ? std::vector<std::string>() : names) {
        const std::optional<double> number = numberAt(arguments, name);
        if (!number) {
            continue;
        }
        if (columns.find(name)) {
            context.warn("the number at input \"" + name + "\" is not used: the table has a column of that name");
        } else {
            numbers[name] = *number;
        }
    }
    for (const Text& text : texts) {
        checkKnown(text, columns, numbers);
    }
    return numbers;
}

void NamedNumbers::checkKnown(const Text& text, const Schema& columns,
                              const std::map<std::string, double>& numbers) const {
    std::vector<std::string> known;
    for (const ColumnInfo& info : columns.columns()) {
        known.push_back(info.name);
    }
    for (const Node& node : bareNames(text.expression)) {
        if (columns.find(node.text) || numbers.contains(node.text)) {
            continue;
        }
        std::string reason = columns.size() == 0 ? "there is no number \"" + node.text + "\" at an input of that name"
                                                 : "there is no column \"" + node.text + "\"";
        if (contains(fixedNames, node.text)) {
            reason += ", and no number can have the name, which an input of the plug-in has anyway";
        } else if (columns.size() != 0) {
            reason += ", and no number at an input of that name";
        }
        try {
            expression::throwAt(text.expression, node.offset,
                                reason + columnsThere(node.text, known) + suggestion(node.text, known));
        } catch (const Failure& failure) {
            throw Failure(text.input, failure.what());
        }
    }
}

bool isColumnName(const std::string& word) {
    if (word.empty() || !expressionRefusal(word).empty()) {
        return false;
    }
    const std::vector<Node> nodes = expression::parse(word);
    return nodes.size() == 1 && nodes[0].form == expression::Form::Name && !nodes[0].isQuoted && nodes[0].text == word;
}

}  // namespace velmorak
