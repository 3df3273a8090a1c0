#include "columnar/Numbers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <string>
#include <vector>

namespace velmorak::columnar {
namespace {

/// Powers of ten that a double holds exactly.
constexpr std::array<double, 23> powersOfTen = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                                1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

/// Divides the number by ten. @return the remainder.
unsigned divideByTen(std::vector<std::uint8_t>& number) {
    unsigned remainder = 0;
    for (std::uint8_t& byte : number) {
        const unsigned value = remainder << 8U | byte;
        byte = static_cast<std::uint8_t>(value / 10);
        remainder = value % 10;
    }
    return remainder;
}

/// Replaces a number in two's complement with its negative.
void negate(std::vector<std::uint8_t>& number) {
    unsigned carry = 1;
    std::for_each(number.rbegin(), number.rend(), [&carry](std::uint8_t& byte) {
        const unsigned value = (~static_cast<unsigned>(byte) & 0xFFU) + carry;
        byte = static_cast<std::uint8_t>(value);
        carry = value >> 8U;
    });
}

std::string digitsOf(std::vector<std::uint8_t> number) {
    std::string digits;
    while (std::any_of(number.begin(), number.end(), [](std::uint8_t byte) { return byte != 0; })) {
        digits += static_cast<char>('0' + divideByTen(number));
    }
    std::reverse(digits.begin(), digits.end());
    return digits.empty() ? "0" : digits;
}

}  // namespace

double halfValue(std::uint16_t bits) {
    constexpr int fractionBits = 10;
    const int exponent = bits >> fractionBits & 0x1F;
    const int fraction = bits & 0x3FF;
    const double sign = (bits & 0x8000) != 0 ? -1.0 : 1.0;
    if (exponent == 0x1F) {
        return fraction != 0 ? std::nan("") : sign * HUGE_VAL;
    }
    return exponent == 0 ? sign * std::ldexp(fraction, -24)
                         : sign * std::ldexp(fraction + (1 << fractionBits), exponent - 25);
}

double decimalValue(Bytes bytes, int scale) {
    if (bytes.size() <= sizeof(std::int64_t)) {
        std::int64_t unscaled = !bytes.empty() && bytes[0] >= 0x80 ? -1 : 0;
        for (const std::uint8_t byte : bytes) {
            unscaled = static_cast<std::int64_t>(static_cast<std::uint64_t>(unscaled) << 8U | byte);
        }
        return decimalValue(unscaled, scale);
    }
    std::vector<std::uint8_t> number(bytes.begin(), bytes.end());
    const bool isNegative = bytes[0] >= 0x80;
    if (isNegative) {
        negate(number);
    }
    const std::string text = digitsOf(std::move(number)) + "e" + std::to_string(-static_cast<long>(scale));
    double value = 0.0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return isNegative ? -value : value;
}

double decimalValue(std::int64_t unscaled, int scale) {
    constexpr std::int64_t maxExact = std::int64_t{1} << 53U;
    const bool hasPower = scale >= 0 && static_cast<std::size_t>(scale) < powersOfTen.size();
    if (hasPower && unscaled >= -maxExact && unscaled <= maxExact) {
        return static_cast<double>(unscaled) / powersOfTen[static_cast<std::size_t>(scale)];
    }
    const std::string text = std::to_string(unscaled) + "e" + std::to_string(-static_cast<long>(scale));
    double value = 0.0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

}  // namespace velmorak::columnar
