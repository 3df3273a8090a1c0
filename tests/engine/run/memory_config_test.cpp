#include "run/MemoryConfig.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace velmorak::test {
namespace {

class MemoryConfigTest : public testing::Test {
protected:
    ~MemoryConfigTest() override { unsetenv("VELMORAK_MEMORY_LIMIT"); }

    static std::size_t limitFor(const char* setting) {
        setenv("VELMORAK_MEMORY_LIMIT", setting, 1);
        const MemoryConfig config = memoryConfigFromEnvironment();
        EXPECT_EQ(config.warning, "") << setting;
        return config.limitBytes;
    }
};

TEST_F(MemoryConfigTest, isHalfOfTheMemoryWithoutASetting) {
    EXPECT_EQ(limitFor(""), halfOfMemory());
    EXPECT_GE(halfOfMemory(), std::size_t{16} << 20U);
}

TEST_F(MemoryConfigTest, takesUnits) {
    constexpr std::size_t mebibyte = std::size_t{1} << 20U;
    EXPECT_EQ(limitFor("67108864"), 64 * mebibyte);
    EXPECT_EQ(limitFor("64MB"), 64 * mebibyte);
    EXPECT_EQ(limitFor(" 64 MiB "), 64 * mebibyte);
    EXPECT_EQ(limitFor("65536k"), 64 * mebibyte);
    EXPECT_EQ(limitFor("1.5G"), 1536 * mebibyte);
    EXPECT_EQ(limitFor("2 TB"), 2 * mebibyte * mebibyte);
}

TEST_F(MemoryConfigTest, warnsOfWhatIsNoSize) {
    for (const char* const setting : {"much", "64 XB", "-64MB", "1MB", "nan", "1e30 TB", "64MBit"}) {
        setenv("VELMORAK_MEMORY_LIMIT", setting, 1);
        const MemoryConfig config = memoryConfigFromEnvironment();
        EXPECT_EQ(config.limitBytes, halfOfMemory()) << setting;
        EXPECT_EQ(config.warning, "VELMORAK_MEMORY_LIMIT=" + std::string(setting) +
                                      " is not a size of at least 16 MB, such as 500 MB or 4 GB; using half of the "
                                      "machine's memory");
    }
}

}  // namespace
}  // namespace velmorak::test
