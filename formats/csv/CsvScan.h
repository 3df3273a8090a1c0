#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace velmorak {

/// @return the first delimiter or line feed in [at, end), or end.
inline const char* fieldEnd(const char* at, const char* end, char delimiter) {
    static_assert(std::endian::native == std::endian::little, "the first byte of a word is its lowest");
    constexpr std::uint64_t ones = 0x0101010101010101U;
    constexpr std::uint64_t highs = 0x8080808080808080U;
    const std::uint64_t delimiters = ones * static_cast<unsigned char>(delimiter);
    // The lowest byte that is marked is zero; those above it may be marked wrongly.
    const auto zeroBytes = [](std::uint64_t word) { return (word - ones) & ~word & highs; };
    for (; end - at >= 8; at += 8) {
        std::uint64_t word = 0;
        std::memcpy(&word, at, sizeof(word));
        const std::uint64_t found = zeroBytes(word ^ delimiters) | zeroBytes(word ^ (ones * '\n'));
        if (found != 0) {
            return at + static_cast<std::ptrdiff_t>(std::countr_zero(found) / 8);
        }
    }
    while (at < end && *at != delimiter && *at != '\n') {
        ++at;
    }
    return at;
}

/// Whether a line that begins with the character may be anything but a record whose first field is not blank.
inline bool isOddLineStart(char first, const std::string& comment) {
    return first == ' ' || first == '\t' || first == '\r' || first == '\n' ||
           (!comment.empty() && first == comment.front());
}

}  // namespace velmorak
