#include "csv/Utf8.h"

#include <algorithm>

namespace velmorak {

namespace {

unsigned byteAt(std::string_view text, std::size_t position) {
    return static_cast<unsigned char>(text[position]);
}

std::size_t lengthBeginningWith(unsigned byte) {
    return byte < 0x80 ? 1 : byte < 0xC2 ? 0 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : byte < 0xF5 ? 4 : 0;
}

/// No sequence is longer than it must be, none is half of a pair, and none is beyond the last character.
bool maySecondFollow(unsigned first, unsigned second) {
    const unsigned low = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
    const unsigned high = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
    return second >= low && second <= high;
}

/// @return bytes of the well-formed sequence at the position; 0 where there is none.
std::size_t sequenceAt(std::string_view text, std::size_t position) {
    const std::size_t length = lengthBeginningWith(byteAt(text, position));
    if (length == 0 || length > text.size() - position) {
        return 0;
    }
    for (std::size_t next = 1; next < length; ++next) {
        const unsigned byte = byteAt(text, position + next);
        if (next == 1 ? !maySecondFollow(byteAt(text, position), byte) : (byte & 0xC0U) != 0x80) {
            return 0;
        }
    }
    return length;
}

}  // namespace

bool isUtf8(std::string_view text) {
    const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
    auto position = static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), isAscii) - text.begin());
    while (position < text.size()) {
        const std::size_t length = sequenceAt(text, position);
        if (length == 0) {
            return false;
        }
        position += length;
    }
    return true;
}

std::string asUtf8(std::string_view text) {
    std::string valid;
    for (std::size_t position = 0; position < text.size();) {
        const std::size_t length = sequenceAt(text, position);
        if (length == 0) {
            const unsigned byte = byteAt(text, position++);
            valid += static_cast<char>(0xC0U | (byte >> 6U));
            valid += static_cast<char>(0x80U | (byte & 0x3FU));
        } else {
            valid.append(text.substr(position, length));
            position += length;
        }
    }
    return valid;
}

}  // namespace velmorak
