#include "aida/text/AidaText.h"

#include <velmorak/Utf8.h>

#include <array>
#include <charconv>
#include <cmath>

namespace velmorak::io {

namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";

/// Replacement of an ASCII character; empty if it needs none.
std::string_view escapeOf(char c) {
    switch (c) {
        case '&':
            return "&amp;";
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        case '"':
            return "&quot;";
        case '\'':
            return "&apos;";
        case '\t':
            return "&#9;";
        case '\n':
            return "&#10;";
        case '\r':
            return "&#13;";
        default:
            return c >= 0 && c < 0x20 ? replacement : std::string_view();
    }
}

bool isAscii(std::string_view text) {
    for (const char c : text) {
        if (static_cast<unsigned char>(c) >= 0x80) {
            return false;
        }
    }
    return true;
}

void appendValid(std::string_view text, std::string& target) {
    for (std::size_t position = 0; position < text.size(); ++position) {
        const std::string_view next = text.substr(position, 3);
        const std::string_view escape = escapeOf(text[position]);
        if (next == "\xEF\xBF\xBE" || next == "\xEF\xBF\xBF") {
            target += replacement;
            position += 2;
        } else if (escape.empty()) {
            target += text[position];
        } else {
            target += escape;
        }
    }
}

}  // namespace

void appendEscaped(std::string_view text, std::string& target) {
    if (isAscii(text)) {
        appendValid(text, target);
        return;
    }
    appendValid(toUtf8(text), target);
}

std::string escaped(std::string_view text) {
    std::string result;
    appendEscaped(text, result);
    return result;
}

void appendNumber(double number, std::string& target) {
    if (std::isnan(number)) {
        target += "NaN";
    } else if (std::isinf(number)) {
        target += number > 0 ? "Infinity" : "-Infinity";
    } else {
        std::array<char, 32> text{};
        target.append(text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr);
    }
}

}  // namespace velmorak::io
