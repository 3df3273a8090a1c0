#pragma once

#include <algorithm>
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

/// The contents of a block of text.
struct LineBlock {
    std::size_t lineEnds = 0;
    bool isOdd = false;  ///< There is a quote, or a line that begins with a blank, a line end or a comment's character.
};

inline constexpr std::size_t lineBlockBytes = 512;

/// @param at so many bytes and one more can be read there. The first character is not looked at as a line's first.
inline LineBlock lineBlockAt(const char* at, char comment) {
    using Characters = signed char __attribute__((vector_size(16)));
    constexpr std::size_t step = sizeof(Characters);
    static_assert(lineBlockBytes / step < 128, "a lane counts the line ends");
    // Without an early exit. A comparison is -1 where it holds.
    Characters lineEnds{};
    Characters odd{};
    for (std::size_t i = 0; i < lineBlockBytes; i += step) {
        Characters here;
        Characters next;
        std::memcpy(&here, at + i, step);
        std::memcpy(&next, at + i + 1, step);
        const Characters isEnd = here == '\n';
        const Characters isOddStart = (next == ' ') | (next == '\t') | (next == '\r') | (next == '\n') |
                                      (next == static_cast<signed char>(comment));
        lineEnds -= isEnd;
        odd |= (isEnd & isOddStart) | (here == '"');
    }
    LineBlock block;
    bool isOdd = false;
    for (std::size_t i = 0; i < step; ++i) {
        block.lineEnds += static_cast<std::size_t>(lineEnds[i]);
        isOdd = isOdd || odd[i] != 0;
    }
    block.isOdd = isOdd;
    return block;
}

/// @return the end of the last of so many fields, which is a delimiter; or the line feed, or the end, before.
inline const char* endOfFields(const char* at, const char* end, char delimiter, std::size_t count) {
    constexpr std::uint64_t sevens = 0x7F7F7F7F7F7F7F7FU;
    constexpr std::uint64_t ones = 0x0101010101010101U;
    const std::uint64_t delimiters = ones * static_cast<unsigned char>(delimiter);
    const auto zeroBytes = [](std::uint64_t word) { return ~(((word & sevens) + sevens) | word | sevens); };
    for (; end - at >= 8; at += 8) {
        std::uint64_t word = 0;
        std::memcpy(&word, at, sizeof(word));
        const std::uint64_t lineEnds = zeroBytes(word ^ (ones * '\n'));
        std::uint64_t found = zeroBytes(word ^ delimiters);
        // Those before the first line feed.
        found &= lineEnds == 0 ? ~std::uint64_t{0} : (lineEnds & -lineEnds) - 1;
        const std::size_t here = (found >> 7U) * ones >> 56U;
        if (here < count && lineEnds == 0) {
            count -= here;
            continue;
        }
        for (std::size_t i = 1; i < std::min(count, here + 1); ++i) {
            found &= found - 1;
        }
        return at + std::countr_zero(here < count ? lineEnds : found) / 8;
    }
    for (; at < end && *at != '\n'; ++at) {
        count -= *at == delimiter ? 1 : 0;
        if (count == 0) {
            break;
        }
    }
    return at;
}

/// Whether a line that begins with the character may be anything but a record whose first field is not blank.
inline bool isOddLineStart(char first, const std::string& comment) {
    return first == ' ' || first == '\t' || first == '\r' || first == '\n' ||
           (!comment.empty() && first == comment.front());
}

}  // namespace velmorak
