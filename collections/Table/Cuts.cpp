#include "Cuts.h"

#include <cstddef>

namespace velmorak {

namespace {

std::string trimmed(const std::string& text) {
    const std::size_t begin = text.find_first_not_of(" \t\r");
    return begin == std::string::npos ? std::string() : text.substr(begin, text.find_last_not_of(" \t\r") - begin + 1);
}

/// Cuts a text at the signs that stand outside of quotes.
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

/// A name is anything before the first colon, as long as no sign of a condition stands there.
bool isName(const std::string& text) {
    return !trimmed(text).empty() && text.find_first_of("?<>=&|\"'`(") == std::string::npos;
}

Cut cutOf(const std::string& line) {
    const std::size_t colon = line.find(':');
    if (colon != std::string::npos && isName(line.substr(0, colon))) {
        return {trimmed(line.substr(0, colon)), trimmed(line.substr(colon + 1))};
    }
    return {trimmed(line), trimmed(line)};
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
