#include "PlotText.h"

#include <velmorak/Value.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace velmorak {

namespace {

/// @return true for what no XML file may hold, even in a picture's text: U+FFFE and U+FFFF.
bool isNoCharacter(const std::string& text, std::size_t at, std::size_t length) {
    return length == 3 && (text.compare(at, 3, "\xEF\xBF\xBE") == 0 || text.compare(at, 3, "\xEF\xBF\xBF") == 0);
}

/// What a character becomes in the middle of single quotes. A quote is joined on by its number: gnuplot misreads a
/// doubled one where a text begins with it, and looks for macros in what follows one that stands between double quotes.
std::string readable(const std::string& text, std::size_t at, std::size_t length) {
    const auto byte = static_cast<std::uint8_t>(text[at]);
    if (length == 0 || isNoCharacter(text, at, length)) {
        return "?";
    }
    if (byte < 0x20 || byte == 0x7F) {
        return " ";
    }
    // gnuplot copies "]]>" into an SVG as it stands, which no reader of XML takes.
    if (byte == '>' && at >= 2 && text.compare(at - 2, 2, "]]") == 0) {
        return " >";
    }
    return byte == '\'' ? R"('."\047".')" : text.substr(at, length);
}

}  // namespace

std::size_t utf8LengthAt(const std::string& text, std::size_t at) {
    const auto byte = [&](std::size_t i) { return i < text.size() ? static_cast<std::uint8_t>(text[i]) : 0U; };
    const auto isTail = [&](std::size_t i) { return (byte(i) & 0xC0U) == 0x80U; };
    const std::uint32_t lead = byte(at);
    const std::uint32_t second = byte(at + 1);
    if (lead < 0x80) {
        return 1;
    }
    if (lead >= 0xC2 && lead <= 0xDF) {
        return isTail(at + 1) ? 2 : 0;
    }
    if (lead >= 0xE0 && lead <= 0xEF) {
        const bool isOverlong = lead == 0xE0 && second < 0xA0;
        const bool isSurrogate = lead == 0xED && second > 0x9F;
        return isTail(at + 1) && isTail(at + 2) && !isOverlong && !isSurrogate ? 3 : 0;
    }
    if (lead >= 0xF0 && lead <= 0xF4) {
        const bool isOutside = (lead == 0xF0 && second < 0x90) || (lead == 0xF4 && second > 0x8F);
        return isTail(at + 1) && isTail(at + 2) && isTail(at + 3) && !isOutside ? 4 : 0;
    }
    return 0;
}

std::string quotedForGnuplot(const std::string& text) {
    std::string quoted = "'";
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t length = utf8LengthAt(text, i);
        quoted += readable(text, i, length);
        i += std::max<std::size_t>(length, 1);
    }
    return quoted + "'";
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

std::string withError(double number, double error) {
    constexpr double maxFixed = 1e7;
    constexpr int maxDecimals = 9;
    if (!std::isfinite(number) || !std::isfinite(error) || !(error > 0.0)) {
        return roundedText(number);
    }
    const int decimals = 1 - static_cast<int>(std::floor(std::log10(error)));
    if (decimals > maxDecimals || std::max(std::abs(number), error) > maxFixed) {
        return roundedText(number) + " ± " + roundedText(error);
    }
    const auto fixed = [&](double value) {
        std::array<char, 64> buffer{};
        const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed,
                                       std::max(decimals, 0));
        return std::string(buffer.data(), end.ptr);
    };
    return fixed(number) + " ± " + fixed(error);
}

std::size_t lengthOf(const std::string& text) {
    const auto begins = [](char c) { return (static_cast<std::uint8_t>(c) & 0xC0U) != 0x80U; };
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), begins));
}

}  // namespace velmorak
