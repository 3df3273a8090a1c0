#include "root/write/Packing.h"

#include "root/write/ByteOutput.h"

#include <velmorak/Failure.h>

#include <lz4hc.h>
#include <xxhash.h>
#include <zlib.h>
#include <zstd.h>

namespace velmorak::root {
namespace {

/// A frame has at most 0xFFFFFF bytes, also where compression makes it longer.
constexpr std::size_t maxFrameBytes = 0xFF0000;
constexpr int zlibLevel = 1;
constexpr int lz4Level = 4;
constexpr int zstdLevel = 5;

std::size_t deflateTo(std::string& target, std::string_view content) {
    uLongf size = compressBound(static_cast<uLong>(content.size()));
    target.resize(size);
    const int status =
        compress2(reinterpret_cast<Bytef*>(target.data()), &size, reinterpret_cast<const Bytef*>(content.data()),
                  static_cast<uLong>(content.size()), zlibLevel);
    if (status != Z_OK) {
        throw Failure("compression failed");
    }
    return size;
}

/// Preceded by a checksum.
std::size_t lz4To(std::string& target, std::string_view content) {
    constexpr std::size_t checksumBytes = 8;
    const auto length = static_cast<int>(content.size());
    target.resize(checksumBytes + static_cast<std::size_t>(LZ4_compressBound(length)));
    char* const frame = target.data() + checksumBytes;
    const int size = LZ4_compress_HC(content.data(), frame, length, LZ4_compressBound(length), lz4Level);
    if (size <= 0) {
        throw Failure("compression failed");
    }
    putBigEndian(target.data(), std::uint64_t{XXH64(frame, static_cast<std::size_t>(size), 0)});
    return checksumBytes + static_cast<std::size_t>(size);
}

std::size_t zstdTo(std::string& target, std::string_view content) {
    target.resize(ZSTD_compressBound(content.size()));
    const std::size_t size = ZSTD_compress(target.data(), target.size(), content.data(), content.size(), zstdLevel);
    if (ZSTD_isError(size) != 0) {
        throw Failure("compression failed");
    }
    return size;
}

/// In three bytes, the least significant first.
void appendSize(std::string& target, std::size_t size) {
    for (unsigned byte = 0; byte < 3; ++byte) {
        target.push_back(static_cast<char>(size >> 8U * byte & 0xFFU));
    }
}

/// Two letters, the version of the format, and the sizes precede the content.
void appendFrame(std::string& target, std::string_view content, Packing packing) {
    std::string frame;
    std::size_t size = 0;
    if (packing == Packing::Zlib) {
        size = deflateTo(frame, content);
        target += "ZL\x08";
    } else if (packing == Packing::Lz4) {
        size = lz4To(frame, content);
        target += "L4\x01";
    } else {
        size = zstdTo(frame, content);
        target += "ZS\x01";
    }
    appendSize(target, size);
    appendSize(target, content.size());
    target.append(frame, 0, size);
}

}  // namespace

std::string packed(std::string content, Packing packing) {
    if (packing == Packing::None) {
        return content;
    }
    std::string frames;
    for (std::size_t at = 0; at < content.size() && frames.size() < content.size(); at += maxFrameBytes) {
        appendFrame(frames, std::string_view(content).substr(at, maxFrameBytes), packing);
    }
    return frames.size() < content.size() ? frames : content;
}

int settingOf(Packing packing) {
    switch (packing) {
        case Packing::Zlib:
            return 100 + zlibLevel;
        case Packing::Lz4:
            return 400 + lz4Level;
        case Packing::Zstd:
            return 500 + zstdLevel;
        case Packing::None:
            break;
    }
    return 0;
}

}  // namespace velmorak::root
