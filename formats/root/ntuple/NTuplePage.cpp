#include "root/ntuple/NTuplePage.h"

#include "root/container/Compression.h"

#include <fmt/format.h>
#define XXH_INLINE_ALL
#include <xxhash.h>

#include <cmath>

namespace velmorak::root {
namespace {

constexpr std::uint64_t maxPageElements = std::uint64_t{1} << 31;

std::uint64_t littleEndian(const std::uint8_t* bytes, std::size_t count, std::size_t step) {
    std::uint64_t bits = 0;
    for (std::size_t i = count; i-- > 0;) {
        bits = bits << 8U | bytes[i * step];
    }
    return bits;
}

/// Unpacks contiguous numbers of any bit width, beginning with the lowest bit of each byte.
class BitReader {
public:
    explicit BitReader(Bytes bytes) : bytes(bytes) {}

    std::uint32_t next(unsigned count);

private:
    Bytes bytes;
    std::size_t at = 0;
    std::uint64_t pending = 0;
    unsigned filled = 0;
};

std::uint32_t BitReader::next(unsigned count) {
    while (filled < count) {
        const std::uint64_t byte = at < bytes.size() ? bytes[at] : 0;
        ++at;
        pending |= byte << filled;
        filled += 8;
    }
    const auto bits = static_cast<std::uint32_t>(pending & ((std::uint64_t{1} << count) - 1));
    pending >>= count;
    filled -= count;
    return bits;
}

double halfPrecision(std::uint64_t bits) {
    const auto exponent = static_cast<int>(bits >> 10U & 31U);
    const auto mantissa = static_cast<double>(bits & 1023U);
    double value = 0.0;
    if (exponent == 31) {
        value = mantissa == 0.0 ? INFINITY : NAN;
    } else if (exponent == 0) {
        value = std::ldexp(mantissa, -24);
    } else {
        value = std::ldexp(1024.0 + mantissa, exponent - 25);
    }
    return (bits >> 15U & 1U) != 0 ? -value : value;
}

bool isSplit(int type) {
    return type >= NTupleColumn::SplitInt16 && type <= NTupleColumn::SplitIndex64;
}

/// The type of a split type without its encoding.
int plainType(int type) {
    using Type = NTupleColumn::Type;
    switch (type) {
        case Type::SplitInt16:
            return Type::Int16;
        case Type::SplitUInt16:
            return Type::UInt16;
        case Type::SplitInt32:
            return Type::Int32;
        case Type::SplitUInt32:
            return Type::UInt32;
        case Type::SplitInt64:
            return Type::Int64;
        case Type::SplitUInt64:
            return Type::UInt64;
        case Type::SplitReal16:
            return Type::Real16;
        case Type::SplitReal32:
            return Type::Real32;
        case Type::SplitReal64:
            return Type::Real64;
        case Type::SplitIndex32:
            return Type::Index32;
        case Type::SplitIndex64:
            return Type::Index64;
        default:
            return type;
    }
}

bool isZigzag(int type) {
    return type == NTupleColumn::SplitInt16 || type == NTupleColumn::SplitInt32 || type == NTupleColumn::SplitInt64;
}

bool isDelta(int type) {
    return type == NTupleColumn::SplitIndex32 || type == NTupleColumn::SplitIndex64;
}

double realOf(int plain, std::uint64_t bits) {
    if (plain == NTupleColumn::Real16) {
        return halfPrecision(bits);
    }
    return plain == NTupleColumn::Real32 ? std::bit_cast<float>(static_cast<std::uint32_t>(bits))
                                         : std::bit_cast<double>(bits);
}

std::int64_t integerOf(int plain, std::uint64_t bits) {
    switch (plain) {
        case NTupleColumn::Char:
        case NTupleColumn::Int8:
            return static_cast<std::int8_t>(bits);
        case NTupleColumn::Int16:
            return static_cast<std::int16_t>(bits);
        case NTupleColumn::Int32:
            return static_cast<std::int32_t>(bits);
        default:
            return static_cast<std::int64_t>(bits);
    }
}

void appendBits(const NTupleColumn& column, std::uint64_t count, Bytes bytes, Elements& elements) {
    BitReader reader(bytes);
    const auto steps = static_cast<double>((std::uint64_t{1} << column.bits) - 1);
    for (std::uint64_t i = 0; i < count; ++i) {
        const std::uint32_t bits = reader.next(column.bits);
        if (column.type == NTupleColumn::Bit) {
            std::get<1>(elements).push_back(bits);
        } else if (column.type == NTupleColumn::Real32Trunc) {
            std::get<0>(elements).push_back(
                std::bit_cast<float>(static_cast<std::uint32_t>(std::uint64_t{bits} << (32U - column.bits))));
        } else {
            const double value = column.low + bits * ((column.high - column.low) / steps);
            std::get<0>(elements).push_back(value);
        }
    }
}

void appendNumbers(const NTupleColumn& column, std::uint64_t count, Bytes bytes, Elements& elements) {
    const std::size_t size = column.bits / 8;
    const int plain = plainType(column.type);
    std::uint64_t sum = 0;
    for (std::uint64_t i = 0; i < count; ++i) {
        std::uint64_t bits = isSplit(column.type) ? littleEndian(bytes.data() + i, size, count)
                                                  : littleEndian(bytes.data() + i * size, size, 1);
        if (isZigzag(column.type)) {
            bits = bits >> 1U ^ (0 - (bits & 1U));
        }
        if (isDelta(column.type)) {
            sum += bits;
            bits = sum;
        }
        if (isRealColumn(column.type)) {
            std::get<0>(elements).push_back(realOf(plain, bits));
        } else {
            std::get<1>(elements).push_back(integerOf(plain, bits));
        }
    }
}

}  // namespace

bool isRealColumn(int type) {
    const int plain = plainType(type);
    return (plain >= NTupleColumn::Real16 && plain <= NTupleColumn::Real64) || type == NTupleColumn::Real32Trunc ||
           type == NTupleColumn::Real32Quant;
}

void appendPage(const File& file, const NTupleColumn& column, const NTuplePage& page, Elements& elements) {
    constexpr std::size_t checksumBytes = 8;
    if (column.bits == 0 || column.bits > 64 || page.elements > maxPageElements) {
        throw Failure("the description of a page is damaged");
    }
    const ByteVector bytes = file.bytesAt(page.position, page.bytes + (page.hasChecksum ? checksumBytes : 0));
    if (page.hasChecksum &&
        XXH3_64bits(bytes.data(), page.bytes) != littleEndian(bytes.data() + page.bytes, checksumBytes, 1)) {
        throw Failure(fmt::format("the checksum of a page at byte {} is wrong", page.position));
    }
    const std::uint64_t size = (page.elements * column.bits + 7) / 8;
    const ByteVector content = unpacked(Bytes(bytes).first(page.bytes), size);
    const bool isBitwise = column.type == NTupleColumn::Bit || column.type == NTupleColumn::Real32Trunc ||
                           column.type == NTupleColumn::Real32Quant;
    if (isBitwise && column.bits <= 32) {
        appendBits(column, page.elements, content, elements);
    } else if (column.type < NTupleColumn::Switch || isSplit(column.type)) {
        appendNumbers(column, page.elements, content, elements);
    } else {
        throw Failure("the type of a page cannot be read");
    }
}

}  // namespace velmorak::root
