#include "run/parts/Cutting.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace velmorak {
namespace {

using Sizes = std::vector<std::uint64_t>;

std::vector<PassRange> cut(const Sizes& bytes, std::size_t parts, std::uint64_t chunks = 10) {
    return cutPass(bytes, parts, [chunks](std::uint64_t) { return chunks; });
}

TEST(Cutting, givesEachPartWholeFilesOfAboutTheSameSize) {
    const std::vector<PassRange> ranges = cut({10, 10, 10, 10, 30, 10}, 2);
    ASSERT_EQ(ranges.size(), 2U);
    EXPECT_EQ(ranges[0].begin, (ChunkPlace{0, 0}));
    EXPECT_EQ(ranges[0].end, (ChunkPlace{4, 0}));
    EXPECT_EQ(ranges[1].end, (ChunkPlace{6, 0}));
}

TEST(Cutting, countsTheChunksOfLargeFilesOnly) {
    Sizes counted;
    const std::vector<PassRange> ranges = cutPass({10, 100, 10}, 3, [&](std::uint64_t file) {
        counted.push_back(file);
        return std::uint64_t{10};
    });
    EXPECT_EQ(counted, Sizes{1});
    ASSERT_EQ(ranges.size(), 3U);
    EXPECT_EQ(ranges[1].begin, (ChunkPlace{1, 3}));
    EXPECT_EQ(ranges[2].begin, (ChunkPlace{1, 7}));
    EXPECT_EQ(cutPass({1000}, 1, nullptr).size(), 1U) << "one part needs no chunks";
}

TEST(Cutting, makesNoMorePartsThanThereAreChunks) {
    EXPECT_EQ(cut({0}, 100, 3).size(), 3U);
    EXPECT_EQ(cut({0}, 100, 0).size(), 1U) << "a table without rows";
}

TEST(Cutting, leavesOutNothing) {
    std::mt19937_64 random(5);
    const auto below = [&](std::uint64_t limit) { return random() % limit; };
    for (int trial = 0; trial < 2000; ++trial) {
        Sizes bytes(1 + below(20));
        std::generate(bytes.begin(), bytes.end(), [&] { return below(4) == 0 ? 0 : below(1000); });
        const std::size_t parts = 1 + below(30);
        const std::vector<PassRange> ranges = cut(bytes, parts, below(5));
        ASSERT_FALSE(ranges.empty());
        ASSERT_LE(ranges.size(), parts);
        ChunkPlace at{};
        for (const PassRange& range : ranges) {
            ASSERT_EQ(range.begin, at) << trial;
            ASSERT_LT(range.begin, range.end) << trial;
            at = range.end;
        }
        ASSERT_EQ(at, (ChunkPlace{bytes.size(), 0})) << trial;
    }
}

}  // namespace
}  // namespace velmorak
