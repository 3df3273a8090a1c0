#include "Values.h"

#include "Json.h"
#include "Say.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <stdexcept>

namespace velmorak {
namespace {

std::string numberRefusal(const InputSpec& spec, const std::string& value) {
    double number = 0.0;
    if (!readNumber(value, number) || std::isnan(number))
        return inQuotes(value) + " is no number";
    if (number < spec.minimum)
        return inQuotes(value) + " is below " + textOf(spec.minimum) + ", the smallest value allowed";
    if (number > spec.maximum)
        return inQuotes(value) + " is above " + textOf(spec.maximum) + ", the largest value allowed";
    if (spec.isInteger && number != std::floor(number))
        return inQuotes(value) + " is no whole number";
    return {};
}

std::string choiceRefusal(const InputSpec& spec, const std::string& value) {
    if (std::ranges::find(spec.choices, value) != spec.choices.end())
        return {};
    std::string all;
    for (const std::string& choice : spec.choices)
        all += (all.empty() ? "" : ", ") + choice;
    return inQuotes(value) + " is none of the choices: " + all;
}

std::string typeRefusal(const InputSpec& spec, const std::string& value) {
    if (value == spec.value)
        return {};
    if (spec.type == ValueType::Number)
        return numberRefusal(spec, value);
    if (spec.type == ValueType::Choice)
        return choiceRefusal(spec, value);
    return {};
}

std::string kindRefusal(const Kind& kind, const InputSpec& spec, const std::string& value) {
    try {
        return withoutFullStop(kind.refusal(spec.name, value));
    } catch (const std::exception& error) {
        return withoutFullStop(error.what());
    }
}

template <typename Spec>
void keepFirstOfEachName(std::vector<Spec>& specs) {
    std::set<std::string> names;
    std::erase_if(specs, [&](const Spec& spec) { return !names.insert(spec.name).second; });
}

}  // namespace

bool takesText(const InputSpec& spec) {
    return spec.type == ValueType::Number || spec.type == ValueType::Text || spec.type == ValueType::Choice;
}

std::string refusalOf(const Kind* kind, const InputSpec& spec, const std::string& value) {
    if (validUtf8(value) != value)
        return "the text is not UTF-8";
    if (kind == nullptr)
        return {};
    if (!takesText(spec))
        return "only a wire can bring a " + std::string(nameOf(spec.type));
    const std::string refusal = typeRefusal(spec, value);
    return refusal.empty() ? kindRefusal(*kind, spec, value) : refusal;
}

Ports portsOf(const Kind& kind, const ValueTexts& values) {
    Ports ports = kind.ports(values);
    keepFirstOfEachName(ports.inputs);
    keepFirstOfEachName(ports.outputs);
    return ports;
}

std::string tryPorts(const Kind& kind, const ValueTexts& values, Ports& ports) {
    try {
        ports = portsOf(kind, values);
        return {};
    } catch (const std::exception& error) {
        return withoutFullStop(error.what());
    }
}

}  // namespace velmorak
