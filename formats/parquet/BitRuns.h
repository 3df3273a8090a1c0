#pragma once

#include "columnar/Bytes.h"

#include <velmorak/Failure.h>

#include <vector>

/// Small numbers packed into bits.
namespace velmorak::parquet {

using columnar::Bytes;

/// Unpacks numbers of so many bits each, the lowest bit first.
/// @param width 0 to 32.
/// @param packed has the bits of all numbers.
template <typename Number>
void unpackBits(Bytes packed, unsigned width, std::span<Number> target) {
    constexpr std::size_t window = sizeof(std::uint64_t);
    const std::uint64_t mask = (std::uint64_t{1} << width) - 1;
    std::uint64_t bit = 0;
    for (Number& number : target) {
        const std::size_t first = bit >> 3U;
        std::uint64_t bits = 0;
        if (first + window <= packed.size()) {
            bits = columnar::littleEndian<std::uint64_t>(packed.data() + first);
        } else {
            for (std::size_t i = first; i < packed.size(); ++i) {
                bits |= std::uint64_t{packed[i]} << 8U * (i - first);
            }
        }
        number = static_cast<Number>(bits >> (bit & 7U) & mask);
        bit += width;
    }
}

/// Reads runs of equal numbers and of packed ones.
class BitRuns {
public:
    /// @param width of the numbers in bits, 0 to 32.
    BitRuns(Bytes bytes, unsigned width) : bytes(bytes), width(width) {}

    /// @throws Failure if there are fewer numbers.
    template <typename Number>
    void read(std::span<Number> target) {
        while (!target.empty()) {
            const std::uint32_t head = varint();
            const std::size_t count = std::min<std::size_t>(target.size(), runLength(head));
            if ((head & 1U) == 0) {
                std::fill_n(target.begin(), count, static_cast<Number>(repeated()));
            } else {
                const Bytes packed = takePacked(head >> 1U, count);
                unpackBits(packed, width, target.first(count));
            }
            target = target.subspan(count);
        }
    }

private:
    static std::size_t runLength(std::uint32_t head) {
        return (head & 1U) == 0 ? head >> 1U : std::size_t{head >> 1U} * 8;
    }
    std::uint32_t varint();
    std::uint32_t repeated();
    Bytes takePacked(std::size_t groups, std::size_t count);

    Bytes bytes;
    unsigned width;
};

/// Numbers packed with the highest bit first, in the layout of old levels.
std::vector<std::uint8_t> unpackOldLevels(Bytes packed, unsigned width, std::size_t count);

/// Differences packed in blocks.
/// @param bytes is left with what follows.
/// @param expected number of values, which may be fewer than the header says.
/// @throws Failure if they are damaged or fewer.
std::vector<std::int64_t> readDeltas(Bytes& bytes, std::size_t expected);

}  // namespace velmorak::parquet
