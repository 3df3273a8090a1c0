#include "root/objects/Efficiency.h"

#include "root/objects/HistogramAxes.h"
#include "root/objects/Histograms.h"

#include <fmt/format.h>
#include <velmorak/ElementaryFunctions.h>
#include <velmorak/Failure.h>
#include <velmorak/Histogram.h>
#include <velmorak/Points.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

namespace velmorak::root {
namespace {

/// Number of the interval in TEfficiency.
enum class Option { ClopperPearson = 0, Normal = 1, Wilson = 2, AgrestiCoull = 3 };

/// The continued fraction of the incomplete beta function by the method of Lentz, for x below (a + 1) / (a + b + 2).
double betaFraction(double a, double b, double x) {
    constexpr double tiny = 1e-300;
    constexpr int maxSteps = 100'000;
    const auto notZero = [](double value) { return std::abs(value) < tiny ? tiny : value; };
    double c = 1.0;
    double d = 1.0 / notZero(1.0 - (a + b) * x / (a + 1.0));
    double fraction = d;
    for (int m = 1; m < maxSteps; ++m) {
        const double even = m * (b - m) * x / ((a + 2.0 * m - 1.0) * (a + 2.0 * m));
        d = 1.0 / notZero(1.0 + even * d);
        c = notZero(1.0 + even / c);
        fraction *= d * c;
        const double odd = -(a + m) * (a + b + m) * x / ((a + 2.0 * m) * (a + 2.0 * m + 1.0));
        d = 1.0 / notZero(1.0 + odd * d);
        c = notZero(1.0 + odd / c);
        fraction *= d * c;
        if (std::abs(d * c - 1.0) < std::numeric_limits<double>::epsilon()) {
            break;
        }
    }
    return fraction;
}

/// The probability at which the beta distribution is exceeded; by bisection, as the function rises monotonically.
double betaQuantile(double a, double b, double probability) {
    double low = 0.0;
    double high = 1.0;
    for (double middle = 0.5; middle > low && middle < high; middle = 0.5 * (low + high)) {
        (incompleteBeta(a, b, middle) < probability ? low : high) = middle;
    }
    return 0.5 * (low + high);
}

/// Quantile of the normal distribution for the two-sided level, by bisection.
double normalQuantile(double level) {
    double low = 0.0;
    double high = 40.0;
    for (double middle = 20.0; middle > low && middle < high; middle = 0.5 * (low + high)) {
        (elementary::erf(middle / std::sqrt(2.0)) < level ? low : high) = middle;
    }
    return 0.5 * (low + high);
}

Interval around(double centre, double half) {
    return {std::max(0.0, centre - half), std::min(1.0, centre + half)};
}

Interval intervalOf(Option option, double passed, double total, double level) {
    const double fraction = passed / total;
    if (option == Option::ClopperPearson) {
        return clopperPearson(passed, total, level);
    }
    const double z = normalQuantile(level);
    if (option == Option::Normal) {
        return around(fraction, z * std::sqrt(fraction * (1.0 - fraction) / total));
    }
    const double centre = (passed + 0.5 * z * z) / (total + z * z);
    if (option == Option::Wilson) {
        return around(centre, z / (total + z * z) * std::sqrt(passed * (1.0 - fraction) + 0.25 * z * z));
    }
    return around(centre, z * std::sqrt(centre * (1.0 - centre) / (total + z * z)));
}

std::shared_ptr<const Histogram1D> countsOf(const Object& object, const char* name) {
    const ObjectPtr histogram = object.object(name);
    if (!histogram) {
        throw Failure(fmt::format("the member {} is missing", name));
    }
    if (histogramAxes(histogram->className) != 1) {
        throw Failure(fmt::format("it has a {}; only efficiencies over one axis can be read", histogram->className));
    }
    return std::dynamic_pointer_cast<const Histogram1D>(histogramFrom(*histogram));
}

bool isCount(const BinSums& bin) {
    return bin.w >= 0.0 && bin.w == std::floor(bin.w) && bin.ww == bin.w;
}

}  // namespace

double incompleteBeta(double a, double b, double x) {
    if (!(x > 0.0)) {
        return 0.0;
    }
    if (!(x < 1.0)) {
        return 1.0;
    }
    const double logarithm = elementary::lgamma(a + b) - elementary::lgamma(a) - elementary::lgamma(b) +
                             a * elementary::log(x) + b * elementary::log1p(-x);
    const double front = elementary::exp(logarithm);
    return x < (a + 1.0) / (a + b + 2.0) ? front * betaFraction(a, b, x) / a
                                         : 1.0 - front * betaFraction(b, a, 1.0 - x) / b;
}

Interval clopperPearson(double passed, double total, double level) {
    const double alpha = 0.5 * (1.0 - level);
    return {passed > 0.0 ? betaQuantile(passed, total - passed + 1.0, alpha) : 0.0,
            passed < total ? betaQuantile(passed + 1.0, total - passed, 1.0 - alpha) : 1.0};
}

DataObjectPtr efficiencyFrom(const Object& object) {
    const auto passed = countsOf(object, "fPassedHistogram");
    const auto total = countsOf(object, "fTotalHistogram");
    const std::int64_t option = object.integer("fStatisticOption", -1);
    const double level = object.real("fConfLevel");
    if (!(passed->grid() == total->grid()) || !(level > 0.0 && level < 1.0)) {
        throw Failure("its histograms or its level of confidence are damaged");
    }
    if (option < 0 || option > static_cast<std::int64_t>(Option::AgrestiCoull)) {
        throw Failure(fmt::format("its confidence interval, number {}, is not supported", option));
    }
    std::vector<Measurement> all;
    for (std::size_t bin = 0; bin < total->bins(); ++bin) {
        if (!isCount(total->bin(bin)) || !isCount(passed->bin(bin)) || passed->height(bin) > total->height(bin)) {
            throw Failure("it has weights; only fractions of counts can be read");
        }
        if (total->height(bin) > 0.0) {
            const double half = 0.5 * total->axis().width(bin);
            const double fraction = passed->height(bin) / total->height(bin);
            const Interval interval =
                intervalOf(static_cast<Option>(option), passed->height(bin), total->height(bin), level);
            all.push_back({total->axis().center(bin), half, half});
            all.push_back({fraction, interval.high - fraction, fraction - interval.low});
        }
    }
    auto points = std::make_shared<Points>(2, std::move(all));
    points->axisTitles = {total->axis().title, "efficiency"};
    return points;
}

}  // namespace velmorak::root
