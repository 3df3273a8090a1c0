#pragma once

#include <array>
#include <cstdint>

namespace velmorak {

/// Philox 4x32 with 10 rounds: random bits as a function of a counter and a key, so that any element of a sequence
/// can be computed without those before it. J. Salmon et al., Parallel random numbers: as easy as 1, 2, 3, SC11 (2011).
struct Philox {
    using Block = std::array<std::uint32_t, 4>;

    static Block at(Block counter, std::uint64_t seed) {
        auto low = static_cast<std::uint32_t>(seed);
        auto high = static_cast<std::uint32_t>(seed >> 32U);
        for (int round = 0; round < 10; ++round) {
            const std::uint64_t first = 0xD2511F53ULL * counter[0];
            const std::uint64_t second = 0xCD9E8D57ULL * counter[2];
            counter = {static_cast<std::uint32_t>(second >> 32U) ^ counter[1] ^ low, static_cast<std::uint32_t>(second),
                       static_cast<std::uint32_t>(first >> 32U) ^ counter[3] ^ high, static_cast<std::uint32_t>(first)};
            low += 0x9E3779B9U;
            high += 0xBB67AE85U;
        }
        return counter;
    }
};

}  // namespace velmorak
