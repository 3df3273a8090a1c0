#include "graph/KindCheck.h"

#include "graph/Json.h"
#include "graph/Log.h"
#include "graph/Values.h"

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

bool holdsControl(const std::string& text) {
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

bool holdsBlank(const std::string& text) {
    static constexpr std::string_view blanks[] = {" ",      "\u00a0", "\u2002", "\u2003", "\u2007", "\u2009",
                                                  "\u200b", "\u2028", "\u2029", "\u202f", "\u3000", "\ufeff"};
    return std::ranges::any_of(blanks, [&](std::string_view blank) { return text.find(blank) != std::string::npos; });
}

template <typename Spec>
std::string namesObjection(const std::vector<Spec>& specs, const std::string& what) {
    for (const Spec& spec : specs) {
        if (const std::string reason = nameObjection(spec.name); !reason.empty()) {
            return "the name " + shownName(spec.name) + " of an " + what + ' ' + reason;
        }
    }
    return {};
}

template <typename Spec>
std::string doubleObjection(const std::vector<Spec>& specs, const std::string& what) {
    std::set<std::string> names;
    for (const Spec& spec : specs) {
        if (!names.insert(spec.name).second) {
            return "two of its " + what + "s have the name " + quote(spec.name);
        }
    }
    return {};
}

std::string limitsObjection(const InputSpec& input) {
    if (std::isnan(input.minimum) || std::isnan(input.maximum)) {
        return "has a limit that is no number";
    }
    if (input.minimum > input.maximum) {
        return "allows nothing: its lower limit " + textOf(input.minimum) + " is above its upper one " +
               textOf(input.maximum);
    }
    const bool hasLimits = std::isfinite(input.minimum) || std::isfinite(input.maximum) || input.isInteger;
    return hasLimits && input.type != ValueType::Number ? "has limits, and takes no number" : "";
}

std::string choicesObjection(const InputSpec& input) {
    if (input.type != ValueType::Choice) {
        return input.choices.empty() ? "" : "has choices, and is no choice";
    }
    if (input.choices.empty()) {
        return "has nothing to choose from";
    }
    std::set<std::string> seen;
    for (const std::string& choice : input.choices) {
        if (validUtf8(choice) != choice || holdsControl(choice)) {
            return "has the choice " + shownName(choice) + ", which is no text of one line";
        }
        if (!seen.insert(choice).second) {
            return "has the choice " + quote(choice) + " twice";
        }
    }
    return {};
}

std::string defaultObjection(const InputSpec& input) {
    if (!takesText(input)) {
        return input.value.empty() ? "" : "has a value, though only a wire can bring one";
    }
    if (validUtf8(input.value) != input.value) {
        return "begins with a value that is not UTF-8";
    }
    const bool hasNone = input.type == ValueType::Number && input.value.empty();
    const std::string refusal = hasNone ? "" : typeRefusal(input, input.value);
    return refusal.empty() ? "" : "begins with a value that it refuses: " + refusal;
}

std::string inputObjection(const InputSpec& input) {
    for (const auto objection : {limitsObjection, choicesObjection, defaultObjection}) {
        if (const std::string reason = objection(input); !reason.empty()) {
            return "its input " + quote(input.name) + ' ' + reason;
        }
    }
    return {};
}

}  // namespace

std::string shownName(const std::string& name) {
    constexpr std::size_t longest = 120;
    return jsonText(name.size() > longest ? name.substr(0, longest) + "..." : name);
}

std::string groupObjection(const std::string& name) {
    if (name.empty()) {
        return "is empty";
    }
    if (validUtf8(name) != name) {
        return "is not UTF-8";
    }
    return holdsControl(name) ? "has a control character" : "";
}

std::string nameObjection(const std::string& name) {
    const std::string reason = groupObjection(name);
    return reason.empty() && holdsBlank(name) ? "is not one word" : reason;
}

std::string portNameObjection(const Ports& ports) {
    const std::string ofInputs = namesObjection(ports.inputs, "input");
    return ofInputs.empty() ? namesObjection(ports.outputs, "output") : ofInputs;
}

std::string portsObjection(const Ports& ports) {
    for (const std::string& reason :
         {portNameObjection(ports), doubleObjection(ports.inputs, "input"), doubleObjection(ports.outputs, "output")}) {
        if (!reason.empty()) {
            return reason;
        }
    }
    for (const InputSpec& input : ports.inputs) {
        if (const std::string reason = inputObjection(input); !reason.empty()) {
            return reason;
        }
    }
    return {};
}

}  // namespace velmorak
