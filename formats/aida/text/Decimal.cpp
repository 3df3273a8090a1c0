#include "aida/text/Decimal.h"

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

namespace velmorak::io {

namespace {

__extension__ using Wide = unsigned __int128;

constexpr int minPower = -27;  ///< 5^27 is the largest power of 5 below 2^64.
constexpr int maxPower = 27;

/// The leading 128 bits of a power of 5, normalised; for negative powers rounded up.
struct PowerOf5 {
    std::uint64_t high = 0;
    std::uint64_t low = 0;
};

constexpr std::uint64_t power5(int exponent) {
    std::uint64_t power = 1;
    for (int i = 0; i < exponent; ++i) {
        power *= 5;
    }
    return power;
}

/// 2^(127 + the bits of the power) / power, truncated, plus 1.
constexpr PowerOf5 reciprocal(std::uint64_t power) {
    const int bits = 64 - std::countl_zero(power - 1);
    Wide rest = 1;
    Wide quotient = 0;
    for (int i = 0; i < 127 + bits; ++i) {
        rest <<= 1;
        quotient <<= 1;
        if (rest >= power) {
            rest -= power;
            quotient |= 1;
        }
    }
    ++quotient;
    return {static_cast<std::uint64_t>(quotient >> 64), static_cast<std::uint64_t>(quotient)};
}

constexpr auto makePowers() {
    std::array<PowerOf5, maxPower - minPower + 1> powers{};
    for (int exponent = minPower; exponent <= maxPower; ++exponent) {
        const std::uint64_t power = power5(exponent < 0 ? -exponent : exponent);
        powers[static_cast<std::size_t>(exponent - minPower)] =
            exponent < 0 ? reciprocal(power) : PowerOf5{power << std::countl_zero(power), 0};
    }
    return powers;
}

constexpr auto powersOf5 = makePowers();

/// digits * 10^exponent, rounded to the nearest double, halves to even. D. Lemire, Number Parsing at a Gigabyte per
/// Second, Software: Practice and Experience 51 (2021); N. Mushtak, D. Lemire, Fast Number Parsing Without Fallback,
/// Software: Practice and Experience 53 (2023), shows that no case needs a fallback. In the range of exponents here no
/// result is subnormal or infinite.
double rounded(std::uint64_t digits, int exponent) {
    if (digits == 0) {
        return 0.0;
    }
    const int zeros = std::countl_zero(digits);
    digits <<= zeros;
    const PowerOf5& power = powersOf5[static_cast<std::size_t>(exponent - minPower)];
    const Wide first = static_cast<Wide>(digits) * power.high;
    auto high = static_cast<std::uint64_t>(first >> 64);
    auto low = static_cast<std::uint64_t>(first);
    // Only if the deciding bits are all set can the rest of the power carry into them.
    if ((high & 0x1FF) == 0x1FF) {
        const auto more = static_cast<std::uint64_t>((static_cast<Wide>(digits) * power.low) >> 64);
        low += more;
        high += low < more ? 1 : 0;
    }
    const int upper = static_cast<int>(high >> 63);
    std::uint64_t mantissa = high >> (upper + 9);
    // log2(10) in 2^-16.
    int binary = ((217706 * exponent) >> 16) + 63 + upper - zeros;
    // Only numbers divisible by such a small power of 5 are exactly halfway; others lie just above.
    if (low <= 1 && exponent >= -4 && exponent <= 23 && (mantissa & 3) == 1 && mantissa << (upper + 9) == high) {
        mantissa &= ~std::uint64_t{1};
    }
    mantissa = (mantissa + (mantissa & 1)) >> 1;
    if (mantissa == std::uint64_t{1} << 53) {
        mantissa >>= 1;
        ++binary;
    }
    const int biased = binary + 1023;
    return std::bit_cast<double>((mantissa & ~(std::uint64_t{1} << 52)) | (static_cast<std::uint64_t>(biased) << 52));
}

constexpr std::uint64_t zerosOf8 = 0x3030303030303030;

std::uint64_t eightBytes(const char* text) {
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, text, sizeof(bytes));
    return bytes;
}

bool areDigits(std::uint64_t bytes) {
    return ((bytes & 0xF0F0F0F0F0F0F0F0) | (((bytes + 0x0606060606060606) & 0xF0F0F0F0F0F0F0F0) >> 4)) ==
           0x3333333333333333;
}

/// Converts eight digits, the first in the lowest byte: pairs, then fours, then all.
std::uint64_t valueOf8(std::uint64_t bytes) {
    bytes -= zerosOf8;
    bytes = bytes * 10 + (bytes >> 8);
    return (((bytes & 0x000000FF000000FF) * 0x000F424000000064) +
            (((bytes >> 16) & 0x000000FF000000FF) * 0x0000271000000001)) >>
           32;
}

const char* scanDigits(const char* text, std::uint64_t& digits) {
    if constexpr (std::endian::native == std::endian::little) {
        for (std::uint64_t bytes = eightBytes(text); areDigits(bytes); bytes = eightBytes(text)) {
            digits = digits * 100'000'000 + valueOf8(bytes);
            text += 8;
        }
    }
    for (; static_cast<unsigned char>(*text - '0') < 10; ++text) {
        digits = digits * 10 + static_cast<unsigned>(*text - '0');
    }
    return text;
}

/// @return null if an 'e' is followed by no number, or by a large one.
const char* scanExponent(const char* text, int& exponent) {
    const bool isNegative = *text == '-';
    if (isNegative || *text == '+') {
        ++text;
    }
    const char* const begin = text;
    int written = 0;
    for (; static_cast<unsigned char>(*text - '0') < 10 && text - begin < 4; ++text) {
        written = written * 10 + (*text - '0');
    }
    if (text == begin || text - begin > 3) {
        return nullptr;
    }
    exponent += isNegative ? -written : written;
    return text;
}

}  // namespace

const char* scanDecimal(const char* text, double& value) {
    constexpr std::ptrdiff_t maxDigits = 19;
    const bool isNegative = *text == '-';
    if (isNegative) {
        ++text;
    }
    std::uint64_t digits = 0;
    int exponent = 0;
    const char* end = scanDigits(text, digits);
    std::ptrdiff_t count = end - text;
    if (*end == '.') {
        const char* const fraction = end + 1;
        end = scanDigits(fraction, digits);
        count += end - fraction;
        exponent = static_cast<int>(fraction - end);
    }
    // Leading zeros are not significant digits.
    for (const char* zero = text; count > maxDigits && (*zero == '0' || *zero == '.'); ++zero) {
        count -= *zero == '0' ? 1 : 0;
    }
    if (count == 0 || count > maxDigits) {
        return nullptr;
    }
    if (*end == 'e' || *end == 'E') {
        end = scanExponent(end + 1, exponent);
    }
    if (!end || ((exponent < minPower || exponent > maxPower) && digits != 0)) {
        return nullptr;
    }
    const double size = digits == 0 ? 0.0 : rounded(digits, exponent);
    value = isNegative ? -size : size;
    return end;
}

}  // namespace velmorak::io
