#include "kinds.h"

#include "FillExpression.h"
#include "Moments.h"
#include "Quantiles.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace velmorak {

namespace {

/// Probabilities of a standard normal distribution below -1 and 1.
constexpr double lowerProbability = 0.15865525393145705;
constexpr double upperProbability = 0.84134474606854295;

class Gathering : public AccumulatorState {
public:
    explicit Gathering(const FillExpression& quantity) : quantity(quantity) {}

    void fill(const Chunk& chunk) override;

    void merge(AccumulatorState& other) override;
    void save(StateWriter& writer) const override;
    void load(StateReader& reader) override;

    const Moments& result() const { return moments; }
    const Quantiles& quantiles() const { return portions; }

private:
    const FillExpression& quantity;
    Moments moments;
    Quantiles portions;
};

void Gathering::fill(const Chunk& chunk) {
    const FillExpression::Values values = quantity.values(chunk);
    const FillBatch batch = values.batch();
    moments.fill(batch.x, batch.weights, batch.count);
    portions.fill(batch.x, batch.weights, batch.count);
}

void Gathering::merge(AccumulatorState& other) {
    auto& next = static_cast<Gathering&>(other);
    moments.merge(next.moments);
    portions.merge(next.portions);
}

void Gathering::save(StateWriter& writer) const {
    writer.version(1);
    moments.save(writer);
    portions.save(writer);
}

void Gathering::load(StateReader& reader) {
    reader.version(1);
    moments.load(reader);
    portions.load(reader);
}

void setQuantiles(const std::vector<WeightedInterval>& ascending, Results& results) {
    results.set("median", quantileOf(ascending, 0.5));
    results.set("lower", quantileOf(ascending, lowerProbability));
    results.set("upper", quantileOf(ascending, upperProbability));
}

class TableStatistics : public Accumulation {
public:
    TableStatistics(const Arguments& arguments, const Schema& schema) : quantity(arguments, schema) {}

    std::unique_ptr<AccumulatorState> newState() const override { return std::make_unique<Gathering>(quantity); }
    void markColumns(std::vector<bool>& needed) const override { quantity.markColumns(needed); }

    void finish(AccumulatorState& state, Results& results) override;

private:
    FillExpression quantity;
};

void TableStatistics::finish(AccumulatorState& state, Results& results) {
    const Moments& moments = static_cast<Gathering&>(state).result();
    results.set("entries", static_cast<double>(moments.entries()));
    results.set("weights", moments.sumOfWeights());
    results.set("sum", moments.sum());
    results.set("mean", moments.mean());
    results.set("rms", moments.rms());
    results.set("minimum", moments.minimum());
    results.set("maximum", moments.maximum());
    results.set("nan", static_cast<double>(moments.nans()));
    results.set("skewness", moments.skewness());
    setQuantiles(static_cast<Gathering&>(state).quantiles().ascending(), results);
}

class NothingToGather : public AccumulatorState {
public:
    void fill(const Chunk&) override {}
    void merge(AccumulatorState&) override {}
    void save(StateWriter& writer) const override { writer.version(1); }
    void load(StateReader& reader) override { reader.version(1); }
};

/// Skewness from the exact mean and spread of each bin; the fills of a bin are assumed to lie symmetrically about its
/// mean.
double skewnessOf(const Histogram1D& histogram) {
    const double mean = histogram.mean();
    const double spread = histogram.rms();
    if (!(spread > 0.0)) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    double weight = 0.0;
    double third = 0.0;
    for (std::size_t i = 0; i < histogram.bins(); ++i) {
        const BinSums& bin = histogram.bin(i);
        if (bin.w == 0.0) {
            continue;
        }
        const double varianceOfBin = std::max(0.0, bin.covariance(0, 0));
        const double distance = (bin.mean(0) - mean) / spread;
        weight += bin.w;
        third += bin.w * distance * (distance * distance + 3.0 * varianceOfBin / spread / spread);
    }
    return third / weight;
}

std::vector<WeightedInterval> binsOf(const Histogram1D& histogram) {
    const std::vector<double>& edges = histogram.axis().edges();
    std::vector<WeightedInterval> bins;
    for (std::size_t i = 0; i < histogram.bins(); ++i) {
        bins.push_back({.weight = histogram.height(i), .low = edges[i], .high = edges[i + 1]});
    }
    return bins;
}

/// A histogram keeps the exact sums of its fills, but not their smallest and largest value.
class HistogramStatistics : public Accumulation {
public:
    explicit HistogramStatistics(HistogramPtr histogram) : histogram(std::move(histogram)) {}

    std::unique_ptr<AccumulatorState> newState() const override { return std::make_unique<NothingToGather>(); }

    void finish(AccumulatorState&, Results& results) override;

private:
    HistogramPtr histogram;
};

void HistogramStatistics::finish(AccumulatorState&, Results& results) {
    const BinSums sums = histogram->inRange();
    results.set("entries", static_cast<double>(sums.entries));
    results.set("weights", sums.w);
    results.set("sum", sums.sum(0));
    results.set("mean", sums.mean(0));
    results.set("rms", sums.rms(0));
    results.set("minimum", std::numeric_limits<double>::quiet_NaN());
    results.set("maximum", std::numeric_limits<double>::quiet_NaN());
    results.set("nan", static_cast<double>(histogram->nanEntries()));
    results.set("skewness", skewnessOf(*histogram));
    setQuantiles(binsOf(*histogram), results);
}

/// Computes the moments and quantiles of a quantity.
class StatisticsKind : public Accumulator {
public:
    std::string name() const override { return "Statistics"; }
    std::string summary() const override;
    std::string notes() const override;
    int version() const override { return 2; }
    Ports ports(const ValueTexts& values) const override;
    std::string refusal(const std::string& input, const std::string& value) const override;
    std::unique_ptr<Accumulation> prepare(const Arguments& arguments, const Schema* schema,
                                          RunContext& context) const override;
};

}  // namespace

std::string StatisticsKind::summary() const {
    return "Computes entries, sum, mean, rms, skewness, extremes and quantiles of a quantity of a table, or of a "
           "histogram.";
}

std::string StatisticsKind::notes() const {
    return R"(Sums are formed about the unweighted mean p of the values to avoid cancellation:
S1 = sum of w (x - p), S2 = sum of w (x - p)², mean = p + S1 / W, rms² = S2 / W - (S1 / W)², with W the sum of the weights
w. Partial results are merged about their common p (T. F. Chan, G. H. Golub, R. J. LeVeque, The American Statistician 37 (1983)
242). Summation is compensated (A. Neumaier, Zeitschrift für Angewandte Mathematik und Mechanik 54 (1974)
39). The rms is that of the population: the divisor is W, not W - 1. With weights of both signs, rms² may be negative;
the rms is then NaN.

The skewness is the third standardised moment of the population, sum of w (x - mean)³ / (W rms³). With S3 = sum of
w (x - p)³ and d = S1 / W it is (S3 / W - 3 d S2 / W + 2 d³) / rms³; partial results are merged as above (P. Pébay, Sandia National
Laboratories SAND2008-6212 (2008)). It is NaN where the rms is NaN or 0. For a histogram it is computed from the sums of its
in-range bins: the fills of a bin have its exact mean and spread, but are assumed to lie symmetrically about that mean.

The quantile for the probability P is the value at which the cumulative weight of the ascending values passes P W; if it
equals P W exactly at a value, the quantile is midway between that value and the next one (R. J. Hyndman, Y. Fan, The
American Statistician 50 (1996) 361, definition 2, with weights). Up to 10000 values with a weight other than 0 are kept
as they are, and the quantile is exact. More are counted in at most 10000 cells between neighbouring multiples of a power
of ten, from the smallest to the largest finite value; within a cell the quantile is interpolated linearly between the
smallest and the largest value in it. Its error is thus less than a cell, that is at most 1/900 of the span
of the values (or 10^-14 of the largest, if that is more), and 0 if all values of the cell are equal. Infinite
values, and then also those beyond 1e300, lie below or above all cells. In a histogram the quantile
is interpolated linearly in the bins; underflow and overflow are left out. With weights of both signs the quantile is the
first value at which the cumulative weight reaches P W. Without fills, and if W is not positive, it is NaN.)";
}

Ports StatisticsKind::ports(const ValueTexts&) const {
    Ports ports;
    ports.inputs = {
        {.name = "data",
         .description = "Table whose rows are used, or a histogram, whose in-range fills are used.",
         .type = ValueType::Any},
        expressionInput(),
        weightInput(),
    };
    ports.outputs = {
        {.name = "entries", .description = "Number of fills, without those that are NaN."},
        {.name = "weights", .description = "Sum of the weights, sum of w."},
        {.name = "sum", .description = "Weighted sum, sum of w x, in the unit of the expression."},
        {.name = "mean",
         .description = "Weighted mean, sum of w x / sum of w, in the unit of the expression; NaN without fills."},
        {.name = "rms",
         .description = "Weighted standard deviation of the population, in the unit of the expression; NaN without "
                        "fills."},
        {.name = "minimum",
         .description = "Smallest value, in the unit of the expression; NaN without fills and for a histogram, which "
                        "does not store it."},
        {.name = "maximum",
         .description = "Largest value, in the unit of the expression; NaN without fills and for a histogram, which "
                        "does not store it."},
        {.name = "nan", .description = "Number of fills left out because value or weight is NaN."},
        {.name = "skewness",
         .description = "Weighted third standardised moment of the population, without unit; NaN without spread."},
        {.name = "median",
         .description = "Median: half of the weight lies below it; in the unit of the expression; NaN without fills."},
        {.name = "lower",
         .description =
             "Quantile for 15.87 %, the lower end of the central 68.27 %, in the unit of the expression; NaN "
             "without fills."},
        {.name = "upper",
         .description =
             "Quantile for 84.13 %, the upper end of the central 68.27 %, in the unit of the expression; NaN "
             "without fills."},
    };
    return ports;
}

std::string StatisticsKind::refusal(const std::string& input, const std::string& value) const {
    return input == "expression" || input == "weight" ? expressionRefusal(value) : std::string();
}

std::unique_ptr<Accumulation> StatisticsKind::prepare(const Arguments& arguments, const Schema* schema,
                                                      RunContext&) const {
    if (schema) {
        return std::make_unique<TableStatistics>(arguments, *schema);
    }
    return std::make_unique<HistogramStatistics>(arguments.histogram("data"));
}

std::unique_ptr<Kind> makeStatistics() {
    return std::make_unique<StatisticsKind>();
}

}  // namespace velmorak
