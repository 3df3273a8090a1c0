#include "run/messages/Visible.h"

#include <velmorak/Utf8.h>

#include <fmt/format.h>

namespace velmorak {
namespace {

constexpr std::size_t maxNameLength = 120;

/// One character of a UTF-8 text, or a byte that belongs to none.
struct Character {
    char32_t code = 0;
    std::size_t length = 1;
    bool isValid = false;
};

Character firstOf(std::string_view text) {
    const std::size_t length = characterBytes(text);
    if (length == 0) {
        return {static_cast<unsigned char>(text.front()), 1, false};
    }
    return {codePointOf(text.substr(0, length)), length, true};
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
    while (length > 0 && isContinuationByte(name[length])) {
        --length;
    }
    return name.substr(0, length) + "...";
}

}  // namespace velmorak
