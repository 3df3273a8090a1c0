#include <Histogram/Moments.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace {

using velmorak::ExactSum;
using velmorak::Moments;

Moments of(const std::vector<double>& x, const std::vector<double>& w = {}) {
    Moments moments;
    moments.fill(x.data(), w.empty() ? nullptr : w.data(), x.size());
    return moments;
}

TEST(Moments, smallNumbersComeOutExact) {
    const Moments moments = of({1, 2, 3, 4});
    EXPECT_EQ(moments.entries(), 4);
    EXPECT_EQ(moments.sum(), 10.0);
    EXPECT_EQ(moments.mean(), 2.5);
    EXPECT_EQ(moments.rms(), std::sqrt(1.25));
    EXPECT_EQ(moments.minimum(), 1.0);
    EXPECT_EQ(moments.maximum(), 4.0);
}

TEST(Moments, aSpreadFarFromZeroIsNotLost) {
    const double far = 1e9;
    const Moments moments = of({far + 4, far + 7, far + 13, far + 16});
    EXPECT_EQ(moments.mean(), far + 10);
    EXPECT_DOUBLE_EQ(moments.rms(), std::sqrt(22.5));
}

TEST(Moments, joiningPartsGivesTheWhole) {
    std::vector<double> x;
    std::vector<double> w;
    Moments joined;
    for (int part = 0; part < 7; ++part) {
        std::vector<double> partX;
        std::vector<double> partW;
        for (int i = 0; i < 100; ++i) {
            partX.push_back(1e6 + std::sin(part * 100 + i) * (part + 1));
            partW.push_back(0.5 + std::cos(i));
        }
        joined.merge(of(partX, partW));
        x.insert(x.end(), partX.begin(), partX.end());
        w.insert(w.end(), partW.begin(), partW.end());
    }
    const Moments whole = of(x, w);
    EXPECT_EQ(joined.entries(), whole.entries());
    EXPECT_NEAR(joined.mean(), whole.mean(), 1e-9);
    EXPECT_NEAR(joined.rms(), whole.rms(), 1e-9);
    EXPECT_EQ(joined.sum(), whole.sum());
}

TEST(Moments, joiningWithNothingChangesNothing) {
    Moments moments = of({2, 4});
    moments.merge(Moments());
    EXPECT_EQ(moments.mean(), 3.0);
    Moments empty;
    empty.merge(of({2, 4}));
    EXPECT_EQ(empty.mean(), 3.0);
    EXPECT_EQ(empty.entries(), 2);
}

TEST(Moments, nothingHasNoMean) {
    const Moments moments;
    EXPECT_EQ(moments.entries(), 0);
    EXPECT_EQ(moments.sum(), 0.0);
    EXPECT_TRUE(std::isnan(moments.mean()));
    EXPECT_TRUE(std::isnan(moments.rms()));
    EXPECT_TRUE(std::isnan(moments.minimum()));
    EXPECT_TRUE(std::isnan(moments.maximum()));
}

TEST(Moments, nanIsCountedAndLeftOut) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const Moments moments = of({1, nan, 3, 5}, {1, 1, 1, nan});
    EXPECT_EQ(moments.entries(), 2);
    EXPECT_EQ(moments.nans(), 2);
    EXPECT_EQ(moments.mean(), 2.0);
    Moments joined = of({nan});
    joined.merge(of({nan, 1}));
    EXPECT_EQ(joined.nans(), 2);
}

TEST(Moments, weightsOfEitherSignMayCancel) {
    const Moments moments = of({1, 2, 5}, {1, -1, 2});
    EXPECT_EQ(moments.sumOfWeights(), 2.0);
    EXPECT_EQ(moments.mean(), 4.5);
    EXPECT_TRUE(std::isnan(of({1, 2}, {1, -1}).mean()));
}

TEST(Moments, anInfiniteValueMakesTheMeanInfinite) {
    const Moments moments = of({1, std::numeric_limits<double>::infinity()});
    EXPECT_EQ(moments.entries(), 2);
    EXPECT_EQ(moments.mean(), std::numeric_limits<double>::infinity());
    EXPECT_TRUE(std::isnan(moments.rms()));
    EXPECT_EQ(moments.minimum(), 1.0);
}

TEST(Moments, equalNumbersHaveNoSpread) {
    EXPECT_EQ(of({0.1, 0.1, 0.1}).rms(), 0.0);
}

TEST(ExactSum, keepsWhatEachAdditionRoundsAway) {
    ExactSum sum;
    for (const double term : {1.0, 1e100, 1.0, -1e100}) {
        sum.add(term);
    }
    EXPECT_EQ(sum.value(), 2.0);
}

}  // namespace
