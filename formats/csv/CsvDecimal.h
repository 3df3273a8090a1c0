#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace velmorak {

/// Up to eight digits at the beginning of eight characters.
struct EightDigits {
    std::uint64_t number = 0;
    std::size_t count = 0;
};

/// @param at eight characters can be read there.
inline EightDigits digitsAt(const char* at) {
    static_assert(std::endian::native == std::endian::little, "the first character of a word is its lowest byte");
    std::uint64_t word = 0;
    std::memcpy(&word, at, sizeof(word));
    word ^= 0x3030303030303030U;
    // The lowest byte that is marked is above 9; those after it may be marked wrongly.
    const std::uint64_t others = ((word + 0x7676767676767676U) | word) & 0x8080808080808080U;
    const auto count = static_cast<std::size_t>(std::countr_zero(others)) / 8;
    if (count == 0) {
        return {};
    }
    word <<= 8 * (8 - count);  // What follows the digits goes, and zeros come before them.
    word = (word * 10) + (word >> 8U);
    word = ((word & 0x00FF00FF00FF00FFU) * 100) + (((word >> 16U) & 0x00FF00FF00FF00FFU));
    word = ((word & 0x0000FFFF0000FFFFU) * 10000) + ((word >> 32U) & 0x0000FFFFU);
    return {word & 0xFFFFFFFFU, count};
}

inline constexpr std::array<std::uint64_t, 9> powersOfTen{1,      10,      100,      1000,     10000,
                                                          100000, 1000000, 10000000, 100000000};
inline constexpr std::array<double, 17> exactPowers{1e0, 1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7, 1e8,
                                                    1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15, 1e16};

/// Reads a number of digits with a decimal point between them, as std::from_chars does, if that needs one division:
/// its digits are exact in a double, and so is the power of ten, so that the quotient is the nearest double.
/// @return the end of the number; null if it has another form or more digits.
inline const char* readShortDecimal(const char* at, const char* end, double& value) {
    constexpr std::ptrdiff_t maxWhole = 10;
    constexpr std::size_t maxDigits = 19;
    constexpr std::uint64_t maxExact = std::uint64_t{1} << 53U;
    const bool isNegative = at != end && *at == '-';
    at += isNegative ? 1 : 0;
    const char* const begin = at;
    std::uint64_t digits = 0;
    while (at != end && *at >= '0' && *at <= '9') {
        digits = 10 * digits + static_cast<std::uint64_t>(*at++ - '0');
        if (at - begin > maxWhole) {
            return nullptr;
        }
    }
    const auto whole = static_cast<std::size_t>(at - begin);
    if (whole == 0 || end - at < 9 || *at != '.') {
        return nullptr;
    }
    std::size_t decimals = 0;
    EightDigits part{0, 8};
    for (++at; part.count == 8 && end - at >= 8; at += part.count) {
        part = digitsAt(at);
        decimals += part.count;
        if (whole + decimals > maxDigits || decimals >= exactPowers.size()) {
            return nullptr;
        }
        digits = digits * powersOfTen[part.count] + part.number;
    }
    if (part.count == 8 || decimals == 0 || digits > maxExact) {
        return nullptr;
    }
    const double size = static_cast<double>(digits) / exactPowers[decimals];
    value = isNegative ? -size : size;
    return at;
}

}  // namespace velmorak
