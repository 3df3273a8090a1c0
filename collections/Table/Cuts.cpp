#include "Cuts.h"

#include <velmorak/Text.h>

#include <cstddef>
#include <string_view>

namespace velmorak {

namespace {

/// Splits a text at separators outside of quotes.
std::vector<std::string> splitAt(const std::string& text, const std::string& signs) {
    std::vector<std::string> parts(1);
    char quote = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (quote == 0 && signs.find(c) != std::string::npos) {
            parts.emplace_back();
            continue;
        }
        parts.back() += c;
        if (quote != 0 && c == '\\' && quote != '`' && i + 1 < text.size()) {
            parts.back() += text[++i];
        } else if (quote == 0 && (c == '"' || c == '\'' || c == '`')) {
            quote = c;
        } else if (c == quote || c == '\n') {
            quote = 0;
        }
    }
    return parts;
}

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
    for (const std::string& line : splitAt(text, "\n;")) {
        if (!trimmed(line).empty()) {
            cuts.push_back(cutOf(line));
        }
    }
    return cuts;
}

}  // namespace velmorak
