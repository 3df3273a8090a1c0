#include "KindHarness.h"

#include <velmorak/Histogram.h>

#include <gmock/gmock.h>

#include <cmath>

namespace {

using namespace velmorak;
using test::KindHarness;
using testing::HasSubstr;

using Reals = std::vector<double>;

std::shared_ptr<Histogram1D> filled(const Reals& heights) {
    auto histogram = std::make_shared<Histogram1D>(Axis(heights.size(), 0.0, static_cast<double>(heights.size())));
    for (std::size_t i = 0; i < heights.size(); ++i) {
        histogram->fill(static_cast<double>(i) + 0.25, heights[i]);
    }
    histogram->title = "Counts";
    return histogram;
}

Reals heightsOf(const Histogram1D& histogram) {
    Reals heights;
    for (std::size_t i = 0; i < histogram.bins(); ++i) {
        heights.push_back(histogram.height(i));
    }
    return heights;
}

struct Bench : KindHarness {
    explicit Bench(const Reals& heights) : KindHarness("Smooth") { wire("histogram", DataObjectPtr(filled(heights))); }

    Reals heights() { return run(), heightsOf(*histogram("histogram")); }
};

TEST(SmoothKind, anAverageIsThatOfTheBinsThatThereAre) {
    Bench bench({3, 6, 9, 0, 0, 12});
    bench.set("bins", "3");
    EXPECT_EQ(bench.heights(), (Reals{4.5, 6, 5, 3, 4, 6}));
    EXPECT_EQ(bench.histogram("histogram")->title, "Counts");
    EXPECT_EQ(bench.histogram("histogram")->axis(), filled({3, 6, 9, 0, 0, 12})->axis());
}

TEST(SmoothKind, errorsAddUpWithTheSquaresOfTheWeights) {
    Bench bench({3, 6, 9});
    bench.set("bins", "3").run();
    EXPECT_DOUBLE_EQ(bench.histogram("histogram")->error(1), std::sqrt(9.0 + 36.0 + 81.0) / 3.0);
    EXPECT_EQ(bench.histogram("histogram")->bin(1).entries, 1);
    EXPECT_EQ(bench.histogram("histogram")->bin(1).mean(0), 1.5) << "at the centre";
}

TEST(SmoothKind, aGaussianKernelKeepsAConstantAndTheSumInTheMiddle) {
    Bench constant(Reals(9, 4.0));
    constant.set("method", "gaussian").set("sigma", "1.5");
    for (const double height : constant.heights()) {
        EXPECT_DOUBLE_EQ(height, 4.0);
    }
    Reals line(41, 0.0);
    line[20] = 1.0;
    Bench bench(line);
    bench.set("method", "gaussian").set("sigma", "2");
    const Reals heights = bench.heights();
    double sum = 0.0;
    for (const double height : heights) {
        sum += height;
    }
    EXPECT_NEAR(sum, 1.0, 1e-12);
    EXPECT_NEAR(heights[22] / heights[20], std::exp(-0.5), 1e-12);
    EXPECT_EQ(heights[11], 0.0) << "beyond four standard deviations";
}

TEST(SmoothKind, aPolynomialOfItsDegreeStaysAsItIsUpToTheEnds) {
    Reals cubic;
    for (int i = 0; i < 12; ++i) {
        cubic.push_back(1.0 + i * (0.5 - i * (0.25 - 0.125 * i)));
    }
    Bench bench(cubic);
    bench.set("method", "savitzky-golay").set("bins", "7").set("degree", "3");
    const Reals heights = bench.heights();
    for (std::size_t i = 0; i < cubic.size(); ++i) {
        EXPECT_NEAR(heights[i], cubic[i], 1e-11) << i;
    }
}

TEST(SmoothKind, theWeightsAreThoseOfTheLiterature) {
    // A. Savitzky, M. J. E. Golay, Anal. Chem. 36 (1964) 1627, table I, for five points.
    Bench bench({0, 0, 0, 35, 0, 0, 0});
    bench.set("method", "savitzky-golay").set("bins", "5").set("degree", "2");
    const Reals heights = bench.heights();
    EXPECT_NEAR(heights[3], 17.0, 1e-12);
    EXPECT_NEAR(heights[2], 12.0, 1e-12);
    EXPECT_NEAR(heights[4], 12.0, 1e-12);
}

TEST(SmoothKind, underflowOverflowAndNanStay) {
    const auto histogram = filled({1, 2, 3});
    histogram->fill(-1.0, 5.0);
    histogram->fill(99.0, 7.0);
    histogram->fill(std::nan(""));
    KindHarness bench("Smooth");
    bench.set("bins", "3").wire("histogram", DataObjectPtr(histogram)).run();
    EXPECT_EQ(bench.histogram("histogram")->underflow().w, 5.0);
    EXPECT_EQ(bench.histogram("histogram")->overflow().w, 7.0);
    EXPECT_EQ(bench.histogram("histogram")->nanEntries(), 1);
    EXPECT_EQ(bench.histogram("histogram")->height(0), 1.5);
}

TEST(SmoothKind, windowsThatDoNotFitAreRefused) {
    EXPECT_THAT(Bench({1, 2, 3}).set("bins", "2").failure(), HasSubstr("bins: the window must have an odd number"));
    EXPECT_THAT(Bench({1, 2, 3}).set("bins", "5").failure(), HasSubstr("a window of 5 bins is wider"));
    EXPECT_THAT(Bench({1, 2, 3}).set("method", "savitzky-golay").set("bins", "3").set("degree", "3").failure(),
                HasSubstr("degree: a polynomial of degree 3 needs a window of at least 4 bins"));
    KindHarness bench("Smooth");
    bench.wire("histogram", DataObjectPtr(std::make_shared<Histogram1D>(Axis(std::vector<double>{0, 1, 3}))));
    EXPECT_THAT(bench.failure(), HasSubstr("only bins of equal width"));
}

}  // namespace
