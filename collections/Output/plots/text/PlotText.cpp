#include "Output/plots/text/PlotText.h"

#include <velmorak/FormatMeasurement.h>
#include <velmorak/Utf8.h>
#include <velmorak/Value.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <string_view>

namespace velmorak {

namespace {

/// @return whether XML forbids the character: U+FFFE and U+FFFF.
bool isNoCharacter(const std::string& text, std::size_t at, std::size_t length) {
    return length == 3 && (text.compare(at, 3, "\xEF\xBF\xBE") == 0 || text.compare(at, 3, "\xEF\xBF\xBF") == 0);
}

/// Escapes a character within single quotes. A quote is concatenated by its code: gnuplot misreads a doubled quote at
/// the beginning of a text, and expands macros after one in double quotes.
std::string readable(const std::string& text, std::size_t at, std::size_t length) {
    const auto byte = static_cast<std::uint8_t>(text[at]);
    if (length == 0 || isNoCharacter(text, at, length)) {
        return "?";
    }
    if (byte < 0x20 || byte == 0x7F) {
        return " ";
    }
    // gnuplot copies "]]>" into an SVG unescaped, which is not well-formed XML.
    if (byte == '>' && at >= 2 && text.compare(at - 2, 2, "]]") == 0) {
        return " >";
    }
    return byte == '\'' ? R"('."\047".')" : text.substr(at, length);
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/// @return the length of an exponent such as e+06 at a place; 0 if there is none.
std::size_t exponentLength(const std::string& text, std::size_t at) {
    const bool isBehindNumber = at > 0 && (isDigit(text[at - 1]) || text[at - 1] == ')');
    if (text[at] != 'e' || !isBehindNumber || at + 2 >= text.size() || (text[at + 1] != '+' && text[at + 1] != '-')) {
        return 0;
    }
    std::size_t end = at + 2;
    while (end < text.size() && isDigit(text[end])) {
        ++end;
    }
    return end == at + 2 ? 0 : end - at;
}

/// @param exponent as "e-06".
std::string powerLabel(const std::string& exponent) {
    const std::size_t first = std::min(exponent.find_first_not_of('0', 2), exponent.size() - 1);
    return "×10^{" + std::string(exponent[1] == '-' ? "-" : "") + exponent.substr(first) + "}";
}

}  // namespace

std::string quotedForGnuplot(const std::string& text) {
    std::string quoted = "'";
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t length = characterBytes(std::string_view(text).substr(i));
        quoted += readable(text, i, length);
        i += std::max<std::size_t>(length, 1);
    }
    return quoted + "'";
}

std::string numberLabel(const std::string& text) {
    std::string label;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isSign = text[i] == '-' && i + 1 < text.size() && (isDigit(text[i + 1]) || text[i + 1] == 'I') &&
                            (i == 0 || text[i - 1] == ' ' || text[i - 1] == '(');
        if (const std::size_t length = exponentLength(text, i); length > 0) {
            label += powerLabel(text.substr(i, length));
            i += length - 1;
        } else if (isSign) {
            label += "−";
        } else {
            label += text[i];
        }
    }
    return label;
}

std::string roundedText(double number, int digits) {
    if (!std::isfinite(number)) {
        return textOf(number);
    }
    std::array<char, 32> buffer{};
    const auto end =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, std::chars_format::general, digits);
    return {buffer.data(), end.ptr};
}

std::string roundedOrWhole(double number) {
    return number == std::trunc(number) ? formatNumber(number) : roundedText(number);
}

}  // namespace velmorak
