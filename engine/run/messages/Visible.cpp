#include "run/messages/Visible.h"

#include <fmt/format.h>

#include <algorithm>

namespace velmorak {
namespace {

constexpr std::size_t maxNameLength = 120;

/// One character of a UTF-8 text, or a byte that belongs to none.
struct Character {
    char32_t code = 0;
    std::size_t length = 1;
    bool isValid = false;
};

bool continues(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

Character firstOf(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text.front());
    if (lead < 0x80U) {
        return {lead, 1, true};
    }
    const std::size_t length = lead >= 0xF0U && lead < 0xF5U ? 4 : lead >= 0xE0U ? 3 : lead >= 0xC2U ? 2 : 1;
    if (length == 1 || lead >= 0xF5U || text.size() < length ||
        !std::all_of(text.begin() + 1, text.begin() + static_cast<std::ptrdiff_t>(length), continues)) {
        return {lead, 1, false};
    }
    char32_t code = lead & (0xFFU >> (length + 1));
    for (const char byte : text.substr(1, length - 1)) {
        code = (code << 6U) | (static_cast<unsigned char>(byte) & 0x3FU);
    }
    return {code, length, true};
}

bool isControl(char32_t code) {
    constexpr char32_t del = 0x7F;
    constexpr char32_t lastOfC1 = 0x9F;
    const bool turnsWriting = code == 0x200E || code == 0x200F || (code >= 0x202A && code <= 0x202E) ||
                              (code >= 0x2066 && code <= 0x2069) || code == 0x061C;
    const bool endsLine = code == 0x2028 || code == 0x2029;
    return code < 0x20 || (code >= del && code <= lastOfC1) || turnsWriting || endsLine;
}

std::string writtenOut(const Character& character) {
    switch (character.code) {
        case U'\n':
            return "\\n";
        case U'\r':
            return "\\r";
        case U'\t':
            return "\\t";
        default:
            break;
    }
    const auto code = static_cast<unsigned>(character.code);
    return character.length == 1 ? fmt::format("\\x{:02X}", code) : fmt::format("\\u{:04X}", code);
}

std::string visibleBut(std::string_view text, std::string_view kept) {
    std::string shown;
    shown.reserve(text.size());
    while (!text.empty()) {
        const Character character = firstOf(text);
        const bool isKept = kept.find(text.front()) != std::string_view::npos;
        const bool isPlain = isKept || (character.isValid && !isControl(character.code));
        shown += isPlain ? std::string(text.substr(0, character.length)) : writtenOut(character);
        text.remove_prefix(character.length);
    }
    return shown;
}

}  // namespace

bool hasControlCharacter(std::string_view text) {
    while (!text.empty()) {
        const Character character = firstOf(text);
        if (character.isValid && isControl(character.code)) {
            return true;
        }
        text.remove_prefix(character.length);
    }
    return false;
}

std::string visible(std::string_view text) {
    return visibleBut(text, "");
}

std::string visibleMessage(std::string_view text) {
    std::string shown;
    for (std::size_t end = text.find("\n  "); end != std::string_view::npos; end = text.find("\n  ")) {
        shown += visible(text.substr(0, end)) + "\n";
        text.remove_prefix(end + 1);
    }
    return shown + visible(text);
}

std::string visibleLines(std::string_view text) {
    return visibleBut(text, "\n\t");
}

std::string shortened(const std::string& name) {
    if (name.size() <= maxNameLength) {
        return name;
    }
    std::size_t length = maxNameLength;
    while (length > 0 && continues(name[length])) {
        --length;
    }
    return name.substr(0, length) + "...";
}

}  // namespace velmorak
