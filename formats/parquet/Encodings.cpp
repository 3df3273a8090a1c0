#include "parquet/Encodings.h"

#include "parquet/BitRuns.h"

#include <fmt/format.h>

#include <algorithm>

namespace velmorak::parquet {
namespace {

constexpr const char* valuesEndEarly = "the values of a page end early";

[[noreturn]] void refuse(Encoding encoding) {
    throw Failure(fmt::format("the encoding {} is not one for values of this type", static_cast<int>(encoding)));
}

void requireBytes(Bytes bytes, std::size_t count, std::size_t width) {
    if (count > bytes.size() / width) {
        throw Failure(valuesEndEarly);
    }
}

template <typename Number>
std::vector<std::uint8_t> narrowed(const std::vector<std::int64_t>& values) {
    std::vector<std::uint8_t> bytes(values.size() * sizeof(Number));
    for (std::size_t i = 0; i < values.size(); ++i) {
        const auto bits = static_cast<std::uint64_t>(values[i]);
        for (std::size_t byte = 0; byte < sizeof(Number); ++byte) {
            bytes[i * sizeof(Number) + byte] = static_cast<std::uint8_t>(bits >> 8U * byte);
        }
    }
    return bytes;
}

/// The first bytes of all values, then the second ones, and so on.
std::vector<std::uint8_t> joinedStreams(Bytes bytes, std::size_t width, std::size_t count) {
    requireBytes(bytes, count, width);
    std::vector<std::uint8_t> values(count * width);
    for (std::size_t byte = 0; byte < width; ++byte) {
        const std::uint8_t* from = bytes.data() + byte * count;
        for (std::size_t i = 0; i < count; ++i) {
            values[i * width + byte] = from[i];
        }
    }
    return values;
}

std::size_t lengthOf(std::int64_t length, std::size_t limit) {
    if (length < 0 || static_cast<std::uint64_t>(length) > limit) {
        throw Failure("the length of a text in a page is impossible");
    }
    return static_cast<std::size_t>(length);
}

std::vector<std::string_view> plainTexts(Bytes bytes, std::size_t count) {
    constexpr std::size_t lengthBytes = 4;
    requireBytes(bytes, count, lengthBytes);
    std::vector<std::string_view> views;
    views.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        requireBytes(bytes, 1, lengthBytes);
        const std::size_t length =
            lengthOf(columnar::littleEndian<std::uint32_t>(bytes.data()), bytes.size() - lengthBytes);
        views.push_back(columnar::textOf(bytes.subspan(lengthBytes, length)));
        bytes = bytes.subspan(lengthBytes + length);
    }
    return views;
}

std::vector<std::string_view> deltaLengthTexts(Bytes bytes, std::size_t count) {
    const std::vector<std::int64_t> lengths = readDeltas(bytes, count);
    std::vector<std::string_view> views;
    views.reserve(count);
    for (const std::int64_t each : lengths) {
        const std::size_t length = lengthOf(each, bytes.size());
        views.push_back(columnar::textOf(bytes.first(length)));
        bytes = bytes.subspan(length);
    }
    return views;
}

/// Each text begins with some characters of the one before.
TextValues deltaTexts(Bytes bytes, std::size_t count) {
    constexpr std::size_t maxBytes = std::size_t{1} << 28U;
    const std::vector<std::int64_t> prefixes = readDeltas(bytes, count);
    const std::vector<std::string_view> rests = deltaLengthTexts(bytes, count);
    TextValues texts;
    std::size_t total = 0;
    std::size_t before = 0;
    for (std::size_t i = 0; i < count; ++i) {
        before = lengthOf(prefixes[i], before) + rests[i].size();
        total += before;
        lengthOf(static_cast<std::int64_t>(total), maxBytes);
    }
    texts.own.reserve(total);
    std::string_view last;
    for (std::size_t i = 0; i < count; ++i) {
        const char* begin = texts.own.data() + texts.own.size();
        const std::string_view prefix = last.substr(0, static_cast<std::size_t>(prefixes[i]));
        texts.own.insert(texts.own.end(), prefix.begin(), prefix.end());
        texts.own.insert(texts.own.end(), rests[i].begin(), rests[i].end());
        last = {begin, prefix.size() + rests[i].size()};
        texts.views.push_back(last);
    }
    return texts;
}

/// Texts of a fixed length, one after the other.
std::vector<std::uint8_t> joinedTexts(const TextValues& texts, std::size_t width) {
    std::vector<std::uint8_t> bytes;
    bytes.reserve(texts.own.size());
    for (const std::string_view text : texts.views) {
        if (text.size() != width) {
            throw Failure("a value does not have the length of its type");
        }
        bytes.insert(bytes.end(), text.begin(), text.end());
    }
    return bytes;
}

std::vector<std::uint8_t> unpackedFixed(Physical type, std::size_t width, Encoding encoding, Bytes bytes,
                                        std::size_t count) {
    const bool isInteger = type == Physical::Int32 || type == Physical::Int64;
    if (encoding == Encoding::ByteStreamSplit && type != Physical::Int96) {
        return joinedStreams(bytes, width, count);
    }
    if (encoding == Encoding::DeltaBinaryPacked && isInteger) {
        const std::vector<std::int64_t> values = readDeltas(bytes, count);
        return type == Physical::Int32 ? narrowed<std::int32_t>(values) : narrowed<std::int64_t>(values);
    }
    if (encoding == Encoding::DeltaByteArray && type == Physical::FixedBytes) {
        return joinedTexts(deltaTexts(bytes, count), width);
    }
    refuse(encoding);
}

}  // namespace

FixedValues decodeFixed(Physical type, std::size_t width, Encoding encoding, Bytes bytes, std::size_t count) {
    if (encoding == Encoding::Plain) {
        requireBytes(bytes, count, width);
        return {bytes.first(count * width), {}};
    }
    FixedValues values{{}, unpackedFixed(type, width, encoding, bytes, count)};
    values.bytes = values.own;
    return values;
}

std::vector<std::uint8_t> decodeBooleans(Encoding encoding, Bytes bytes, std::size_t count) {
    constexpr std::size_t lengthBytes = 4;
    std::vector<std::uint8_t> values(count);
    if (encoding == Encoding::Plain) {
        requireBytes(bytes, (count + 7) / 8, 1);
        unpackBits<std::uint8_t>(bytes, 1, values);
    } else if (encoding == Encoding::Rle) {
        requireBytes(bytes, count > 0 ? 1 : 0, lengthBytes);
        BitRuns(bytes.subspan(std::min(lengthBytes, bytes.size())), 1).read<std::uint8_t>(values);
    } else {
        refuse(encoding);
    }
    return values;
}

TextValues decodeTexts(Encoding encoding, Bytes bytes, std::size_t count) {
    switch (encoding) {
        case Encoding::Plain:
            return {plainTexts(bytes, count), {}};
        case Encoding::DeltaLengthByteArray:
            return {deltaLengthTexts(bytes, count), {}};
        case Encoding::DeltaByteArray:
            return deltaTexts(bytes, count);
        default:
            refuse(encoding);
    }
}

}  // namespace velmorak::parquet
