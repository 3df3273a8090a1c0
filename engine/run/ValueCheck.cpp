#include "run/ValueCheck.h"

#include <velmorak/FormatMeasurement.h>
#include <velmorak/Text.h>

#include <algorithm>
#include <cmath>

namespace velmorak {
namespace {

std::string numberError(const InputSpec& spec, const std::string& value) {
    double number = 0.0;
    const bool isLimited = std::isfinite(spec.minimum) || std::isfinite(spec.maximum) || spec.isInteger;
    if (!readNumber(value, number) || (isLimited && std::isnan(number))) {
        return velmorak::quoted(value) + " is not a number";
    }
    if (number < spec.minimum) {
        return velmorak::quoted(value) + " is below " + formatNumber(spec.minimum) + ", the smallest value allowed";
    }
    if (number > spec.maximum) {
        return velmorak::quoted(value) + " is above " + formatNumber(spec.maximum) + ", the largest value allowed";
    }
    if (spec.isInteger && number != std::floor(number)) {
        return velmorak::quoted(value) + " is not a whole number";
    }
    return {};
}

std::string choiceError(const InputSpec& spec, const std::string& value) {
    if (spec.choices.empty() || std::find(spec.choices.begin(), spec.choices.end(), value) != spec.choices.end()) {
        return {};
    }
    std::string all;
    for (const std::string& choice : spec.choices) {
        all += (all.empty() ? "" : ", ") + choice;
    }
    return velmorak::quoted(value) + " is not one of the choices: " + all;
}

}  // namespace

bool hasTextForm(ValueType type) {
    return type == ValueType::Number || type == ValueType::Text || type == ValueType::Choice;
}

bool takesText(const InputSpec& spec) {
    return hasTextForm(spec.type);
}

std::string typeError(const InputSpec& spec, const std::string& value) {
    if (spec.type == ValueType::Number) {
        return numberError(spec, value);
    }
    return spec.type == ValueType::Choice ? choiceError(spec, value) : "";
}

}  // namespace velmorak
