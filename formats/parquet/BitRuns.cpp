#include "parquet/BitRuns.h"

#include <algorithm>
#include <array>

namespace velmorak::parquet {
namespace {

constexpr const char* endsEarly = "the values of a page end early";

std::uint8_t takeByte(Bytes& bytes) {
    if (bytes.empty()) {
        throw Failure(endsEarly);
    }
    const std::uint8_t byte = bytes[0];
    bytes = bytes.subspan(1);
    return byte;
}

std::uint64_t takeVarint(Bytes& bytes) {
    constexpr unsigned maxShift = 63;
    std::uint64_t value = 0;
    for (unsigned shift = 0; shift <= maxShift; shift += 7) {
        const std::uint64_t next = takeByte(bytes);
        value |= (next & 0x7FU) << shift;
        if (next < 0x80U) {
            return value;
        }
    }
    throw Failure("a number in a page is too long");
}

Bytes take(Bytes& bytes, std::size_t count) {
    if (count > bytes.size()) {
        throw Failure(endsEarly);
    }
    const Bytes taken = bytes.first(count);
    bytes = bytes.subspan(count);
    return taken;
}

/// One number of up to 64 bits that begins at a bit.
std::uint64_t bitsAt(Bytes packed, std::uint64_t bit, unsigned width) {
    std::uint64_t value = 0;
    for (unsigned done = 0; done < width;) {
        const std::uint64_t at = bit + done;
        const unsigned offset = at & 7U;
        const unsigned count = std::min(8U - offset, width - done);
        const std::uint64_t part = packed[at >> 3U] >> offset & ((1U << count) - 1U);
        value |= part << done;
        done += count;
    }
    return value;
}

/// Adds the differences of one part of a block.
void addDeltas(Bytes packed, unsigned width, std::uint64_t least, std::span<std::int64_t> target, std::uint64_t& last) {
    constexpr unsigned maxFast = 32;
    constexpr std::size_t step = 32;
    if (width > maxFast) {
        for (std::size_t i = 0; i < target.size(); ++i) {
            last += least + bitsAt(packed, i * width, width);
            target[i] = static_cast<std::int64_t>(last);
        }
        return;
    }
    for (std::size_t begin = 0; begin < target.size(); begin += step) {
        std::array<std::uint32_t, step> deltas;
        const std::size_t count = std::min(step, target.size() - begin);
        unpackBits<std::uint32_t>(packed.subspan(begin * width / 8), width, std::span(deltas).first(count));
        for (std::size_t i = 0; i < count; ++i) {
            last += least + deltas[i];
            target[begin + i] = static_cast<std::int64_t>(last);
        }
    }
}

std::uint64_t fromZigzag(std::uint64_t value) {
    return value >> 1U ^ (0 - (value & 1U));
}

/// Header of packed differences.
struct DeltaHeader {
    std::size_t blockValues = 0;
    std::size_t partValues = 0;
    std::size_t parts = 0;
    std::size_t values = 0;
    std::uint64_t first = 0;
};

DeltaHeader takeDeltaHeader(Bytes& bytes) {
    constexpr std::uint64_t maxBlock = 1U << 20U;
    DeltaHeader header;
    const std::uint64_t block = takeVarint(bytes);
    const std::uint64_t parts = takeVarint(bytes);
    header.values = takeVarint(bytes);
    header.first = fromZigzag(takeVarint(bytes));
    if (block == 0 || block > maxBlock || parts == 0 || block % parts != 0 || block / parts % 32 != 0) {
        throw Failure("the blocks of packed differences have impossible sizes");
    }
    header.blockValues = block;
    header.parts = parts;
    header.partValues = block / parts;
    return header;
}

}  // namespace

std::uint32_t BitRuns::varint() {
    const std::uint64_t value = takeVarint(bytes);
    if (value >> 32U != 0 || value <= 1) {
        throw Failure("a run of values in a page is damaged");
    }
    return static_cast<std::uint32_t>(value);
}

std::uint32_t BitRuns::repeated() {
    const Bytes value = take(bytes, (width + 7) / 8);
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < value.size(); ++i) {
        number |= std::uint32_t{value[i]} << 8U * i;
    }
    return number;
}

/// The last run may be cut off after the values that are needed.
Bytes BitRuns::takePacked(std::size_t groups, std::size_t count) {
    const std::size_t needed = (count * width + 7) / 8;
    if (needed > bytes.size()) {
        throw Failure(endsEarly);
    }
    return take(bytes, std::min(groups * width, bytes.size()));
}

std::vector<std::uint8_t> unpackOldLevels(Bytes packed, unsigned width, std::size_t count) {
    if (count * width > packed.size() * 8) {
        throw Failure(endsEarly);
    }
    std::vector<std::uint8_t> levels(count);
    std::size_t bit = 0;
    for (std::uint8_t& level : levels) {
        for (unsigned i = 0; i < width; ++i, ++bit) {
            level = static_cast<std::uint8_t>(static_cast<unsigned>(level) << 1U |
                                              (packed[bit >> 3U] >> (7U - (bit & 7U)) & 1U));
        }
    }
    return levels;
}

std::vector<std::int64_t> readDeltas(Bytes& bytes, std::size_t expected) {
    const DeltaHeader header = takeDeltaHeader(bytes);
    if (header.values < expected) {
        throw Failure(endsEarly);
    }
    std::vector<std::int64_t> values(expected);
    std::uint64_t last = header.first;
    if (expected == 0) {
        return values;
    }
    values[0] = static_cast<std::int64_t>(last);
    for (std::size_t done = 1; done < header.values;) {
        const std::uint64_t least = fromZigzag(takeVarint(bytes));
        const Bytes widths = take(bytes, header.parts);
        for (std::size_t part = 0; part < header.parts && done < header.values; ++part) {
            if (widths[part] > 64) {
                throw Failure("a packed difference has more than 64 bits");
            }
            const std::size_t rest = std::min(header.partValues, header.values - done);
            const std::size_t wanted = done < expected ? std::min(rest, expected - done) : 0;
            const std::size_t needed = (wanted * widths[part] + 7) / 8;
            const Bytes packed = take(bytes, std::min(header.partValues / 8 * widths[part], bytes.size()));
            if (packed.size() < needed) {
                throw Failure(endsEarly);
            }
            addDeltas(packed, widths[part], least, std::span(values).subspan(std::min(done, expected), wanted), last);
            done += header.partValues;
        }
    }
    return values;
}

}  // namespace velmorak::parquet
