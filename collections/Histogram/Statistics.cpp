#include "Statistics.h"

#include "Moments.h"
#include "Quantity.h"

#include <limits>
#include <utility>

namespace velmorak {

namespace {

class Gathering : public AccumulatorState {
public:
    explicit Gathering(const Quantity& gathered) : quantity(gathered) {}

    void fill(const Chunk& chunk) override {
        const Quantity::Values values = quantity.values(chunk);
        const Batch batch = values.batch();
        moments.fill(batch.x, batch.weights, batch.count);
    }

    void merge(AccumulatorState& other) override { moments.merge(static_cast<Gathering&>(other).moments); }

    const Moments& result() const { return moments; }

private:
    const Quantity& quantity;
    Moments moments;
};

class TableStatistics : public Accumulation {
public:
    TableStatistics(const Arguments& arguments, const Schema& schema) : quantity(arguments, schema) {}

    std::unique_ptr<AccumulatorState> newState() const override { return std::make_unique<Gathering>(quantity); }

    void finish(AccumulatorState& state, Results& results) override {
        const Moments& moments = static_cast<Gathering&>(state).result();
        results.set("entries", static_cast<double>(moments.entries()));
        results.set("weights", moments.sumOfWeights());
        results.set("sum", moments.sum());
        results.set("mean", moments.mean());
        results.set("rms", moments.rms());
        results.set("minimum", moments.minimum());
        results.set("maximum", moments.maximum());
        results.set("nan", static_cast<double>(moments.nans()));
    }

private:
    Quantity quantity;
};

class NothingToGather : public AccumulatorState {
public:
    void fill(const Chunk&) override {}
    void merge(AccumulatorState&) override {}
};

/// A histogram keeps the exact sums of what was filled, but not its smallest and largest value.
class HistogramStatistics : public Accumulation {
public:
    explicit HistogramStatistics(HistogramPtr filled) : histogram(std::move(filled)) {}

    std::unique_ptr<AccumulatorState> newState() const override { return std::make_unique<NothingToGather>(); }

    void finish(AccumulatorState&, Results& results) override {
        const BinSums sums = histogram->inRange();
        results.set("entries", static_cast<double>(sums.entries));
        results.set("weights", sums.w);
        results.set("sum", sums.wx);
        results.set("mean", histogram->mean());
        results.set("rms", histogram->rms());
        results.set("minimum", std::numeric_limits<double>::quiet_NaN());
        results.set("maximum", std::numeric_limits<double>::quiet_NaN());
        results.set("nan", static_cast<double>(histogram->nanEntries()));
    }

private:
    HistogramPtr histogram;
};

}  // namespace

std::string StatisticsKind::summary() const {
    return "Gives entries, sum, mean, rms and extremes of one quantity of a table, or of a histogram, as numbers.";
}

std::string StatisticsKind::notes() const {
    return R"(The sums are formed about the plain mean p of the values, so that nothing cancels:
S1 = sum of w (x - p), S2 = sum of w (x - p)², mean = p + S1 / W, rms² = S2 / W - (S1 / W)², with W the sum of the weights
w. Parts are joined about their common p (T. F. Chan, G. H. Golub, R. J. LeVeque, The American Statistician 37 (1983)
242). Sums keep what each addition rounds away (A. Neumaier, Zeitschrift für Angewandte Mathematik und Mechanik 54 (1974)
39). The rms is that of the population: it is divided by W, not by W - 1. Weights of both signs may make rms² negative;
the rms is then NaN.)";
}

Ports StatisticsKind::ports(const ValueTexts&) const {
    Ports ports;
    ports.inputs = {
        {.name = "data",
         .description = "Table whose rows are used, or a histogram, of which all in-range fills are used.",
         .type = ValueType::Any},
        expressionInput(),
        weightInput(),
    };
    ports.outputs = {
        {.name = "entries", .description = "Number of fills; a NaN is none."},
        {.name = "weights", .description = "Sum of the weights, sum of w."},
        {.name = "sum", .description = "Weighted sum, sum of w x, in the unit of the expression."},
        {.name = "mean",
         .description = "Weighted mean, sum of w x / sum of w, in the unit of the expression; NaN without fills."},
        {.name = "rms",
         .description = "Weighted standard deviation of the population, in the unit of the expression; NaN without "
                        "fills."},
        {.name = "minimum",
         .description = "Smallest value, in the unit of the expression; NaN without fills and for a histogram, which "
                        "does not keep it."},
        {.name = "maximum",
         .description = "Largest value, in the unit of the expression; NaN without fills and for a histogram, which "
                        "does not keep it."},
        {.name = "nan", .description = "Number of fills left out because value or weight was NaN."},
    };
    return ports;
}

std::string StatisticsKind::refusal(const std::string& input, const std::string& value) const {
    return input == "expression" || input == "weight" ? expressionRefusal(value) : std::string();
}

std::unique_ptr<Accumulation> StatisticsKind::prepare(const Arguments& arguments, const Schema* schema,
                                                      RunContext&) const {
    if (schema != nullptr)
        return std::make_unique<TableStatistics>(arguments, *schema);
    return std::make_unique<HistogramStatistics>(arguments.histogram("data"));
}

}  // namespace velmorak
