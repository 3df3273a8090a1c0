#include "kinds.h"

#include "Objects.h"
#include "SmoothingWeights.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace velmorak {

namespace {

enum class SmoothingMethod { Average, Gaussian, Polynomial };

/// How many bins on either side take part, and with which weights.
struct Smoothing {
    SmoothingMethod method = SmoothingMethod::Average;
    std::size_t reach = 0;
    double sigma = 1.0;
    std::size_t degree = 2;

    /// @return the number of the first bin whose height counts for a bin of a histogram with so many.
    std::size_t firstFor(std::size_t bin, std::size_t bins) const;
    /// @return weights of the bins from the first one on.
    std::vector<double> weightsFor(std::size_t bin, std::size_t bins) const;
};

/// A polynomial keeps a whole window at the ends, and the outer bins lie on it; the other methods lose what lies
/// outside.
std::size_t Smoothing::firstFor(std::size_t bin, std::size_t bins) const {
    const std::size_t first = bin < reach ? 0 : bin - reach;
    return method == SmoothingMethod::Polynomial ? std::min(first, bins - (2 * reach + 1)) : first;
}

std::vector<double> Smoothing::weightsFor(std::size_t bin, std::size_t bins) const {
    const std::size_t first = firstFor(bin, bins);
    if (method == SmoothingMethod::Polynomial) {
        return polynomialWeights(reach, degree, static_cast<double>(bin - first) - static_cast<double>(reach));
    }
    const std::size_t last = std::min(bins - 1, bin + reach);
    std::vector<double> weights;
    for (std::size_t i = first; i <= last; ++i) {
        const double distance = static_cast<double>(i) - static_cast<double>(bin);
        weights.push_back(method == SmoothingMethod::Gaussian ? gaussianWeight(distance, sigma) : 1.0);
    }
    return normalised(std::move(weights));
}

Histogram1D smoothed(const Histogram1D& histogram, const Smoothing& smoothing, const RunContext& context) {
    const std::size_t bins = histogram.bins();
    const bool hasMiddle = 2 * smoothing.reach < bins;
    const std::vector<double> inMiddle =
        hasMiddle ? smoothing.weightsFor(smoothing.reach, bins) : std::vector<double>();
    CellVector<BinSums> cells = histogram.cells();
    for (std::size_t bin = 0; bin < bins; ++bin) {
        if (context.isStopping()) {
            throw Stopped();
        }
        const bool isInMiddle = hasMiddle && bin >= smoothing.reach && bin + smoothing.reach < bins;
        const std::vector<double> atEnd = isInMiddle ? std::vector<double>() : smoothing.weightsFor(bin, bins);
        const std::vector<double>& weights = isInMiddle ? inMiddle : atEnd;
        const std::size_t first = smoothing.firstFor(bin, bins);
        BinSums sums = histogram.bin(bin);
        sums.w = 0.0;
        sums.ww = 0.0;
        for (std::size_t i = 0; i < weights.size(); ++i) {
            sums.w += weights[i] * histogram.bin(first + i).w;
            sums.ww += weights[i] * weights[i] * histogram.bin(first + i).ww;
        }
        takeMomentsFromCentre(sums, histogram.grid(), bin + 1);
        cells[bin + 1] = sums;
    }
    return {histogram.axis(), std::move(cells), histogram.nanEntries()};
}

SmoothingMethod methodNamed(const std::string& name) {
    if (name == "gaussian") {
        return SmoothingMethod::Gaussian;
    }
    return name == "average" ? SmoothingMethod::Average : SmoothingMethod::Polynomial;
}

Smoothing smoothingFrom(const Arguments& arguments, const Histogram1D& histogram) {
    Smoothing smoothing{.method = methodNamed(arguments.text("method")),
                        .reach = static_cast<std::size_t>(arguments.integer("bins")) / 2,
                        .sigma = arguments.number("sigma"),
                        .degree = static_cast<std::size_t>(arguments.integer("degree"))};
    if (!histogram.axis().labels.empty() || !histogram.axis().isRegular()) {
        throw Failure("histogram", "only bins of equal width can be smoothed, and no categories");
    }
    if (smoothing.method == SmoothingMethod::Gaussian) {
        smoothing.reach = reachOf(smoothing.sigma);
        return smoothing;
    }
    const std::size_t window = 2 * smoothing.reach + 1;
    if (arguments.integer("bins") % 2 == 0) {
        throw Failure("bins", "the window must have an odd number of bins, with this one in the middle");
    }
    if (window > histogram.bins()) {
        throw Failure("bins", "a window of " + std::to_string(window) +
                                  " bins is wider than the histogram, which has " + std::to_string(histogram.bins()));
    }
    if (smoothing.method == SmoothingMethod::Polynomial && smoothing.degree >= window) {
        throw Failure("degree", "a polynomial of degree " + std::to_string(smoothing.degree) +
                                    " needs a window of at least " + std::to_string(smoothing.degree + 1) + " bins");
    }
    return smoothing;
}

/// Smooths the heights of a histogram.
class SmoothKind : public Function {
public:
    std::string name() const override { return "Smooth"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;
};

}  // namespace

std::string SmoothKind::summary() const {
    return "Smooths the heights of a histogram by a moving average, a Gaussian kernel, or Savitzky-Golay's "
           "polynomials.";
}

std::string SmoothKind::notes() const {
    return R"(The height of a bin becomes a sum of heights around it with weights c that add up to 1:

- `average`: equal weights of all bins in the window;
- `gaussian`: c proportional to exp(-d² / 2 sigma²) for distances d, in bins, up to 4 sigma;
- `savitzky-golay`: the value of the polynomial that fits the bins in the window best, in the middle of the window; peaks keep
  their height and width better than with the other methods (A. Savitzky, M. J. E. Golay, Anal. Chem. 36 (1964) 1627, with
  the weights of P. A. Gorry, Anal. Chem. 62 (1990) 570).

At the ends, average and Gaussian kernel take the bins that there are, with their weights scaled to a sum of 1; of the
polynomial of the first and last whole window, the outer values are taken, too. Heights can become negative with
`savitzky-golay`.

The error of a bin is the root of the sum of c² times the squared errors, so that errors of neighbouring bins are correlated:
do not fit the result. Entries, underflow and overflow stay; moments are those of fills at the bin centres. For the rows of a
table, `Window` gives running means.)";
}

Ports SmoothKind::ports(const ValueTexts&) const {
    return {{histogramInput("histogram", "One-dimensional histogram with bins of equal width."),
             {.name = "method",
              .description = "Average: of all bins in the window. Gaussian: nearer bins count more. Savitzky-Golay: a "
                             "polynomial through the bins in the window.",
              .type = ValueType::Choice,
              .value = "average",
              .choices = {"average", "gaussian", "savitzky-golay"}},
             {.name = "bins",
              .description = "Number of bins in the window of an average or polynomial, odd.",
              .value = "5",
              .minimum = 1,
              .maximum = 1001,
              .isInteger = true},
             {.name = "sigma",
              .description = "Standard deviation of the Gaussian kernel, in bins.",
              .value = "1",
              .minimum = 0.1,
              .maximum = 1000},
             {.name = "degree",
              .description = "Degree of the polynomial, less than the number of bins in the window.",
              .value = "2",
              .minimum = 0,
              .maximum = 8,
              .isInteger = true},
             derivedTitleInput()},
            {{.name = "histogram", .description = "The smoothed histogram.", .type = ValueType::Histogram}}};
}

void SmoothKind::evaluate(const Arguments& arguments, Results& results, RunContext& context) const {
    const HistogramPtr histogram = arguments.histogram("histogram");
    deliver(smoothed(*histogram, smoothingFrom(arguments, *histogram), context), *histogram, arguments, context,
            results);
}

std::unique_ptr<Kind> makeSmooth() {
    return std::make_unique<SmoothKind>();
}

}  // namespace velmorak
