#include "Markup.h"

#include "run/messages/Visible.h"

std::string markupText(std::string_view text) {
    std::string escaped;
    for (const char character : velmorak::visible(text)) {
        switch (character) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            case '"':
                escaped += "&quot;";
                break;
            default:
                escaped += character;
        }
    }
    return escaped;
}

std::string relativeAddress(std::string_view path) {
    constexpr std::string_view kept = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string address = "./";  // A colon in the name must not look like a protocol.
    for (const char character : path) {
        if (kept.find(character) != std::string_view::npos) {
            address += character;
            continue;
        }
        const auto byte = static_cast<unsigned char>(character);
        address += '%';
        address += digits[byte >> 4U];
        address += digits[byte & 0xFU];
    }
    return address;
}
