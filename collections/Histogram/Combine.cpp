#include "kinds.h"

#include "Objects.h"

#include <velmorak/Points.h>

#include <algorithm>
#include <cmath>

namespace velmorak {

namespace {

/// Result in a bin: its height with the errors upwards and downwards.
struct BinResult {
    double value = 0.0;
    double squaredError = 0.0;
    double plus = 0.0;
    double minus = 0.0;
    bool isDefined = true;
};

BinResult symmetric(double value, double squaredError) {
    const double error = std::sqrt(std::max(squaredError, 0.0));
    return {.value = value, .squaredError = squaredError, .plus = error, .minus = error};
}

BinResult nothing() {
    return {.isDefined = false};
}

/// Fraction of fills that passed, k / n, with its interval for z standard deviations.
template <typename Sums>
BinResult efficiency(const Sums& passed, const Sums& all, bool isWilson, double z) {
    if (all.w == 0.0) {
        return nothing();
    }
    const double ratio = passed.w / all.w;
    if (!(ratio >= 0.0 && ratio <= 1.0)) {
        throw Failure("first", "a bin has a height of " + textOf(passed.w) + " out of " + textOf(all.w) +
                                   "; for an efficiency, the first histogram must be a subset of the second");
    }
    const double squared = std::max(0.0, ((1.0 - 2.0 * ratio) * passed.ww + ratio * ratio * all.ww) / (all.w * all.w));
    BinResult outcome = symmetric(ratio, squared);
    outcome.plus = outcome.minus = z * outcome.plus;
    if (isWilson) {
        const double n = all.w * all.w / all.ww;
        const double middle = (ratio + z * z / (2.0 * n)) / (1.0 + z * z / n);
        const double half = z / (1.0 + z * z / n) * std::sqrt(ratio * (1.0 - ratio) / n + z * z / (4.0 * n * n));
        outcome.plus = std::max(0.0, middle + half - ratio);
        outcome.minus = std::max(0.0, ratio - (middle - half));
    }
    return outcome;
}

template <typename Sums>
BinResult combined(const Sums& a, const Sums& b, const std::string& operation, double z) {
    if (operation == "multiply") {
        return symmetric(a.w * b.w, a.w * a.w * b.ww + b.w * b.w * a.ww);
    }
    if (operation == "divide") {
        if (b.w == 0.0) {
            return nothing();
        }
        const double ratio = a.w / b.w;
        return symmetric(ratio, (a.ww + ratio * ratio * b.ww) / (b.w * b.w));
    }
    return efficiency(a, b, operation == "wilson", z);
}

template <std::size_t axes>
void addPoint(std::vector<Measurement>& points, const BinResult& outcome, const Grid<axes>& grid, std::size_t cell) {
    const auto cells = grid.alongAxes(cell);
    for (std::size_t direction = 0; direction < axes; ++direction) {
        const Axis& axis = grid.axis(direction);
        const double half = 0.5 * axis.width(cells[direction] - 1);
        points.push_back({axis.center(cells[direction] - 1), half, half});
    }
    points.push_back({outcome.value, outcome.plus, outcome.minus});
}

/// A combination of two histograms with the same bins.
template <typename Histogram>
class Combination {
public:
    Combination(const Histogram& first, Histogram second, const Arguments& arguments)
        : first(first),
          second(std::move(second)),
          operation(arguments.text("operation")),
          z(arguments.number("deviations")) {}

    void evaluate() {
        cells = first.cells();
        for (std::size_t cell = 0; cell < cells.size(); ++cell) {
            const BinResult outcome = isSum() ? sumIn(cell) : otherIn(cell);
            if (outcome.isDefined && first.grid().isInside(cell)) {
                addPoint(points, outcome, first.grid(), cell);
            }
        }
    }

    Histogram histogram() const { return {first.grid(), cells, first.nanEntries() + second.nanEntries()}; }

    std::shared_ptr<Points> asPoints() const {
        const std::size_t dimensions = Histogram::dimensions + 1;
        auto made = std::make_shared<Points>(dimensions, points);
        for (std::size_t direction = 0; direction + 1 < dimensions; ++direction) {
            made->axisTitles.push_back(first.grid().axis(direction).title);
        }
        made->axisTitles.emplace_back();
        return made;
    }

private:
    bool isSum() const { return operation == "add" || operation == "subtract"; }

    BinResult sumIn(std::size_t cell) {
        auto other = second.cells()[cell];
        if (operation == "subtract") {
            other.multiply(-1.0);
        }
        if (!isZero(second.cells()[cell])) {
            cells[cell].add(other);
        }
        const auto& sum = std::as_const(cells)[cell];
        return symmetric(sum.w, sum.ww);
    }

    BinResult otherIn(std::size_t cell) {
        const BinResult outcome =
            first.grid().isInside(cell) ? combined(first.cells()[cell], second.cells()[cell], operation, z) : nothing();
        if (outcome.value != 0.0 || outcome.squaredError != 0.0 || !isZero(first.cells()[cell])) {
            cells[cell].w = outcome.value;
            cells[cell].ww = outcome.squaredError;
            takeMomentsFromCentre(cells[cell], first.grid(), cell);
        }
        return outcome;
    }

    const Histogram& first;
    Histogram second;
    std::string operation;
    double z;
    std::decay_t<decltype(first.cells())> cells;
    std::vector<Measurement> points;
};

template <typename Histogram>
void requireSameBins(const Histogram& first, const Histogram& second, const Arguments& arguments) {
    for (std::size_t direction = 0; direction < Histogram::dimensions; ++direction) {
        const Axis& mine = first.grid().axis(direction);
        const Axis& other = second.grid().axis(direction);
        if (!(mine == other)) {
            throw Failure("second", "\"" + arguments.sourceName("first") + "\" has " + describe(mine) + " and \"" +
                                        arguments.sourceName("second") + "\" has " + describe(other) +
                                        "; they must be equal");
        }
    }
}

template <typename Histogram>
void combine(const Histogram& first, const Histogram& second, const Arguments& arguments, Results& results,
             const RunContext& context) {
    requireSameBins(first, second, arguments);
    auto cells = second.cells();
    cells.changeFilled([&](auto& cell) { cell.multiply(arguments.number("factor")); });
    Combination<Histogram> combination(first, Histogram(second.grid(), std::move(cells), second.nanEntries()),
                                       arguments);
    combination.evaluate();
    deliver(combination.histogram(), first, arguments, context, results);
    const std::shared_ptr<Points> points = combination.asPoints();
    nameAfter(*points, first, arguments, context);
    results.set("points", DataObjectPtr(points));
}

/// Combines two histograms bin by bin.
class CombineKind : public Function {
public:
    std::string name() const override { return "Combine"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;
};

}  // namespace

std::string CombineKind::summary() const {
    return "Adds, subtracts, multiplies or divides two histograms bin by bin, or computes an efficiency.";
}

std::string CombineKind::notes() const {
    return R"(Heights are a and b, with b multiplied by the factor, and errors s, which are taken as independent:

- `add`, `subtract`: all sums in the bins are added or subtracted, s² = s(a)² + s(b)²;
- `multiply`: s² = a² s(b)² + b² s(a)²;
- `divide`: s² = (s(a)² + (a/b)² s(b)²) / b²;
- `binomial`: e = a/b, where the fills of the first histogram are a subset of those of the second:
  s² = ((1 - 2 e) s(a)² + e² s(b)²) / b², which is e (1 - e) / n for unweighted fills;
- `wilson`: e as before; the limits of the points are (e + z²/2n ± z root of (e (1 - e)/n + z²/4n²)) / (1 + z²/n) for z
  standard deviations (E. B. Wilson, Journal of the American Statistical Association 22 (1927) 209), with the effective
  number n = b² / s(b)² for weighted fills. They lie between 0 and 1, also for e = 0 and e = 1.

Where b is 0, quotient and efficiency are undefined: the height of the histogram is 0, and the points have no entry for the
bin. For products, quotients and efficiencies, the moments of a bin are those of fills at its centre, its entries are those
of the first histogram, and underflow and overflow are 0.)";
}

Ports CombineKind::ports(const ValueTexts&) const {
    return {
        {histogramInput("first", "Histogram of one to three dimensions; for an efficiency, the fills that passed."),
         histogramInput("second", "Histogram with the same bins; for an efficiency, all fills."),
         {.name = "operation",
          .description =
              "Operation for each bin; binomial and wilson divide the fills that passed by all fills and differ in "
              "their errors.",
          .type = ValueType::Choice,
          .value = "add",
          .choices = {"add", "subtract", "multiply", "divide", "binomial", "wilson"}},
         {.name = "factor", .description = "Factor applied to the second histogram first, without unit.", .value = "1"},
         {.name = "deviations",
          .description = "Half width of the efficiency intervals of the points, in standard deviations.",
          .value = "1",
          .minimum = 0,
          .maximum = 10},
         derivedTitleInput()},
        {{.name = "histogram",
          .description = "Result in each bin, with its symmetric error.",
          .type = ValueType::Histogram},
         {.name = "points",
          .description = "Result at the centre of each bin that has one, with errors upwards and downwards.",
          .type = ValueType::Points}}};
}

void CombineKind::evaluate(const Arguments& arguments, Results& results, RunContext& context) const {
    const AnyHistogram first = anyHistogram(arguments, "first");
    const AnyHistogram second = anyHistogram(arguments, "second");
    if (first.index() != second.index()) {
        throw Failure("second", "\"" + arguments.sourceName("first") + "\" and \"" + arguments.sourceName("second") +
                                    "\" have different numbers of axes");
    }
    std::visit(
        [&](const auto& one) {
            combine(*one, *std::get<std::decay_t<decltype(one)>>(second), arguments, results, context);
        },
        first);
}

std::unique_ptr<Kind> makeCombine() {
    return std::make_unique<CombineKind>();
}

}  // namespace velmorak
