#include "graph/collections/KindCheck.h"

#include "graph/Log.h"
#include "graph/Values.h"
#include "graph/document/Json.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <string_view>
#include <vector>

namespace velmorak {
namespace {

bool isControl(unsigned char byte) {
    return byte < 0x20 || byte == 0x7f;
}

bool hasControlCharacter(const std::string& text) {
    // U+0080 to U+009F are the bytes C2 80 to C2 9F.
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const auto next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : 0);
        if (isControl(byte) || (byte == 0xc2 && next >= 0x80 && next < 0xa0)) {
            return true;
        }
    }
    return false;
}

bool hasBlank(const std::string& text) {
    static constexpr std::string_view blanks[] = {" ",      "\u00a0", "\u2002", "\u2003", "\u2007", "\u2009",
                                                  "\u200b", "\u2028", "\u2029", "\u202f", "\u3000", "\ufeff"};
    return std::ranges::any_of(blanks, [&](std::string_view blank) { return text.find(blank) != std::string::npos; });
}

template <typename Spec>
std::string namesError(const std::vector<Spec>& specs, const std::string& what) {
    for (const Spec& spec : specs) {
        if (const std::string reason = nameError(spec.name); !reason.empty()) {
            std::string sentence = "the name " + quotedName(spec.name);
            return sentence.append(" of an ").append(what).append(" ").append(reason);
        }
    }
    return {};
}

template <typename Spec>
std::string duplicateError(const std::vector<Spec>& specs, const std::string& what) {
    std::set<std::string> names;
    for (const Spec& spec : specs) {
        if (!names.insert(spec.name).second) {
            return "two of its " + what + "s have the name " + quote(spec.name);
        }
    }
    return {};
}

std::string limitsError(const InputSpec& input) {
    if (std::isnan(input.minimum) || std::isnan(input.maximum)) {
        return "has a limit that is not a number";
    }
    if (input.minimum > input.maximum) {
        return "allows no value: its lower limit " + textOf(input.minimum) + " is above its upper one " +
               textOf(input.maximum);
    }
    const bool hasLimits = std::isfinite(input.minimum) || std::isfinite(input.maximum) || input.isInteger;
    return hasLimits && input.type != ValueType::Number ? "has limits, but is not a number" : "";
}

std::string choicesError(const InputSpec& input) {
    if (input.type != ValueType::Choice) {
        return input.choices.empty() ? "" : "has choices, but is not of type choice";
    }
    if (input.choices.empty()) {
        return "has no choices";
    }
    std::set<std::string> seen;
    for (const std::string& choice : input.choices) {
        if (validUtf8(choice) != choice || hasControlCharacter(choice)) {
            return "has the choice " + quotedName(choice) + ", which is not a single line of UTF-8 text";
        }
        if (!seen.insert(choice).second) {
            return "has the choice " + quote(choice) + " twice";
        }
    }
    return {};
}

std::string defaultError(const InputSpec& input) {
    if (!takesText(input)) {
        return input.value.empty() ? "" : "has a default value, though only a wire can supply one";
    }
    if (validUtf8(input.value) != input.value) {
        return "has a default value that is not UTF-8";
    }
    const bool hasNone = input.type == ValueType::Number && input.value.empty();
    const std::string refusal = hasNone ? "" : typeError(input, input.value);
    return refusal.empty() ? "" : "has a default value that it refuses: " + refusal;
}

std::string inputError(const InputSpec& input) {
    for (const auto check : {limitsError, choicesError, defaultError}) {
        if (const std::string reason = check(input); !reason.empty()) {
            return "its input " + quote(input.name) + ' ' + reason;
        }
    }
    return {};
}

}  // namespace

std::string quotedName(const std::string& name) {
    constexpr std::size_t maxLength = 120;
    return jsonText(name.size() > maxLength ? name.substr(0, maxLength) + "..." : name);
}

std::string groupNameError(const std::string& name) {
    if (name.empty()) {
        return "is empty";
    }
    if (validUtf8(name) != name) {
        return "is not UTF-8";
    }
    return hasControlCharacter(name) ? "has a control character" : "";
}

std::string nameError(const std::string& name) {
    const std::string reason = groupNameError(name);
    return reason.empty() && hasBlank(name) ? "is not one word" : reason;
}

std::string portNameError(const Ports& ports) {
    const std::string ofInputs = namesError(ports.inputs, "input");
    return ofInputs.empty() ? namesError(ports.outputs, "output") : ofInputs;
}

std::string portsError(const Ports& ports) {
    for (const std::string& reason :
         {portNameError(ports), duplicateError(ports.inputs, "input"), duplicateError(ports.outputs, "output")}) {
        if (!reason.empty()) {
            return reason;
        }
    }
    for (const InputSpec& input : ports.inputs) {
        if (std::string reason = inputError(input); !reason.empty()) {
            return reason;
        }
    }
    return {};
}

}  // namespace velmorak
