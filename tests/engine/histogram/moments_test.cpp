#include <velmorak/Histogram.h>
#include <velmorak/Profile.h>

#include <gtest/gtest.h>

#include <boost/multiprecision/cpp_bin_float.hpp>
#include <cmath>
#include <limits>
#include <random>

/// Means and spreads of cells, compared with sums in extended precision.
namespace velmorak {
namespace {

using Wide = boost::multiprecision::number<boost::multiprecision::cpp_bin_float<50>, boost::multiprecision::et_off>;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double precision = 1e-12;

struct Sample {
    std::vector<double> x;
    std::vector<double> y;
    std::vector<double> w;
    std::size_t strange = 0;        ///< Number of fills with a NaN.
    bool hasInfiniteValue = false;  ///< Among y, where x is in range.
};

/// Numbers around an offset of up to 1e15, with a spread that doubles of this size resolve.
class SampleMaker {
public:
    explicit SampleMaker(unsigned seed) : random(seed) {}

    double offset() {
        const double size = std::pow(10.0, std::uniform_real_distribution<double>(0.0, 15.0)(random));
        return random() % 2 == 0 ? size : -size;
    }
    double spreadAt(double offset) {
        const double finest = std::max(1e-6, std::abs(offset) * 1e-15);
        return finest * std::pow(10.0, std::uniform_real_distribution<double>(0.5, 5.0)(random));
    }
    /// @param sign 0: weights of 1; 1: positive; 2: of both signs.
    Sample make(unsigned sign) {
        const double xOffset = offset();
        const double yOffset = offset();
        std::normal_distribution<double> x(xOffset, spreadAt(xOffset));
        std::normal_distribution<double> y(yOffset, spreadAt(yOffset));
        std::lognormal_distribution<double> weight(0.0, 1.0);
        Sample sample;
        const std::size_t count = 2 + random() % 300;
        for (std::size_t i = 0; i < count; ++i) {
            const bool isNegative = sign == 2 && random() % 4 == 0;
            sample.x.push_back(x(random));
            sample.y.push_back(y(random));
            sample.w.push_back(sign == 0 ? 1.0 : weight(random) * (isNegative ? -1.0 : 1.0));
        }
        return sample;
    }
    void addStrange(Sample& sample) {
        for (int i = 0; i < 6; ++i) {
            std::vector<double>& column = i % 3 == 0 ? sample.x : i % 3 == 1 ? sample.y : sample.w;
            const std::size_t place = random() % column.size();
            column[place] = notANumber;
        }
        for (std::size_t i = 0; i < sample.x.size(); ++i) {
            sample.strange += std::isnan(sample.x[i]) || std::isnan(sample.y[i]) || std::isnan(sample.w[i]) ? 1 : 0;
        }
    }
    /// Fills with an infinite coordinate lie outside of every range.
    void addInfinities(Sample& sample) {
        for (int i = 0; i < 3; ++i) {
            sample.x[below(sample.x.size())] = random() % 2 == 0 ? infinity : -infinity;
        }
        if (random() % 2 == 0) {
            const std::size_t place = below(sample.y.size());
            sample.y[place] = random() % 2 == 0 ? infinity : -infinity;
            sample.hasInfiniteValue = std::isfinite(sample.x[place]);
        }
    }
    std::size_t below(std::size_t count) { return random() % count; }

private:
    std::mt19937_64 random;
};

/// Weighted moments in two passes, leaving out fills with a NaN or Infinity.
struct Truth {
    explicit Truth(const Sample& sample);

    Wide w = 0;
    Wide x = 0;
    Wide y = 0;
    Wide xx = 0;
    Wide xy = 0;
    Wide yy = 0;
    double lost = 0.0;  ///< Ratio of the sum of |w| to that of w: the cancellation in the data themselves.
};

Truth::Truth(const Sample& sample) {
    const auto isGood = [&](std::size_t i) {
        return std::isfinite(sample.x[i]) && std::isfinite(sample.y[i]) && std::isfinite(sample.w[i]);
    };
    Wide size = 0;
    for (std::size_t i = 0; i < sample.x.size(); ++i) {
        if (isGood(i)) {
            w += sample.w[i];
            size += std::abs(sample.w[i]);
            x += Wide(sample.w[i]) * sample.x[i];
            y += Wide(sample.w[i]) * sample.y[i];
        }
    }
    x /= w;
    y /= w;
    for (std::size_t i = 0; i < sample.x.size(); ++i) {
        if (isGood(i)) {
            const Wide dx = sample.x[i] - x;
            const Wide dy = sample.y[i] - y;
            xx += sample.w[i] * dx * dx;
            xy += sample.w[i] * dx * dy;
            yy += sample.w[i] * dy * dy;
        }
    }
    xx /= w;
    xy /= w;
    yy /= w;
    lost = static_cast<double>(size / abs(w));
}

void expectNear(double found, const Wide& truth, const Wide& scale, double factor, const char* name) {
    EXPECT_LE(static_cast<double>(abs(found - truth)), precision * factor * static_cast<double>(abs(scale)))
        << name << ": " << found << " instead of " << static_cast<double>(truth);
}

/// Sums of two quantities. Where weights of both signs cancel, so much of the precision is lost in the data.
void expectTruth(const CellSums<2>& found, const Truth& truth) {
    const double factor = truth.lost * truth.lost;
    expectNear(found.mean(0), truth.x, truth.x, 1.0, "mean of x");
    expectNear(found.mean(1), truth.y, truth.y, 1.0, "mean of y");
    expectNear(found.covariance(0, 0), truth.xx, truth.xx, factor, "variance of x");
    expectNear(found.covariance(1, 1), truth.yy, truth.yy, factor, "variance of y");
    expectNear(found.covariance(0, 1), truth.xy, sqrt(abs(truth.xx * truth.yy)), factor, "covariance");
    if (truth.xx > 0) {
        expectNear(found.rms(0), sqrt(truth.xx), sqrt(truth.xx), factor, "rms of x");
    }
}

/// Weights that nearly cancel have neither mean nor spread.
bool isMeaningful(const Truth& truth) {
    constexpr double limit = 4.0;
    return truth.lost < limit;
}

Grid<1> allOfX() {
    return Grid<1>({Axis(1, -1e17, 1e17)});
}

Grid<2> whole() {
    return Grid<2>({Axis(1, -1e17, 1e17), Axis(1, -1e17, 1e17)});
}

template <typename Object, typename Fill>
Object inParts(const Object& empty, std::size_t count, SampleMaker& maker, const Fill& fill) {
    std::vector<Object> parts;
    for (std::size_t begin = 0; begin < count;) {
        const std::size_t size = std::min(count - begin, 1 + maker.below(count));
        parts.push_back(empty);
        fill(parts.back(), begin, size);
        begin += size;
    }
    while (parts.size() > 1) {
        for (std::size_t i = 0; i + 1 < parts.size(); ++i) {
            parts[i].merge(parts[i + 1]);
            parts.erase(parts.begin() + static_cast<std::ptrdiff_t>(i) + 1);
        }
    }
    return parts.front();
}

TEST(Moments, areThoseOfExtendedPrecisionForAnyOffset) {
    SampleMaker maker(2026);
    int meaningful = 0;
    for (unsigned i = 0; i < 1000; ++i) {
        Sample sample = maker.make(i % 3);
        if (i % 10 == 0) {
            maker.addStrange(sample);
        } else if (i % 10 == 5) {
            maker.addInfinities(sample);
        }
        const Truth truth(sample);
        if (!isMeaningful(truth)) {
            continue;
        }
        ++meaningful;
        const auto fillPlane = [&](Histogram2D& plane, std::size_t begin, std::size_t size) {
            plane.fill({sample.x.data() + begin, sample.y.data() + begin}, sample.w.data() + begin, size);
        };
        const auto fillProfile = [&](Profile1D& profile, std::size_t begin, std::size_t size) {
            profile.fill({sample.x.data() + begin}, sample.y.data() + begin, sample.w.data() + begin, size);
        };
        const Histogram2D plane = inParts(Histogram2D(whole()), sample.x.size(), maker, fillPlane);
        expectTruth(plane.inRange(), truth);
        EXPECT_EQ(plane.nanEntries(), static_cast<std::int64_t>(sample.strange));
        const Profile1D profile = inParts(Profile1D(allOfX()), sample.x.size(), maker, fillProfile);
        if (sample.hasInfiniteValue) {
            EXPECT_FALSE(std::isfinite(profile.height(1)));
        } else {
            expectTruth(profile.cells()[1], truth);
            expectNear(profile.height(1), truth.y, truth.y, 1.0, "height");
        }
        ASSERT_FALSE(HasFailure()) << "sample " << i;
    }
    EXPECT_GT(meaningful, 950);
}

TEST(Moments, ofManyBinsAreThoseOfExtendedPrecision) {
    SampleMaker maker(7);
    for (unsigned i = 0; i < 200; ++i) {
        Sample sample = maker.make(i % 2);
        const Truth truth(sample);
        const double center = static_cast<double>(truth.x);
        const double width = 20.0 * static_cast<double>(sqrt(truth.xx));
        Histogram1D histogram(Axis(7, center - width, center + width));
        histogram.fill(sample.x.data(), sample.w.data(), sample.x.size());
        expectNear(histogram.mean(), truth.x, truth.x, 1.0, "mean");
        expectNear(histogram.rms(), sqrt(truth.xx), sqrt(truth.xx), 1.0, "rms");
        ASSERT_FALSE(HasFailure()) << "sample " << i;
    }
}

TEST(Moments, doNotSufferFromAFirstFillFarFromAllOthers) {
    Sample sample = SampleMaker(3).make(0);
    std::mt19937_64 random(4);
    std::normal_distribution<double> noise(0.0, 1.0);
    sample.x = {1e9};
    for (int i = 1; i < 200'000; ++i) {
        sample.x.push_back(noise(random));
    }
    sample.y = sample.x;
    sample.w.assign(sample.x.size(), 1.0);
    const Truth truth(sample);
    Histogram2D plane(whole());
    plane.fill({sample.x.data(), sample.y.data()}, nullptr, sample.x.size());
    expectTruth(plane.inRange(), truth);
}

TEST(Moments, ofAProfileKeepTheSpreadOfLargeValues) {
    std::mt19937_64 random(5);
    for (const double offset : {1e7, 1e8, 1e9, 1e15}) {
        std::normal_distribution<double> value(offset, 1.0);
        Profile1D profile(Grid<1>({Axis(1, 0.0, 1.0)}));
        for (int i = 0; i < 10'000; ++i) {
            profile.fill({0.5}, value(random));
        }
        EXPECT_NEAR(profile.rms(1), 1.0, 0.03) << offset;
        EXPECT_NEAR(profile.error(1), 0.01, 0.0003) << offset;
    }
}

TEST(Moments, countAnInfiniteCoordinateAsZero) {
    Histogram2D plane(Grid<2>({Axis(1, 0.0, 10.0), Axis(1, 0.0, 10.0)}));
    plane.fill({infinity, 3.0}, 2.0);
    plane.fill({11.0, 5.0}, 2.0);
    const CellSums<2>& cell = plane.cells()[plane.grid().cell({2, 1})];
    EXPECT_EQ(cell.sum(0), 22.0);
    EXPECT_EQ(cell.sum(1), 16.0);
    EXPECT_EQ(cell.squareSum(0, 1), 110.0);
}

TEST(Moments, ofAnInfiniteValueAreInfinite) {
    Profile1D profile(Grid<1>({Axis(1, 0.0, 1.0)}));
    for (const double value : {infinity, 1.0, 2.0}) {
        profile.fill({0.5}, value);
    }
    EXPECT_EQ(profile.height(1), infinity);
    EXPECT_TRUE(std::isnan(profile.rms(1)));
    Profile1D other(Grid<1>({Axis(1, 0.0, 1.0)}));
    other.fill({0.5}, 3.0);
    other.merge(profile);
    EXPECT_EQ(other.height(1), infinity);
}

TEST(Moments, ofWholeNumbersAreTheSameInAnyOrder) {
    std::mt19937_64 random(6);
    Histogram1D forward(Axis(3, 0.0, 3000.0));
    Histogram1D merged(forward);
    for (int chunk = 0; chunk < 20; ++chunk) {
        Histogram1D part(forward.axis());
        for (int i = 0; i < 100; ++i) {
            const auto x = static_cast<double>(random() % 3000);
            forward.fill(x);
            part.fill(x);
        }
        merged.merge(part);
    }
    for (std::size_t bin = 0; bin < 3; ++bin) {
        EXPECT_EQ(merged.bin(bin).sum(0), forward.bin(bin).sum(0));
        EXPECT_EQ(merged.bin(bin).squareSum(0, 0), forward.bin(bin).squareSum(0, 0));
    }
}

TEST(Moments, ofAPlaneHaveACorrelation) {
    Histogram2D plane(Grid<2>({Axis(4, 0.0, 4.0), Axis(4, 0.0, 4.0)}));
    for (const double x : {0.5, 1.25, 2.5, 3.5}) {
        plane.fill({x, 4.0 - x});
    }
    EXPECT_NEAR(plane.correlation(), -1.0, 1e-15);
    plane.fill({0.5, 0.5});
    EXPECT_GT(plane.correlation(), -1.0);
    EXPECT_TRUE(std::isnan(Histogram2D(plane.grid()).correlation()));
}

TEST(Moments, ofChosenQuantitiesStayTheSame) {
    CellSums<3> all;
    for (const double x : {1.0, 2.5, 4.0}) {
        all.fill({x, -x, x * x}, 0.5);
    }
    const CellSums<2> two = all.of<2>({2, 0});
    EXPECT_EQ(two.mean(0), all.mean(2));
    EXPECT_EQ(two.rms(1), all.rms(0));
    EXPECT_EQ(two.covariance(0, 1), all.covariance(0, 2));
    EXPECT_EQ(two.entries, 3);
}

}  // namespace
}  // namespace velmorak
