#pragma once

#include "store/Sha256Blocks.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace velmorak {

/// A SHA-256 sum. Two contents with the same digest are taken as the same.
using Digest = std::array<std::uint8_t, 32>;

/// Sums up bytes by SHA-256 (FIPS 180-4).
class Sha256 {
public:
    void add(const void* bytes, std::size_t count);
    /// Adds a text with its length in front, so that no two sequences of texts give the same bytes.
    void addText(std::string_view text);
    void addNumber(std::uint64_t number);
    /// Nothing may be added afterwards.
    Digest finish();

private:
    void absorb(const std::uint8_t* blocks, std::size_t count);

    DigestState state{0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a, 0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
    std::array<std::uint8_t, digestBlock> pending{};
    std::uint64_t total = 0;  ///< Bytes added so far.
};

/// @return 64 hexadecimal digits.
std::string hexOf(const Digest& digest);

}  // namespace velmorak
