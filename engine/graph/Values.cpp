#include "graph/Values.h"

#include "graph/Json.h"
#include "graph/KindCheck.h"
#include "graph/Log.h"

#include "run/NodeError.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <set>
#include <stdexcept>
#include <utility>

namespace velmorak {
namespace {

std::string numberError(const InputSpec& spec, const std::string& value) {
    double number = 0.0;
    if (!readNumber(value, number) || std::isnan(number)) {
        return quote(value) + " is not a number";
    }
    if (number < spec.minimum) {
        return quote(value) + " is below " + textOf(spec.minimum) + ", the smallest value allowed";
    }
    if (number > spec.maximum) {
        return quote(value) + " is above " + textOf(spec.maximum) + ", the largest value allowed";
    }
    if (spec.isInteger && number != std::floor(number)) {
        return quote(value) + " is not a whole number";
    }
    return {};
}

std::string choiceError(const InputSpec& spec, const std::string& value) {
    if (std::ranges::find(spec.choices, value) != spec.choices.end()) {
        return {};
    }
    std::string all;
    for (const std::string& choice : spec.choices) {
        all += (all.empty() ? "" : ", ") + choice;
    }
    return quote(value) + " is not one of the choices: " + all;
}

/// Calls a function of a kind. @return empty, or why it failed, without full stop.
template <typename Work>
std::string failureOf(Work&& work) {
    const std::optional<NodeError> error = errorIn(std::forward<Work>(work));
    return error ? withoutFullStop(error->sentence) : "";
}

std::string kindError(const Kind& kind, const InputSpec& spec, const std::string& value) {
    std::string refusal;
    const std::string failure = failureOf([&] { refusal = withoutFullStop(kind.refusal(spec.name, value)); });
    return failure.empty() ? refusal : failure;
}

template <typename Spec>
void removeDuplicateNames(std::vector<Spec>& specs) {
    std::set<std::string> names;
    std::erase_if(specs, [&](const Spec& spec) { return !names.insert(spec.name).second; });
}

}  // namespace

bool takesText(const InputSpec& spec) {
    return spec.type == ValueType::Number || spec.type == ValueType::Text || spec.type == ValueType::Choice;
}

std::string valueError(const Kind* kind, const InputSpec& spec, const std::string& value) {
    if (validUtf8(value) != value) {
        return "the text is not UTF-8";
    }
    if (!kind) {
        return {};
    }
    if (!takesText(spec)) {
        return "only a wire can supply a " + std::string(nameOf(spec.type));
    }
    const std::string refusal = value == spec.value ? "" : typeError(spec, value);
    return refusal.empty() ? kindError(*kind, spec, value) : refusal;
}

std::string typeError(const InputSpec& spec, const std::string& value) {
    if (spec.type == ValueType::Number) {
        return numberError(spec, value);
    }
    return spec.type == ValueType::Choice ? choiceError(spec, value) : "";
}

Ports portsOf(const Kind& kind, const ValueTexts& values) {
    Ports ports = kind.ports(values);
    if (const std::string reason = portNameError(ports); !reason.empty()) {
        throw std::runtime_error(reason);
    }
    removeDuplicateNames(ports.inputs);
    removeDuplicateNames(ports.outputs);
    return ports;
}

std::string tryPorts(const Kind& kind, const ValueTexts& values, Ports& ports) {
    return failureOf([&] { ports = portsOf(kind, values); });
}

}  // namespace velmorak
