#include "parquet/Codecs.h"

#include <velmorak/Failure.h>

#include <brotli/decode.h>
#include <lz4.h>
#include <snappy.h>
#include <zlib.h>
#include <zstd.h>

namespace velmorak::parquet {
namespace {

using Target = std::span<std::uint8_t>;

bool unpackSnappy(Bytes packed, Target target) {
    const char* bytes = reinterpret_cast<const char*>(packed.data());
    std::size_t size = 0;
    return snappy::GetUncompressedLength(bytes, packed.size(), &size) && size == target.size() &&
           snappy::RawUncompress(bytes, packed.size(), reinterpret_cast<char*>(target.data()));
}

/// One or more members with a header of gzip or zlib.
bool unpackGzip(Bytes packed, Target target) {
    constexpr int anyHeader = 15 + 32;
    z_stream stream{};
    if (inflateInit2(&stream, anyHeader) != Z_OK) {
        return false;
    }
    stream.next_in = const_cast<Bytef*>(packed.data());
    stream.avail_in = static_cast<uInt>(packed.size());
    stream.next_out = target.data();
    stream.avail_out = static_cast<uInt>(target.size());
    int status = inflate(&stream, Z_FINISH);
    while (status == Z_STREAM_END && stream.avail_in > 0 && stream.avail_out > 0 && inflateReset(&stream) == Z_OK) {
        status = inflate(&stream, Z_FINISH);
    }
    const bool isWhole = status == Z_STREAM_END && stream.avail_out == 0;
    inflateEnd(&stream);
    return isWhole;
}

bool unpackLz4Block(Bytes packed, Target target) {
    const int size =
        LZ4_decompress_safe(reinterpret_cast<const char*>(packed.data()), reinterpret_cast<char*>(target.data()),
                            static_cast<int>(packed.size()), static_cast<int>(target.size()));
    return size >= 0 && static_cast<std::size_t>(size) == target.size();
}

std::size_t bigEndianSize(const std::uint8_t* bytes) {
    return std::size_t{bytes[0]} << 24U | std::size_t{bytes[1]} << 16U | std::size_t{bytes[2]} << 8U | bytes[3];
}

/// Blocks, each preceded by its unpacked and its packed size.
bool unpackHadoopLz4(Bytes packed, Target target) {
    constexpr std::size_t sizesBytes = 8;
    while (packed.size() >= sizesBytes) {
        const std::size_t to = bigEndianSize(packed.data());
        const std::size_t from = bigEndianSize(packed.data() + 4);
        packed = packed.subspan(sizesBytes);
        if (from > packed.size() || to > target.size() || !unpackLz4Block(packed.first(from), target.first(to))) {
            return false;
        }
        packed = packed.subspan(from);
        target = target.subspan(to);
    }
    return packed.empty() && target.empty();
}

bool unpackBrotli(Bytes packed, Target target) {
    std::size_t size = target.size();
    return BrotliDecoderDecompress(packed.size(), packed.data(), &size, target.data()) ==
               BROTLI_DECODER_RESULT_SUCCESS &&
           size == target.size();
}

bool unpackZstd(Bytes packed, Target target) {
    return ZSTD_decompress(target.data(), target.size(), packed.data(), packed.size()) == target.size();
}

bool unpackInto(Codec codec, Bytes packed, Target target) {
    switch (codec) {
        case Codec::None:
            if (packed.size() == target.size()) {
                std::copy(packed.begin(), packed.end(), target.begin());
            }
            return packed.size() == target.size();
        case Codec::Snappy:
            return unpackSnappy(packed, target);
        case Codec::Gzip:
            return unpackGzip(packed, target);
        case Codec::Brotli:
            return unpackBrotli(packed, target);
        case Codec::Lz4:
            return unpackHadoopLz4(packed, target) || unpackLz4Block(packed, target);
        case Codec::Zstd:
            return unpackZstd(packed, target);
        case Codec::Lz4Raw:
            return unpackLz4Block(packed, target);
        case Codec::Lzo:
            break;
    }
    throw Failure("it is compressed with LZO, which cannot be read");
}

/// The largest possible ratio; zstd and brotli have none.
bool isPlausible(Codec codec, std::size_t packed, std::size_t size) {
    constexpr std::size_t snappyRatio = 32;
    constexpr std::size_t lz4Ratio = 256;
    constexpr std::size_t gzipRatio = 1100;
    constexpr std::size_t header = 64;
    switch (codec) {
        case Codec::Snappy:
            return size / snappyRatio <= packed + header;
        case Codec::Lz4:
        case Codec::Lz4Raw:
            return size / lz4Ratio <= packed + header;
        case Codec::Gzip:
            return size / gzipRatio <= packed + header;
        default:
            return true;
    }
}

}  // namespace

columnar::Block unpacked(Codec codec, Bytes packed, std::size_t size) {
    if (size == 0) {
        return columnar::Block(0);
    }
    if (!isPlausible(codec, packed.size(), size)) {
        throw Failure("a page cannot have the length that it says");
    }
    columnar::Block block(size);
    if (!unpackInto(codec, packed, {block.data(), size})) {
        throw Failure("the compressed content of a page is damaged");
    }
    return block;
}

}  // namespace velmorak::parquet
