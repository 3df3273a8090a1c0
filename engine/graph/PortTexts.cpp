#include "graph/PortTexts.h"

#include "graph/Values.h"

#include <algorithm>
#include <cmath>

namespace velmorak {
namespace {

/// As a user would write it: 1000000, where textOf writes 1e+06.
std::string limitText(double limit) {
    constexpr double maxShown = 1e15;
    const bool isWhole = std::abs(limit) < maxShown && limit == std::floor(limit);
    return isWhole ? std::to_string(static_cast<long long>(limit)) : textOf(limit);
}

std::string numberText(const InputSpec& input) {
    const std::string type = input.isInteger ? "whole number" : "number";
    const bool isBoundedBelow = std::isfinite(input.minimum);
    const bool isBoundedAbove = std::isfinite(input.maximum);
    if (isBoundedBelow && isBoundedAbove) {
        return type + " from " + limitText(input.minimum) + " to " + limitText(input.maximum);
    }
    if (isBoundedBelow) {
        return type + ", at least " + limitText(input.minimum);
    }
    return isBoundedAbove ? type + ", at most " + limitText(input.maximum) : type;
}

std::string choiceText(const InputSpec& input) {
    std::string text;
    for (const std::string& choice : input.choices) {
        text += (text.empty() ? "choice of " : ", ") + choice;
    }
    return text.empty() ? std::string(nameOf(input.type)) : text;
}

bool namesFile(const InputSpec& input, const Ports& ports) {
    return input.type == ValueType::Text && input.name == "file" && std::ranges::all_of(ports.inputs, takesText);
}

std::string typeText(const InputSpec& input, const Ports& ports) {
    if (namesFile(input, ports)) {
        return "file to read";
    }
    if (input.type == ValueType::Number) {
        return numberText(input);
    }
    if (input.type == ValueType::Choice) {
        return choiceText(input);
    }
    const std::string type(nameOf(input.type));
    return takesText(input) ? type : type + ", by wire" + (input.isOptional ? "; may be left open" : "");
}

std::string withType(const std::string& description, const std::string& type) {
    return (description.empty() ? "" : description + '\n') + "Type: " + type;
}

}  // namespace

std::string descriptionOf(const InputSpec& input, const Ports& ports) {
    return withType(input.description, typeText(input, ports));
}

std::string descriptionOf(const OutputSpec& output) {
    return withType(output.description, std::string(nameOf(output.type)));
}

}  // namespace velmorak
