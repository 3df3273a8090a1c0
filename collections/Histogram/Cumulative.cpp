#include "kinds.h"

#include "Objects.h"

namespace velmorak {

namespace {

Histogram1D summedUp(const Histogram1D& histogram, bool isForward, bool hasOutside) {
    CellVector<BinSums> cells(histogram.cells().size());
    BinSums sum = hasOutside ? (isForward ? histogram.underflow() : histogram.overflow()) : BinSums{};
    for (std::size_t step = 0; step < histogram.bins(); ++step) {
        const std::size_t cell = isForward ? step + 1 : histogram.bins() - step;
        sum.add(histogram.cells()[cell]);
        cells[cell] = sum;
        takeMomentsFromCentre(cells[cell], histogram.grid(), cell);
    }
    return {histogram.axis(), std::move(cells), histogram.nanEntries()};
}

/// Sums the bins from one end.
class CumulativeKind : public Function {
public:
    std::string name() const override { return "Cumulative"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;
};

}  // namespace

std::string CumulativeKind::summary() const {
    return "Sums the bins of a histogram cumulatively from its lower or upper end.";
}

std::string CumulativeKind::notes() const {
    return R"(Forward, the height of a bin is the sum of all heights up to and including it; backward, the sum from it upwards. Its
error is the root of the sum of w² over the same bins, so that the errors of neighbouring bins are correlated. Moments of the
result are those of fills at the bin centres; its underflow and overflow are empty.)";
}

Ports CumulativeKind::ports(const ValueTexts&) const {
    return {{histogramInput("histogram", "One-dimensional histogram."),
             {.name = "direction",
              .description = "Forward: sum from the lower end upwards. Backward: from the upper end downwards.",
              .type = ValueType::Choice,
              .value = "forward",
              .choices = {"forward", "backward"}},
             {.name = "outside",
              .description = "Whether the sum includes the underflow, or the overflow if backward.",
              .type = ValueType::Choice,
              .value = "no",
              .choices = {"no", "yes"}},
             derivedTitleInput()},
            {{.name = "histogram", .description = "Cumulative sums of the heights.", .type = ValueType::Histogram}}};
}

void CumulativeKind::evaluate(const Arguments& arguments, Results& results, RunContext& context) const {
    const HistogramPtr histogram = arguments.histogram("histogram");
    deliver(summedUp(*histogram, arguments.text("direction") == "forward", arguments.text("outside") == "yes"),
            *histogram, arguments, context, results);
}

std::unique_ptr<Kind> makeCumulative() {
    return std::make_unique<CumulativeKind>();
}

}  // namespace velmorak
