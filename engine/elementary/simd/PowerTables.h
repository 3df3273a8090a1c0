#pragma once

#include <cstdint>

/// For the power function; scripts/power-tables computes them.
namespace velmorak::elementary {

/// For each interval of x: a number c of few bits, so that c x is near 1, and -log(c) in two parts, of which the first
/// is a multiple of 2^-42.
extern const double inverses[64];
extern const double logarithmHeads[64];
extern const double logarithmRests[64];

/// 2^(j/32), j = 0 ... 31: the bits of the nearest number less j 2^47, and the relative difference from that number.
extern const std::uint64_t rootBits[32];
extern const double rootRests[32];

}  // namespace velmorak::elementary
