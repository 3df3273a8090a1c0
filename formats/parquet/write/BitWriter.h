#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace velmorak::parquet {

inline void appendVarint(std::string& bytes, std::uint64_t value) {
    for (; value >= 0x80U; value >>= 7U) {
        bytes += static_cast<char>(value | 0x80U);
    }
    bytes += static_cast<char>(value);
}

/// Appends a run of packed numbers, filled up with zeros to a multiple of eight.
/// @param width of a number in bits, at most 32.
template <typename Number>
void appendPacked(std::string& bytes, unsigned width, std::span<const Number> numbers) {
    if (numbers.empty()) {
        return;
    }
    const std::size_t groups = (numbers.size() + 7) / 8;
    appendVarint(bytes, groups << 1U | 1U);
    const std::size_t end = bytes.size() + groups * width;
    std::uint64_t bits = 0;
    unsigned count = 0;
    for (const Number number : numbers) {
        bits |= static_cast<std::uint64_t>(number) << count;
        for (count += width; count >= 8; count -= 8) {
            bytes += static_cast<char>(bits);
            bits >>= 8U;
        }
    }
    if (count > 0) {
        bytes += static_cast<char>(bits);
    }
    bytes.resize(end, '\0');
}

}  // namespace velmorak::parquet
