#include "Table/cuts/Cuts.h"

#include "shared/TextParts.h"

#include <velmorak/Text.h>

#include <cstddef>
#include <string_view>

namespace velmorak {

namespace {

/// A name is the text before the first colon, if it contains no character of a condition.
bool isName(const std::string& text) {
    return !trimmed(text).empty() && text.find_first_of("?<>=&|\"'`(") == std::string::npos;
}

Cut cutOf(const std::string& line) {
    const std::size_t colon = line.find(':');
    if (colon != std::string::npos && isName(line.substr(0, colon))) {
        const std::string_view text = line;
        return {std::string(trimmed(text.substr(0, colon))), std::string(trimmed(text.substr(colon + 1)))};
    }
    const std::string condition(trimmed(line));
    return {condition, condition};
}

}  // namespace

std::vector<Cut> cutsIn(const std::string& text) {
    std::vector<Cut> cuts;
    for (const std::string& line : partsOutsideQuotes(text, "\n;")) {
        if (!trimmed(line).empty()) {
            cuts.push_back(cutOf(line));
        }
    }
    return cuts;
}

}  // namespace velmorak
