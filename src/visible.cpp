#include "visible.h"

#include <glib.h>

#include <array>
#include <charconv>

namespace {

constexpr std::size_t maxLength = 4096;

std::string hexOf(unsigned number) {
    std::array<char, 8> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number, 16).ptr;
    return {digits.data(), end};
}

bool isEscaped(gunichar character) {
    const GUnicodeType type = g_unichar_type(character);
    return type == G_UNICODE_CONTROL || type == G_UNICODE_FORMAT || type == G_UNICODE_LINE_SEPARATOR ||
           type == G_UNICODE_PARAGRAPH_SEPARATOR;
}

std::string escapeOf(gunichar character) {
    return character == '\n' ? "\\n" : "\\u{" + hexOf(character) + '}';
}

}  // namespace

std::string visible(const std::string& text) {
    std::string shown;
    std::size_t at = 0;
    while (at < text.size() && at < maxLength) {
        const gunichar character = g_utf8_get_char_validated(text.data() + at, static_cast<gssize>(text.size() - at));
        const bool isValid = character != 0 && g_unichar_validate(character) != FALSE;
        const auto length = isValid ? static_cast<std::size_t>(g_unichar_to_utf8(character, nullptr)) : 1;
        if (!isValid) {
            shown += "\\x" + hexOf(static_cast<unsigned char>(text[at]));
        } else {
            shown += isEscaped(character) ? escapeOf(character) : text.substr(at, length);
        }
        at += length;
    }
    return at < text.size() ? shown + "..." : shown;
}
