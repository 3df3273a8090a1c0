#include <root/container/Compression.h>

#include <gtest/gtest.h>
#include <lz4.h>
#include <xxhash.h>
#include <zlib.h>
#include <zstd.h>

#include <numeric>

namespace velmorak::root {
namespace {

using Content = ByteVector;

Content sample() {
    Content bytes(5000);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{0});
    return bytes;
}

Content frame(const char* kind, const Content& packed, std::size_t size) {
    Content bytes{static_cast<std::uint8_t>(kind[0]), static_cast<std::uint8_t>(kind[1]), 0};
    for (const std::size_t number : {packed.size(), size}) {
        for (unsigned byte = 0; byte < 3; ++byte) {
            bytes.push_back(static_cast<std::uint8_t>(number >> 8U * byte));
        }
    }
    bytes.insert(bytes.end(), packed.begin(), packed.end());
    return bytes;
}

Content byZlib(const Content& content) {
    uLongf size = compressBound(content.size());
    Content packed(size);
    compress(packed.data(), &size, content.data(), content.size());
    packed.resize(size);
    return frame("ZL", packed, content.size());
}

Content byZstd(const Content& content) {
    Content packed(ZSTD_compressBound(content.size()));
    packed.resize(ZSTD_compress(packed.data(), packed.size(), content.data(), content.size(), 5));
    return frame("ZS", packed, content.size());
}

Content byLz4(const Content& content) {
    Content packed(static_cast<std::size_t>(LZ4_compressBound(static_cast<int>(content.size()))));
    packed.resize(static_cast<std::size_t>(
        LZ4_compress_default(reinterpret_cast<const char*>(content.data()), reinterpret_cast<char*>(packed.data()),
                             static_cast<int>(content.size()), static_cast<int>(packed.size()))));
    const std::uint64_t checksum = XXH64(packed.data(), packed.size(), 0);
    for (unsigned byte = 0; byte < 8; ++byte) {
        packed.insert(packed.begin(), static_cast<std::uint8_t>(checksum >> 8U * byte));
    }
    return frame("L4", packed, content.size());
}

TEST(Compression, unpacksSeveralFramesOfAnyKindInARow) {
    const Content content = sample();
    Content packed;
    for (const Content& each : {byZlib(content), byZstd(content), byLz4(content)}) {
        packed.insert(packed.end(), each.begin(), each.end());
    }
    const Content all = unpacked(packed, 3 * content.size());
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_TRUE(std::equal(content.begin(), content.end(), all.begin() + static_cast<std::ptrdiff_t>(5000 * i)));
    }
}

TEST(Compression, takesAContentThatIsNotPackedAsItIs) {
    EXPECT_EQ(unpacked(sample(), 5000), sample());
}

TEST(Compression, refusesAFrameWithAnyByteChanged) {
    const Content packed = byLz4(sample());
    for (std::size_t i = 9; i < packed.size(); ++i) {
        Content damaged = packed;
        damaged[i] ^= 1U;
        EXPECT_THROW(unpacked(damaged, 5000), Failure) << i;
    }
}

TEST(Compression, refusesAContentThatEndsEarlyOrCannotBeSoLong) {
    const Content packed = byZlib(sample());
    EXPECT_THROW(unpacked(Bytes(packed).first(packed.size() - 1), 5000), Failure);
    EXPECT_THROW(unpacked(packed, 5001), Failure);
    EXPECT_THROW(unpacked(packed, std::size_t{1} << 40), Failure);
}

}  // namespace
}  // namespace velmorak::root
