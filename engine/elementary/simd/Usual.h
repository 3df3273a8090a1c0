#pragma once

#include <cstdint>

namespace velmorak::elementary {

namespace {

/// The value of a function that serves the usual arguments. Masks take fewer instructions than choices.
struct Usual {
    double value;
    std::uint64_t unusual;  ///< All bits, if the value is not that of the arguments; else 0.
};

[[gnu::always_inline]] inline std::uint64_t maskOf(bool isTrue) {
    return -static_cast<std::uint64_t>(isTrue);
}

[[gnu::always_inline]] inline std::uint64_t bitsOf(double x) {
    return __builtin_bit_cast(std::uint64_t, x);
}

[[gnu::always_inline]] inline double numberOf(std::uint64_t bits) {
    return __builtin_bit_cast(double, bits);
}

/// Whether the bits are those of a positive, normal, finite number. The addition makes the others small or negative.
[[gnu::always_inline]] inline bool isPositiveNormal(std::uint64_t bits) {
    return static_cast<std::int64_t>(bits + 0x0010000000000000) >= 0x0020000000000000;
}

}  // namespace

}  // namespace velmorak::elementary
