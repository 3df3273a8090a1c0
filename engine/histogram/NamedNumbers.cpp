#include <velmorak/NamedNumbers.h>

#include <velmorak/Expression.h>
#include <velmorak/Failure.h>
#include <velmorak/Text.h>
#include "expression/MarkedNumbers.h"
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
std::vector<Node> freeNames(const std::string& text) {
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

InputSpec specOf(const std::string& name, bool isAlwaysUsed) {
    const std::string without = isAlwaysUsed ? "" : " Without effect where the table has a column of that name.";
    return {.name = name,
            .description = "Number that \"" + name + "\" stands for, in the unit that the expression needs." + without,
            .type = ValueType::Number,
            .isOptional = true};
}

constexpr const char* nameIsTaken = ", and no number can have the name, which an input of the plug-in has anyway";

std::string noNumber(const std::string& name, bool isFixed) {
    return "there is no number \"" + name + "\"" + (isFixed ? nameIsTaken : " at an input of that name");
}

std::string noColumn(const std::string& name, bool isFixed) {
    return "there is no column \"" + name + "\"" +
           (isFixed ? std::string(nameIsTaken) : " (a number at an input is written @" + name + ")");
}

/// @return the number of an input. A wire provides one or fails; an empty value without a wire means none, and so does
///         an input that the plug-in lacks.
std::optional<double> numberAt(const Arguments& arguments, const std::string& input) {
    if (!arguments.has(input)) {
        return std::nullopt;
    }
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
        for (const Node& node : freeNames(text.expression)) {
            add(node.text);
        }
    }
}

std::string NamedNumbers::inputOf(const std::string& name) {
    return name.starts_with(expression::numberMark) ? name.substr(1) : name;
}

void NamedNumbers::add(const std::string& written) {
    const std::string input = inputOf(written);
    if (contains(fixedNames, input)) {
        return;
    }
    auto name = std::find_if(names.begin(), names.end(), [&](const Name& known) { return known.input == input; });
    if (name == names.end()) {
        name = names.insert(names.end(), {.input = input});
    }
    (written == input ? name->isBare : name->isMarked) = true;
}

std::vector<InputSpec> NamedNumbers::inputs() const {
    ValueTexts all;
    for (const Name& name : names) {
        all[name.input];
    }
    return inputs(all);
}

std::vector<InputSpec> NamedNumbers::inputs(const ValueTexts& given) const {
    std::vector<InputSpec> specs;
    for (const Name& name : names) {
        if (specs.size() < maxNames && (name.isMarked || given.contains(name.input))) {
            specs.push_back(specOf(name.input, name.isMarked && !name.isBare));
        }
    }
    return specs;
}

std::map<std::string, double> NamedNumbers::values(const Arguments& arguments, const Schema& columns,
                                                   RunContext& context) const {
    std::map<std::string, double> numbers;
    const bool isByWire =
        std::any_of(texts.begin(), texts.end(), [&](const Text& text) { return arguments.isWired(text.input); });
    for (const Name& name : isByWire ? std::vector<Name>() : names) {
        const std::optional<double> number = numberAt(arguments, name.input);
        if (!number) {
            continue;
        }
        if (name.isMarked) {
            numbers[expression::numberMark + name.input] = *number;
        }
        if (name.isBare && !columns.find(name.input)) {
            numbers[name.input] = *number;
        } else if (!name.isMarked) {
            context.warn("the number at input \"" + name.input + "\" is not used: the table has a column of that name");
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
    for (const Node& node : freeNames(text.expression)) {
        const bool isMarked = isMarkedNumber(node);
        if ((!isMarked && columns.find(node.text)) || numbers.contains(node.text)) {
            continue;
        }
        const bool isFixed = contains(fixedNames, inputOf(node.text));
        const bool isNumber = isMarked || columns.size() == 0;
        std::string reason = isNumber ? noNumber(inputOf(node.text), isFixed) : noColumn(node.text, isFixed);
        if (!isMarked) {
            reason += columnsThere(node.text, known) + suggestion(node.text, known);
        }
        try {
            expression::throwAt(text.expression, node.offset, reason,
                                isNumber ? Failure::Cause::Other : Failure::Cause::UnknownColumn);
        } catch (const Failure& failure) {
            throw Failure(text.input, failure.what(), failure.cause());
        }
    }
}

bool isColumnName(const std::string& word) {
    if (word.empty() || word.front() == expression::numberMark || !expressionRefusal(word).empty()) {
        return false;
    }
    const std::vector<Node> nodes = expression::parse(word);
    return nodes.size() == 1 && nodes[0].form == expression::Form::Name && !nodes[0].isQuoted && nodes[0].text == word;
}

}  // namespace velmorak
