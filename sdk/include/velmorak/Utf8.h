#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Texts in UTF-8 (RFC 3629). Well-formed text has no overlong sequences, no surrogates and nothing beyond U+10FFFF.
namespace velmorak {

/// The byte continues a character that an earlier byte began.
constexpr bool isContinuationByte(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

/// Length in bytes of the character that the text begins with.
/// @return 0 where the text begins with no well-formed character, cut ones included, and for an empty text.
std::size_t characterBytes(std::string_view text);

/// As characterBytes, for text that arrives in pieces.
/// @return more than text.size() where the text ends inside a character that more bytes may complete.
std::size_t expectedCharacterBytes(std::string_view text);

/// @param character one well-formed character, and nothing else.
char32_t codePointOf(std::string_view character);

/// @return the number of characters; in text that is not well-formed, the number of bytes that continue none.
std::size_t characterCount(std::string_view text);

/// The whole text is well-formed.
bool isUtf8(std::string_view text);

/// @return the text with each byte outside of well-formed characters converted from ISO-8859-1.
std::string toUtf8(std::string_view text);

/// Writes a character of at most U+10FFFF. @param target has room for 4 bytes.
/// @return the number of bytes.
constexpr std::size_t writeUtf8(char32_t code, char* target) {
    const auto end = [code](unsigned shift) { return static_cast<char>(0x80U | ((code >> shift) & 0x3FU)); };
    if (code < 0x80U) {
        target[0] = static_cast<char>(code);
        return 1;
    }
    if (code < 0x800U) {
        target[0] = static_cast<char>(0xC0U | (code >> 6U));
        target[1] = end(0);
        return 2;
    }
    if (code < 0x10000U) {
        target[0] = static_cast<char>(0xE0U | (code >> 12U));
        target[1] = end(6);
        target[2] = end(0);
        return 3;
    }
    target[0] = static_cast<char>(0xF0U | (code >> 18U));
    target[1] = end(12);
    target[2] = end(6);
    target[3] = end(0);
    return 4;
}

/// As writeUtf8.
inline void appendUtf8(char32_t code, std::string& target) {
    char bytes[4];
    target.append(bytes, writeUtf8(code, bytes));
}

/// Appends one ISO-8859-1 character.
void appendLatin1(char character, std::string& target);

}  // namespace velmorak
