#include "run/KindConfig.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace velmorak::test {
namespace {

constexpr const char* cells = "VELMORAK_MOST_CELLS";
constexpr const char* combinations = "VELMORAK_COMBINATIONS";
constexpr const char* date = "SOURCE_DATE_EPOCH";

class KindConfigTest : public testing::Test {
protected:
    KindConfigTest() { unsetAll(); }
    ~KindConfigTest() override { unsetAll(); }

    static void unsetAll() {
        for (const char* const variable : {cells, combinations, date}) {
            unsetenv(variable);
        }
    }

    static KindConfig configWith(const char* variable, const char* setting) {
        unsetAll();
        setenv(variable, setting, 1);
        return kindConfigFromEnvironment();
    }
};

TEST_F(KindConfigTest, hasDefaults) {
    for (const KindConfig& config : {kindConfigFromEnvironment(), configWith(cells, "")}) {
        EXPECT_EQ(config.maxCells, 16777216.0);
        EXPECT_EQ(config.maxCombinations, 10'000'000U);
        EXPECT_FALSE(config.fixedDate);
        EXPECT_EQ(config.warning, "");
    }
}

TEST_F(KindConfigTest, readsEachVariable) {
    EXPECT_EQ(configWith(cells, "1000").maxCells, 1000.0);
    EXPECT_EQ(configWith(combinations, "3").maxCombinations, 3U);
    EXPECT_EQ(configWith(date, "1732291800").fixedDate, 1732291800.0);
}

TEST_F(KindConfigTest, warnsOfWhatItCannotUse) {
    for (const char* const setting : {"many", "0", "-1", "1e", "nan", "inf", "99999999999999999999"}) {
        const KindConfig config = configWith(combinations, setting);
        EXPECT_EQ(config.maxCombinations, 10'000'000U) << setting;
        EXPECT_EQ(config.warning, "VELMORAK_COMBINATIONS=" + std::string(setting) +
                                      " is not a number of combinations, from 1 on; using 10000000");
        EXPECT_EQ(configWith(cells, setting).maxCells, 16777216.0) << setting;
    }
    setenv(date, "today", 1);
    setenv(cells, "few", 1);
    EXPECT_EQ(kindConfigFromEnvironment().warning,
              "VELMORAK_MOST_CELLS=few is not a number of cells; using 16777216; SOURCE_DATE_EPOCH=today is not a "
              "number of seconds since 1970; using the time of writing");
}

}  // namespace
}  // namespace velmorak::test
