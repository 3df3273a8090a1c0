#include <velmorak/Histogram.h>

#include "PlainSums.h"

#include <gtest/gtest.h>

#include <boost/histogram.hpp>
#include <cmath>
#include <limits>
#include <random>
#include <stdexcept>

namespace velmorak {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

struct Sample {
    std::vector<double> values;
    std::vector<double> weights;
};

Sample sample(std::size_t count) {
    std::mt19937_64 random(21);
    std::normal_distribution<double> value(0.0, 1.5);
    std::uniform_real_distribution<double> weight(-0.5, 2.0);
    Sample made;
    for (std::size_t i = 0; i < count; ++i) {
        made.values.push_back(value(random));
        made.weights.push_back(weight(random));
    }
    return made;
}

Histogram1D filled() {
    Histogram1D histogram(Axis(std::vector<double>{-3.0, -1.0, 0.0, 0.25, 2.0}));
    const Sample events = sample(1000);
    histogram.fill(events.values.data(), events.weights.data(), events.values.size());
    histogram.fill(notANumber);
    histogram.name = "mass";
    histogram.title = "a title";
    histogram.setAxisTitle("m [GeV]");
    return histogram;
}

TEST(Histogram, hasTheBinsThatBoostHistogramHas) {
    namespace bh = boost::histogram;
    const Axis axis(40, -3.0, 3.0);
    Histogram1D ours(axis);
    auto theirs = bh::make_weighted_histogram(bh::axis::variable<>(axis.edges()));
    const Sample events = sample(100'000);
    ours.fill(events.values.data(), events.weights.data(), events.values.size());
    for (std::size_t i = 0; i < events.values.size(); ++i) {
        theirs(events.values[i], bh::weight(events.weights[i]));
    }
    for (int cell = -1; cell <= 40; ++cell) {
        const BinSums& sums = ours.cells()[static_cast<std::size_t>(cell + 1)];
        EXPECT_EQ(sums.w, theirs.at(cell).value());
        EXPECT_EQ(sums.ww, theirs.at(cell).variance());
    }
}

TEST(Histogram, keepsTheFiveSumsOfEachBin) {
    Histogram1D histogram(Axis(2, 0.0, 2.0));
    histogram.fill(0.5, 2.0);
    histogram.fill(0.25, -1.0);
    EXPECT_EQ(plain(histogram.bin(0)), (PlainSums{2, 1.0, 5.0, 0.75, 0.4375}));
    EXPECT_EQ(histogram.bin(1), BinSums{});
    EXPECT_EQ(histogram.height(0), 1.0);
    EXPECT_EQ(histogram.error(0), std::sqrt(5.0));
}

TEST(Histogram, countsNotANumberApart) {
    Histogram1D histogram(Axis(1, 0.0, 1.0));
    histogram.fill(notANumber);
    histogram.fill(0.5, notANumber);
    EXPECT_EQ(histogram.nanEntries(), 2);
    EXPECT_EQ(histogram.bin(0), BinSums{});
}

TEST(Histogram, putsInfinitiesOutsideWithoutTheirMoments) {
    Histogram1D histogram(Axis(1, 0.0, 1.0));
    histogram.fill(infinity, 2.0);
    histogram.fill(3.0);
    histogram.fill(-infinity);
    histogram.fill(0.5);
    EXPECT_EQ(plain(histogram.overflow()), (PlainSums{2, 3.0, 5.0, 3.0, 9.0}));
    EXPECT_EQ(plain(histogram.underflow()), (PlainSums{1, 1.0, 1.0, 0.0, 0.0}));
    EXPECT_EQ(histogram.mean(), 0.5);
    EXPECT_EQ(histogram.rms(), 0.0);
}

TEST(Histogram, takesMeanAndSpreadFromTheFillsInRange) {
    Histogram1D histogram(Axis(4, 0.0, 4.0));
    for (const double x : {1.0, 2.0, 3.0, 100.0, -5.0}) {
        histogram.fill(x);
    }
    EXPECT_EQ(histogram.inRange().entries, 3);
    EXPECT_EQ(histogram.mean(), 2.0);
    EXPECT_DOUBLE_EQ(histogram.rms(), std::sqrt(2.0 / 3.0));
}

TEST(Histogram, hasNoMeanWithoutFills) {
    const Histogram1D histogram(Axis(4, 0.0, 4.0));
    EXPECT_TRUE(std::isnan(histogram.mean()));
    EXPECT_TRUE(std::isnan(histogram.rms()));
}

TEST(Histogram, mergesToWhatOneWouldHold) {
    const Axis axis(3, 0.0, 3.0);
    Histogram1D first(axis);
    Histogram1D second(axis);
    Histogram1D both(axis);
    for (const double x : {0.5, 1.5, -1.0, 7.0, notANumber, 2.5}) {
        (x < 2.0 ? first : second).fill(x, 2.0);
        both.fill(x, 2.0);
    }
    first.merge(second);
    EXPECT_EQ(first.cells(), both.cells());
    EXPECT_EQ(first.nanEntries(), 1);
}

TEST(Histogram, doesNotMergeWithAnotherAxis) {
    Histogram1D histogram(Axis(3, 0.0, 3.0));
    EXPECT_THROW(histogram.merge(Histogram1D(Axis(3, 0.0, 4.0))), std::invalid_argument);
}

TEST(Histogram, needsACellForEachBinAndTwoOutside) {
    EXPECT_THROW(Histogram1D(Axis(3, 0.0, 3.0), CellVector<BinSums>(3), 0), std::invalid_argument);
}

TEST(HistogramBytes, readBackToTheSameHistogram) {
    const Histogram1D histogram = filled();
    const Histogram1D back = Histogram1D::fromBytes(histogram.toBytes());
    EXPECT_EQ(back.axis(), histogram.axis());
    EXPECT_EQ(back.cells(), histogram.cells());
    EXPECT_EQ(back.nanEntries(), 1);
    EXPECT_EQ(back.name, "mass");
    EXPECT_EQ(back.title, "a title");
    EXPECT_EQ(back.axis().title, "m [GeV]");
}

TEST(HistogramBytes, areRefusedWhereverTheyAreDamaged) {
    const std::string bytes = filled().toBytes();
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        EXPECT_THROW(Histogram1D::fromBytes(bytes.substr(0, length)), std::invalid_argument) << length;
    }
    for (std::size_t place = 0; place < bytes.size(); ++place) {
        std::string damaged = bytes;
        damaged[place] = static_cast<char>(damaged[place] ^ 0x10);
        EXPECT_THROW(Histogram1D::fromBytes(damaged), std::invalid_argument) << place;
    }
    EXPECT_THROW(Histogram1D::fromBytes(bytes + "x"), std::invalid_argument);
}

}  // namespace
}  // namespace velmorak
