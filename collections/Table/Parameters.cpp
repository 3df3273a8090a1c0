#include "Parameters.h"

#include <velmorak/Expression.h>

#include <algorithm>

namespace velmorak {

namespace {

std::vector<std::string> wordsOf(const std::string& list) {
    std::vector<std::string> words;
    std::size_t begin = 0;
    while ((begin = list.find_first_not_of(" ,\t\n", begin)) != std::string::npos) {
        const std::size_t end = std::min(list.find_first_of(" ,\t\n", begin), list.size());
        words.push_back(list.substr(begin, end - begin));
        begin = end;
    }
    return words;
}

bool contains(const std::vector<std::string>& words, const std::string& word) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

}  // namespace

bool isColumnName(const std::string& word) {
    try {
        const std::vector<std::string> names = namesIn(word);
        return names.size() == 1 && names.front() == word;
    } catch (const Failure&) {
        return false;
    }
}

std::vector<std::string> parameterNames(const std::string& list, const std::vector<std::string>& taken) {
    std::vector<std::string> names;
    for (const std::string& word : wordsOf(list)) {
        const bool isUsable = isColumnName(word) && !contains(taken, word) && !contains(names, word);
        if (isUsable && names.size() < maxParameters)
            names.push_back(word);
    }
    return names;
}

std::string parameterRefusal(const std::string& list, const std::vector<std::string>& taken) {
    std::vector<std::string> seen;
    for (const std::string& word : wordsOf(list)) {
        if (!isColumnName(word))
            return "\"" + word + "\" cannot be the name of a number in an expression.";
        if (contains(taken, word))
            return "\"" + word + "\" is already the name of an input.";
        if (contains(seen, word))
            return "\"" + word + "\" stands in the list twice.";
        seen.push_back(word);
    }
    if (seen.size() > maxParameters)
        return "There can be at most " + textOf(static_cast<double>(maxParameters)) + " parameters.";
    return {};
}

InputSpec parameterListInput() {
    return {.name = "parameters",
            .description =
                "Names of numbers that the expression may use beside the columns, separated by blanks or "
                "commas. Each becomes an input of that name, which a wire can feed.",
            .type = ValueType::Text};
}

void addParameterInputs(Ports& ports, const ValueTexts& values) {
    const auto list = values.find("parameters");
    if (list == values.end())
        return;
    std::vector<std::string> taken;
    for (const InputSpec& input : ports.inputs)
        taken.push_back(input.name);
    for (const std::string& name : parameterNames(list->second, taken))
        ports.inputs.push_back({.name = name,
                                .description = "Number that \"" + name +
                                               "\" stands for, in the unit that the expression "
                                               "expects.",
                                .value = "0"});
}

std::map<std::string, double> parameterNumbers(const Arguments& arguments, const Schema& schema,
                                               const std::vector<std::string>& taken) {
    if (arguments.isWired("parameters"))
        throw Failure("parameters", "the list decides which inputs there are and cannot come by wire");
    std::map<std::string, double> numbers;
    for (const std::string& name : parameterNames(arguments.text("parameters"), taken)) {
        if (schema.find(name))
            throw Failure("parameters", "\"" + name + "\" is also a column of the table; give the number another name");
        numbers[name] = arguments.number(name);
    }
    return numbers;
}

std::string expressionRefusal(const std::string& text) {
    if (text.empty())
        return {};
    try {
        namesIn(text);
        return {};
    } catch (const Failure& failure) {
        return failure.what();
    }
}

}  // namespace velmorak
