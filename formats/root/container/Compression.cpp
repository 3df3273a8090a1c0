#include "root/container/Compression.h"

#include <lz4.h>
#include <lzma.h>
#include <xxhash.h>
#include <zlib.h>
#include <zstd.h>

#include <string_view>

namespace velmorak::root {
namespace {

using Target = std::span<std::uint8_t>;

constexpr std::size_t headerSize = 9;
constexpr std::size_t checksumSize = 8;
/// Largest compression ratio of deflate; only zstd and lzma exceed it.
constexpr std::size_t maxRatio = std::size_t{1} << 17;

/// Far more than the largest dictionary that ROOT asks for, 64 MiB.
constexpr std::uint64_t maxLzmaMemory = std::uint64_t{256} << 20U;

bool inflateZlib(Bytes packed, Target target, int windowBits) {
    z_stream stream{};
    if (inflateInit2(&stream, windowBits) != Z_OK) {
        return false;
    }
    stream.next_in = const_cast<Bytef*>(packed.data());
    stream.avail_in = static_cast<uInt>(packed.size());
    stream.next_out = target.data();
    stream.avail_out = static_cast<uInt>(target.size());
    const int status = inflate(&stream, Z_FINISH);
    const bool isWhole = status == Z_STREAM_END && stream.avail_out == 0;
    inflateEnd(&stream);
    return isWhole;
}

bool unpackLzma(Bytes packed, Target target) {
    std::uint64_t memoryLimit = maxLzmaMemory;
    std::size_t in = 0;
    std::size_t out = 0;
    const lzma_ret status = lzma_stream_buffer_decode(&memoryLimit, 0, nullptr, packed.data(), &in, packed.size(),
                                                      target.data(), &out, target.size());
    return status == LZMA_OK && out == target.size();
}

bool unpackLz4(Bytes packed, Target target) {
    if (packed.size() < checksumSize) {
        return false;
    }
    const auto checksum = bigEndian<std::uint64_t>(packed.data());
    const Bytes content = packed.subspan(checksumSize);
    if (XXH64(content.data(), content.size(), 0) != checksum) {
        return false;
    }
    const int size =
        LZ4_decompress_safe(reinterpret_cast<const char*>(content.data()), reinterpret_cast<char*>(target.data()),
                            static_cast<int>(content.size()), static_cast<int>(target.size()));
    return size >= 0 && static_cast<std::size_t>(size) == target.size();
}

bool unpackZstd(Bytes packed, Target target) {
    return ZSTD_decompress(target.data(), target.size(), packed.data(), packed.size()) == target.size();
}

bool unpackFrame(std::string_view kind, Bytes packed, Target target) {
    constexpr int withZlibHeader = 15;
    constexpr int withoutHeader = -15;
    if (kind == "ZL") {
        return inflateZlib(packed, target, withZlibHeader);
    }
    if (kind == "CS") {
        return inflateZlib(packed, target, withoutHeader);
    }
    if (kind == "XZ") {
        return unpackLzma(packed, target);
    }
    if (kind == "L4") {
        return unpackLz4(packed, target);
    }
    if (kind == "ZS") {
        return unpackZstd(packed, target);
    }
    throw Failure("its compression is not supported");
}

/// Sizes are in three bytes, the least significant first.
std::size_t sizeAt(const std::uint8_t* bytes) {
    return bytes[0] | static_cast<std::size_t>(bytes[1]) << 8U | static_cast<std::size_t>(bytes[2]) << 16U;
}

}  // namespace

ByteVector unpacked(Bytes packed, std::size_t size) {
    if (packed.size() == size) {
        return {packed.begin(), packed.end()};
    }
    if (size / maxRatio > packed.size()) {
        throw Failure("its content cannot have the stated length");
    }
    ByteVector content(size);
    std::size_t done = 0;
    while (done < size) {
        if (packed.size() < headerSize) {
            throw Failure("its compressed content ends early");
        }
        const std::string_view kind(reinterpret_cast<const char*>(packed.data()), 2);
        const std::size_t from = sizeAt(packed.data() + 3);
        const std::size_t to = sizeAt(packed.data() + 6);
        if (from > packed.size() - headerSize || to == 0 || to > size - done) {
            throw Failure("its compressed content is damaged");
        }
        if (!unpackFrame(kind, packed.subspan(headerSize, from), Target(content).subspan(done, to))) {
            throw Failure("its compressed content is damaged");
        }
        packed = packed.subspan(headerSize + from);
        done += to;
    }
    return content;
}

}  // namespace velmorak::root
