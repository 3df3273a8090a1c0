#include "kinds.h"

#include "Objects.h"

#include <velmorak/ElementaryFunctions.h>
#include <velmorak/Fit.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace velmorak {

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

struct ChiSquare {
    double value = 0.0;
    double freedom = 0.0;

    double probability() const;
};

double ChiSquare::probability() const {
    return freedom < 1.0 || !std::isfinite(value) ? notANumber : chiSquareProbability(value, freedom);
}

/// Every fill has the weight 1.
bool isCounted(const Histogram1D& histogram) {
    return std::all_of(histogram.cells().begin(), histogram.cells().end(), [](const BinSums& cell) {
        return cell.w == static_cast<double>(cell.entries) && cell.ww == cell.w;
    });
}

ChiSquare chiSquare(const Histogram1D& first, const Histogram1D& second, bool isShape) {
    const double a = isShape ? first.inRange().w : 1.0;
    const double b = isShape ? second.inRange().w : 1.0;
    const bool areCounts = isShape && isCounted(first) && isCounted(second);
    ChiSquare result{.value = 0.0, .freedom = isShape ? -1.0 : 0.0};
    for (std::size_t bin = 0; bin < first.bins(); ++bin) {
        const double difference = b * first.height(bin) - a * second.height(bin);
        const double variance = areCounts ? a * b * (first.height(bin) + second.height(bin))
                                          : b * b * first.bin(bin).ww + a * a * second.bin(bin).ww;
        if (variance == 0.0) {
            continue;
        }
        result.value += difference * difference / variance;
        result.freedom += 1.0;
    }
    return result;
}

double effectiveEntries(const Histogram1D& histogram) {
    const BinSums all = histogram.inRange();
    return all.w * all.w / all.ww;
}

/// Largest distance between the two cumulative distributions, at the edges of the bins.
double maxDistance(const Histogram1D& first, const Histogram1D& second) {
    const double a = first.inRange().w;
    const double b = second.inRange().w;
    double distance = 0.0;
    double difference = 0.0;
    for (std::size_t bin = 0; bin < first.bins(); ++bin) {
        difference += first.height(bin) / a - second.height(bin) / b;
        distance = std::max(distance, std::abs(difference));
    }
    return distance;
}

/// Probability of a larger distance: 2 sum of (-1)^(j-1) exp(-2 j² t²); for small t a series that converges faster.
double kolmogorov(double t) {
    if (std::isnan(t)) {
        return notANumber;
    }
    if (t < 0.04) {
        return 1.0;
    }
    double sum = 0.0;
    for (int j = 1; j <= 20; ++j) {
        const double odd = 2.0 * j - 1.0;
        sum += t < 1.0 ? elementary::exp(-odd * odd * std::numbers::pi * std::numbers::pi / (8.0 * t * t))
                       : (j % 2 == 1 ? 2.0 : -2.0) * elementary::exp(-2.0 * j * j * t * t);
    }
    return std::clamp(t < 1.0 ? 1.0 - std::sqrt(2.0 * std::numbers::pi) / t * sum : sum, 0.0, 1.0);
}

void requireComparable(const Histogram1D& first, const Histogram1D& second, const Arguments& arguments) {
    if (!(first.axis() == second.axis())) {
        throw Failure("second", "\"" + arguments.sourceName("first") + "\" has " + describe(first.axis()) + " and \"" +
                                    arguments.sourceName("second") + "\" has " + describe(second.axis()) +
                                    "; they must be equal");
    }
    for (const auto& [histogram, input] : {std::pair{&first, "first"}, std::pair{&second, "second"}}) {
        if (!(histogram->inRange().w > 0.0)) {
            throw Failure(input, "it cannot be compared: its heights add up to " + textOf(histogram->inRange().w));
        }
    }
}

/// Tests whether two histograms follow the same distribution.
class CompareKind : public Function {
public:
    std::string name() const override { return "Compare"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;
};

}  // namespace

std::string CompareKind::summary() const {
    return "Tests whether two histograms follow the same distribution, with the chi-square and Kolmogorov-Smirnov "
           "tests.";
}

std::string CompareKind::notes() const {
    return R"(Only bins in range are used. Heights are a and b, with sums A and B and errors s:

- chi square of the shapes, without weights: sum of (B a - A b)² / (A B (a + b)) (K. Pearson, Biometrika 8 (1911) 250), and
  with weights: sum of (B a - A b)² / (B² s(a)² + A² s(b)²) (N. D. Gagunashvili, Nuclear Instruments and Methods A 614 (2010)
  287). The number of degrees of freedom is that of the bins with an error, minus one.
- chi square of the heights: sum of (a - b)² / (s(a)² + s(b)²), with one degree of freedom for each bin with an error.
- The p-value is the regularised incomplete gamma function Q(ndf / 2, chi square / 2). It is valid where bins have enough
  entries, say ten.
- Kolmogorov-Smirnov: D is the largest distance between the two cumulative distributions at the bin edges;
  t = D root of (n m / (n + m)) with the effective numbers n = A² / sum of s(a)², and m likewise; p = 2 sum of (-1)^(j-1)
  exp(-2 j² t²) (N. Smirnov, Annals of Mathematical Statistics 19 (1948) 279). The order of the fills within a bin is not
  known, so that the true D may be larger and p is an upper estimate; narrow bins reduce the difference.)";
}

Ports CompareKind::ports(const ValueTexts&) const {
    return {{histogramInput("first", "One-dimensional histogram."),
             histogramInput("second", "One-dimensional histogram with the same bins."),
             {.name = "test",
              .description = "Whether chi square compares shapes only, or the heights themselves.",
              .type = ValueType::Choice,
              .value = "shape",
              .choices = {"shape", "heights"}}},
            {{.name = "chisquare", .description = "Chi square, without unit."},
             {.name = "ndf", .description = "Number of degrees of freedom."},
             {.name = "probability",
              .description =
                  "P-value: probability of a larger chi square if both follow one distribution; NaN without degrees "
                  "of freedom."},
             {.name = "distance", .description = "Largest distance between the two cumulative distributions, 0 to 1."},
             {.name = "ksprobability",
              .description = "P-value: probability of a larger distance if both follow one distribution."}}};
}

void CompareKind::evaluate(const Arguments& arguments, Results& results, RunContext&) const {
    const HistogramPtr first = arguments.histogram("first");
    const HistogramPtr second = arguments.histogram("second");
    requireComparable(*first, *second, arguments);
    const ChiSquare chi = chiSquare(*first, *second, arguments.text("test") == "shape");
    const double n = effectiveEntries(*first);
    const double m = effectiveEntries(*second);
    const double distance = maxDistance(*first, *second);
    results.set("chisquare", chi.value);
    results.set("ndf", chi.freedom);
    results.set("probability", chi.probability());
    results.set("distance", distance);
    results.set("ksprobability", kolmogorov(distance * std::sqrt(n * m / (n + m))));
}

std::unique_ptr<Kind> makeCompare() {
    return std::make_unique<CompareKind>();
}

}  // namespace velmorak
