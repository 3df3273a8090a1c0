#include "Output/plots/axes/PlotTics.h"

#include <gtest/gtest.h>

namespace {

using namespace velmorak;
using Labels = std::vector<std::string>;

Labels labelsOf(const PlotTics& tics) {
    Labels labels;
    for (const PlotTic& tic : tics.tics) {
        if (!tic.label.empty()) {
            labels.push_back(tic.label);
        }
    }
    return labels;
}

PlotTics upright(double low, double high, bool hasIntegersOnly = false) {
    return linearTics({.low = low, .high = high},
                      {.characters = 35.0, .isHorizontal = false, .hasIntegersOnly = hasIntegersOnly});
}

TEST(PlotTics, haveRealMinusSignsAndAsManyDecimalsAsTheyNeed) {
    EXPECT_EQ(labelsOf(upright(-1.0, 1.0)), (Labels{"−1.0", "−0.5", "0.0", "0.5", "1.0"}));
    EXPECT_EQ(labelsOf(upright(0.0, 30.0)), (Labels{"0", "5", "10", "15", "20", "25", "30"}));
    EXPECT_EQ(ticNumber(-0.0, 1, false), "0.0");
    EXPECT_EQ(ticNumber(-0.01, 1, false), "0.0");
}

TEST(PlotTics, separateThousandsOfLargeNumbersOnly) {
    EXPECT_EQ(labelsOf(upright(0.0, 12000.0)),
              (Labels{"0", "2\u2009000", "4\u2009000", "6\u2009000", "8\u2009000", "10\u2009000", "12\u2009000"}));
    EXPECT_EQ(labelsOf(upright(0.0, 2000.0)), (Labels{"0", "500", "1000", "1500", "2000"}));
}

TEST(PlotTics, shareACommonPowerOfTenWhenTheyAreHugeOrTiny) {
    const PlotTics huge = upright(0.0, 3e6);
    EXPECT_EQ(huge.exponent, "10^{6}");
    EXPECT_EQ(labelsOf(huge), (Labels{"0.0", "0.5", "1.0", "1.5", "2.0", "2.5", "3.0"}));
    const PlotTics tiny = upright(0.0, 3e-8);
    EXPECT_EQ(tiny.exponent, "10^{-9}");
    EXPECT_EQ(labelsOf(tiny), (Labels{"0", "5", "10", "15", "20", "25", "30"}));
    EXPECT_EQ(upright(0.0, 0.02).exponent, "");
    EXPECT_EQ(upright(0.0, 1e300).exponent, "10^{300}");
}

TEST(PlotTics, ofCountsLieAtIntegers) {
    EXPECT_EQ(labelsOf(upright(0.0, 2.2)).at(1), "0.5");
    const PlotTics counts = upright(0.0, 2.2, true);
    EXPECT_EQ(labelsOf(counts), (Labels{"0", "1", "2"}));
    EXPECT_EQ(counts.tics.size(), 3U);
}

TEST(PlotTics, ofTwoDecadesHaveLabelsAtOneTwoAndFiveInOneNotation) {
    const TicRoom room{.characters = 35.0, .isHorizontal = false};
    EXPECT_EQ(labelsOf(logTics({.low = 0.9, .high = 30.0}, room)), (Labels{"1", "2", "5", "10", "20"}));
    EXPECT_EQ(labelsOf(logTics({.low = 0.02, .high = 0.6}, room)), (Labels{"0.02", "0.05", "0.1", "0.2", "0.5"}));
    EXPECT_EQ(labelsOf(logTics({.low = 0.5, .high = 2e4}, room)),
              (Labels{"10^{0}", "10^{1}", "10^{2}", "10^{3}", "10^{4}"}));
    EXPECT_EQ(labelsOf(logTics({.low = 0.5, .high = 2e3}, room)), (Labels{"1", "10", "100", "1000"}));
    EXPECT_EQ(labelsOf(logTics({.low = 1.5e-8, .high = 3e-7}, room)),
              (Labels{"2·10^{-8}", "5·10^{-8}", "10^{-7}", "2·10^{-7}"}));
    // Less than a decade: as on a linear axis.
    EXPECT_GE(labelsOf(logTics({.low = 60.0, .high = 120.0}, room)).size(), 3U);
}

TEST(PlotTics, areFewWhateverTheRange) {
    for (const PlotSpan& span :
         {PlotSpan{.low = 1e-300, .high = 1e300}, PlotSpan{.low = 1e300, .high = 1.1e300},
          PlotSpan{.low = 1.0, .high = 1.0 + 1e-12}, PlotSpan{.low = 1e15, .high = 1e15 + 2.0}}) {
        EXPECT_LE(linearTics(span, {}).tics.size(), 200U);
        EXPECT_LE(logTics(span, {}).tics.size(), 700U);
        EXPECT_LE(timeTics(span, {}).tics.size(), 200U);
    }
}

TEST(PlotTics, ofCategoriesAreTiltedWhenTheyNeedTheRoom) {
    const TicRoom room{.characters = 60.0};
    EXPECT_FALSE(categoryTics({"ECAL", "HCAL", "muon"}, room).isTilted);
    const std::vector<std::string> many(20, "forward calorimeter");
    EXPECT_TRUE(categoryTics(many, room).isTilted);
    EXPECT_EQ(categoryTics(many, room).tics.size(), 20U);
    EXPECT_LE(categoryTics(std::vector<std::string>(500, "x"), room).tics.size(), 60U);
}

TEST(PlotTics, ofTimesAreDatesAndHours) {
    const TicRoom room{.characters = 63.0};
    constexpr double april = 1711929600.0;  // 2024-04-01
    EXPECT_EQ(labelsOf(timeTics({.low = april, .high = april + 21600.0}, room)),
              (Labels{"2024-04-01", "01:00", "02:00", "03:00", "04:00", "05:00", "06:00"}));
    const PlotTics noon = timeTics({.low = april + 40000.0, .high = april + 43800.0}, room);
    EXPECT_EQ(noon.titleSuffix, " (2024-04-01, UTC)");
    EXPECT_EQ(labelsOf(noon).front(), "11:10");
    EXPECT_EQ(labelsOf(timeTics({.low = april, .high = april + 30.0 * 86400.0}, room)).front(), "2024-04-01");
    EXPECT_EQ(labelsOf(timeTics({.low = april, .high = april + 400.0 * 86400.0}, room)).at(1), "2024-07");
    EXPECT_EQ(labelsOf(timeTics({.low = 0.0, .high = april}, room)).front(), "1970");
}

}  // namespace
