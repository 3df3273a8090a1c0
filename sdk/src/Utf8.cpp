#include <velmorak/Utf8.h>

#include <algorithm>

namespace velmorak {

namespace {

unsigned byteAt(std::string_view text, std::size_t position) {
    return static_cast<unsigned char>(text[position]);
}

/// @return 0 for a byte that begins no character.
std::size_t bytesBeginningWith(unsigned lead) {
    if (lead < 0x80) {
        return 1;
    }
    if (lead < 0xC2) {
        return 0;
    }
    return lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
}

/// The second byte decides about overlong sequences, surrogates and code points beyond U+10FFFF.
bool isSecondByte(unsigned lead, unsigned second) {
    const unsigned low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const unsigned high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    return second >= low && second <= high;
}

}  // namespace

std::size_t expectedCharacterBytes(std::string_view text) {
    if (text.empty()) {
        return 0;
    }
    const std::size_t count = bytesBeginningWith(byteAt(text, 0));
    const std::size_t present = std::min(count, text.size());
    if (present > 1 && !isSecondByte(byteAt(text, 0), byteAt(text, 1))) {
        return 0;
    }
    for (std::size_t position = 2; position < present; ++position) {
        if (!isContinuationByte(text[position])) {
            return 0;
        }
    }
    return count;
}

std::size_t characterBytes(std::string_view text) {
    const std::size_t count = expectedCharacterBytes(text);
    return count > text.size() ? 0 : count;
}

char32_t codePointOf(std::string_view character) {
    const unsigned lead = byteAt(character, 0);
    if (character.size() == 1) {
        return lead;
    }
    char32_t code = lead & (0x7FU >> character.size());
    for (const char byte : character.substr(1)) {
        code = (code << 6U) | (static_cast<unsigned char>(byte) & 0x3FU);
    }
    return code;
}

std::size_t characterCount(std::string_view text) {
    return text.size() - static_cast<std::size_t>(std::count_if(text.begin(), text.end(), isContinuationByte));
}

bool isUtf8(std::string_view text) {
    const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
    text.remove_prefix(static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), isAscii) - text.begin()));
    while (!text.empty()) {
        const std::size_t count = characterBytes(text);
        if (count == 0) {
            return false;
        }
        text.remove_prefix(count);
    }
    return true;
}

std::string toUtf8(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const std::size_t count = characterBytes(text);
        if (count == 0) {
            appendLatin1(text.front(), result);
        } else {
            result += text.substr(0, count);
        }
        text.remove_prefix(std::max<std::size_t>(count, 1));
    }
    return result;
}

void appendLatin1(char character, std::string& target) {
    appendUtf8(static_cast<unsigned char>(character), target);
}

}  // namespace velmorak
