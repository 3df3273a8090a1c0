#include "StoredTables.h"

#include "Table/series/Fourier.h"

#include <velmorak/Points.h>

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <random>

namespace {

using namespace velmorak;
using test::KindHarness;
using test::SmallTable;
using test::tableOf;
using testing::HasSubstr;

using Reals = std::vector<double>;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

/// Samples at times of 0.25 s.
SmallTable sampled(const Reals& values, std::size_t chunkLength = 7) {
    Reals times;
    for (std::size_t i = 0; i < values.size(); ++i) {
        times.push_back(3.0 + 0.25 * static_cast<double>(i));
    }
    SmallTable table = tableOf({{"t", times}, {"x", values}}, chunkLength);
    table.schema = Schema({{.name = "t", .unit = "s"}, {.name = "x", .unit = "V"}});
    return table;
}

/// A line at a sixteenth of the frequency of the samples, and a mean of 5.
Reals line(std::size_t count) {
    Reals values;
    for (std::size_t i = 0; i < count; ++i) {
        values.push_back(5.0 + 2.0 * std::cos(0.125 * std::numbers::pi * static_cast<double>(i)));
    }
    return values;
}

Reals noise(std::size_t count) {
    std::mt19937_64 random(count);
    std::normal_distribution<double> gauss(1.5, 3.0);
    Reals values(count);
    for (double& value : values) {
        value = gauss(random);
    }
    return values;
}

struct Bench : KindHarness {
    Bench() : KindHarness("PowerSpectrum") { set("expression", "x").set("time", "t"); }

    Reals powers() { return test::rowsOf(value("table")).column("power"); }
    Reals frequencies() { return test::rowsOf(value("table")).column("frequency"); }
};

TEST(PowerSpectrumKind, aLineIsAtItsFrequencyWithItsPower) {
    Bench bench;
    bench.wire("table", sampled(line(64))).run();
    ASSERT_EQ(bench.powers().size(), 33U);
    EXPECT_EQ(bench.frequencies()[1], 1.0 / 16.0);
    EXPECT_EQ(bench.number("peak"), 0.25);
    // The mean square of the line is 2, in one step of the frequency.
    EXPECT_NEAR(bench.powers()[4], 2.0 * 16.0, 1e-12);
    EXPECT_NEAR(bench.powers()[0], 0.0, 1e-12);
    EXPECT_NEAR(bench.powers()[5], 0.0, 1e-12);
}

TEST(PowerSpectrumKind, theMeanIsAtFrequencyZeroIfItIsKept) {
    Bench bench;
    bench.set("mean", "keep").wire("table", sampled(line(64))).run();
    EXPECT_NEAR(bench.powers()[0], 25.0 * 16.0, 1e-10);
    EXPECT_EQ(bench.number("peak"), 0.25);
}

TEST(PowerSpectrumKind, theSumOfAllDensitiesIsTheMeanSquare) {
    for (const std::size_t count : {2U, 3U, 64U, 97U, 100U, 1009U}) {
        Bench bench;
        const Reals values = noise(count);
        bench.set("mean", "keep").wire("table", sampled(values)).run();
        double squares = 0.0;
        for (const double value : values) {
            squares += value * value;
        }
        double sum = 0.0;
        for (const double power : bench.powers()) {
            sum += power * bench.frequencies()[1];
        }
        EXPECT_NEAR(sum / (squares / static_cast<double>(count)), 1.0, 1e-12) << count;
        EXPECT_EQ(bench.powers().size(), count / 2 + 1);
    }
}

TEST(PowerSpectrumKind, pointsAndTableAreTheSameWithUnits) {
    Bench bench;
    bench.set("title", "Noise").wire("table", sampled(noise(33))).run();
    const auto points = bench.object<Points>("spectrum");
    EXPECT_EQ(points->title, "Noise");
    EXPECT_EQ(points->axisTitles, (std::vector<std::string>{"frequency [Hz]", "power density [V^{2}/Hz]"}));
    const SmallTable table = test::rowsOf(bench.value("table"));
    EXPECT_EQ(table.schema[0].unit, "Hz");
    EXPECT_EQ(table.schema[1].unit, "V^2/Hz");
    ASSERT_EQ(points->size(), 17U);
    for (std::size_t i = 0; i < points->size(); ++i) {
        EXPECT_EQ(points->measurement(i, 0), (Measurement{bench.frequencies()[i], 0, 0}));
        EXPECT_EQ(points->measurement(i, 1), (Measurement{bench.powers()[i], 0, 0}));
    }
}

TEST(PowerSpectrumKind, aStepTakesThePlaceOfTimes) {
    Bench with;
    with.wire("table", sampled(noise(50))).run();
    Bench without;
    without.set("time", "").set("step", "0.25").wire("table", sampled(noise(50))).run();
    EXPECT_EQ(without.powers(), with.powers());
    EXPECT_EQ(without.object<Points>("spectrum")->axisTitles[0], "frequency");
}

TEST(PowerSpectrumKind, aWindowKeepsALineOutOfDistantFrequencies) {
    Reals between;
    for (std::size_t i = 0; i < 256; ++i) {
        between.push_back(std::cos(2.0 * std::numbers::pi * 20.5 / 256.0 * static_cast<double>(i)));
    }
    Bench plain;
    plain.wire("table", sampled(between)).run();
    Bench windowed;
    windowed.set("window", "Hann").wire("table", sampled(between)).run();
    EXPECT_GT(plain.powers()[60], 1e-5 * plain.powers()[20]);
    EXPECT_LT(windowed.powers()[60], 1e-7 * windowed.powers()[20]);
}

TEST(PowerSpectrumKind, doesNotDependOnTheChunks) {
    Bench few;
    few.wire("table", sampled(noise(300), 300)).run();
    Bench many;
    many.wire("table", sampled(noise(300), 11)).run();
    EXPECT_EQ(few.powers(), many.powers());
}

TEST(PowerSpectrumKind, unevenTimesAreRefused) {
    SmallTable table = tableOf({{"t", {0, 1, 2, 3.5, 4}}, {"x", {1, 2, 3, 4, 5}}}, 2);
    EXPECT_EQ(Bench().wire("table", table).failure(),
              "time: the rows are not evenly spaced: row 4 is at 3.5, where steps of 1 would be at 3; use Resample "
              "before");
    table = tableOf({{"t", {4, 3, 2, 1}}, {"x", {1, 2, 3, 4}}}, 2);
    EXPECT_THAT(Bench().wire("table", table).failure(), HasSubstr("do not rise from 4 to 1; use Sort before"));
    table = tableOf({{"t", {0, 1.004, 1.997, 3}}, {"x", {1, 2, 3, 4}}}, 2);
    EXPECT_EQ(Bench().wire("table", table).failure(), "") << "times may be rounded";
}

TEST(PowerSpectrumKind, whatHasNoSpectrumIsRefused) {
    EXPECT_EQ(Bench().wire("table", sampled({1, 2, nan, 4})).failure(),
              "expression: the value of row 3 is NaN, of which there is no spectrum; fill the gaps before, for example "
              "by Resample with the method interpolate");
    EXPECT_THAT(Bench().wire("table", sampled({1})).failure(), HasSubstr("at least two rows, but there is one"));
    EXPECT_THAT(Bench().wire("table", sampled({})).failure(), HasSubstr("at least two rows, but there is none"));
    Bench bench;
    bench.set("time", "").set("step", "0").wire("table", sampled({1, 2}));
    EXPECT_THAT(bench.failure(), HasSubstr("step: "));
    EXPECT_THAT(Bench().set("expression", "").wire("table", sampled({1, 2})).failure(), HasSubstr("is empty"));
    Bench small;
    small.limitMemory(1000).wire("table", sampled(noise(100)));
    EXPECT_THAT(small.failure(), HasSubstr("VELMORAK_MEMORY_LIMIT"));
}

TEST(FourierTransform, ofAnyLengthIsTheSum) {
    const KindHarness context("PowerSpectrum");
    for (const std::size_t count : {1U, 2U, 3U, 4U, 5U, 8U, 12U, 31U, 64U, 77U}) {
        const Reals values = noise(2 * count);
        std::vector<ComplexNumber> numbers;
        for (std::size_t i = 0; i < count; ++i) {
            numbers.push_back({values[2 * i], values[2 * i + 1]});
        }
        const std::vector<ComplexNumber> made = fourierTransform(numbers, context);
        ASSERT_EQ(made.size(), count);
        for (std::size_t k = 0; k < count; ++k) {
            long double re = 0;
            long double im = 0;
            for (std::size_t j = 0; j < count; ++j) {
                const long double angle =
                    -2 * std::numbers::pi_v<long double> * static_cast<long double>(j * k % count) / count;
                re += numbers[j].re * std::cos(angle) - numbers[j].im * std::sin(angle);
                im += numbers[j].re * std::sin(angle) + numbers[j].im * std::cos(angle);
            }
            EXPECT_NEAR(made[k].re, static_cast<double>(re), 1e-12) << count << ", " << k;
            EXPECT_NEAR(made[k].im, static_cast<double>(im), 1e-12) << count << ", " << k;
        }
    }
}

TEST(FourierTransform, rootsOfUnityAreExactOnTheAxes) {
    EXPECT_EQ(rootOfUnity(0, 12).re, 1.0);
    EXPECT_EQ(rootOfUnity(3, 12).re, 0.0);
    EXPECT_EQ(rootOfUnity(3, 12).im, -1.0);
    EXPECT_EQ(rootOfUnity(6, 12).re, -1.0);
    EXPECT_EQ(rootOfUnity(9, 12).im, 1.0);
    for (std::uint64_t k = 0; k < 37; ++k) {
        const double angle = 2.0 * std::numbers::pi * static_cast<double>(k) / 37.0;
        EXPECT_NEAR(rootOfUnity(k, 37).re, std::cos(angle), 1e-15) << k;
        EXPECT_NEAR(rootOfUnity(k, 37).im, -std::sin(angle), 1e-15) << k;
    }
}

TEST(FourierTransform, endsWhenTheRunIsStopped) {
    KindHarness context("PowerSpectrum");
    context.stop();
    EXPECT_THROW(fourierTransform(std::vector<ComplexNumber>(64), context), Stopped);
}

}  // namespace
