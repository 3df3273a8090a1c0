#include "shared/TextParts.h"

#include <cstddef>

namespace velmorak {

std::vector<std::string> partsOutsideQuotes(const std::string& text, const std::string& signs) {
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

}  // namespace velmorak
