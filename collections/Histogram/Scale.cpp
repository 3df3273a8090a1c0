#include "kinds.h"

#include "Objects.h"

#include <cmath>

namespace velmorak {

namespace {

template <typename Histogram>
double total(const Histogram& histogram, bool isArea) {
    double sum = 0.0;
    for (std::size_t cell = 0; cell < histogram.cells().size(); ++cell) {
        if (histogram.grid().isInside(cell)) {
            sum += histogram.cells()[cell].w * (isArea ? histogram.grid().sizeOf(cell) : 1.0);
        }
    }
    return sum;
}

template <typename Histogram>
Histogram scaled(const Histogram& histogram, const std::string& mode, double factor) {
    double common = factor;
    if (mode == "sum" || mode == "area") {
        const double present = total(histogram, mode == "area");
        common = factor / present;
        if (present == 0.0 || !std::isfinite(common)) {
            throw Failure("histogram",
                          "its " + mode + " is " + textOf(present) + ", which cannot be scaled to " + textOf(factor));
        }
    }
    auto cells = histogram.cells();
    for (std::size_t cell = 0; cell < cells.size(); ++cell) {
        if (!isZero(histogram.cells()[cell])) {
            const bool isByWidth = mode == "width" && histogram.grid().isInside(cell);
            cells[cell].multiply(isByWidth ? common / histogram.grid().sizeOf(cell) : common);
        }
    }
    return {histogram.grid(), std::move(cells), histogram.nanEntries()};
}

/// Multiplies the heights of a histogram.
class ScaleKind : public Function {
public:
    std::string name() const override { return "Scale"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;
};

}  // namespace

std::string ScaleKind::summary() const {
    return "Scales the heights of a histogram by a factor, to a given sum or area, or by bin width.";
}

std::string ScaleKind::notes() const {
    return R"(With the factor f, every bin is multiplied by

- `factor`: f;
- `sum`: f / sum of the in-range heights, so that they add up to f;
- `area`: f / sum of in-range height times width, so that the area is f;
- `width`: f / its width (in several dimensions the product of its widths), which gives a density. Underflow and overflow
  have no width and are multiplied by f alone.

Multiplying a bin by c multiplies its sums of w, w x and w x² by c and its sum of w² by c², so that its relative error is
unchanged. The number of entries is unchanged, too.)";
}

Ports ScaleKind::ports(const ValueTexts&) const {
    return {{histogramInput("histogram", "Histogram of one to three dimensions."),
             {.name = "mode",
              .description = "Meaning of the factor: the factor of the heights, their new sum, the new area, "
                             "or the factor of heights divided by bin widths.",
              .type = ValueType::Choice,
              .value = "factor",
              .choices = {"factor", "sum", "area", "width"}},
             {.name = "factor", .description = "Number to apply as the mode says, without unit.", .value = "1"},
             derivedTitleInput()},
            {{.name = "histogram", .description = "The scaled histogram.", .type = ValueType::Histogram}}};
}

void ScaleKind::evaluate(const Arguments& arguments, Results& results, RunContext& context) const {
    const double factor = arguments.number("factor");
    if (!std::isfinite(factor)) {
        throw Failure("factor", "the factor must be finite, but is " + textOf(factor));
    }
    std::visit(
        [&](const auto& histogram) {
            deliver(scaled(*histogram, arguments.text("mode"), factor), *histogram, arguments, context, results);
        },
        anyHistogram(arguments, "histogram"));
}

std::unique_ptr<Kind> makeScale() {
    return std::make_unique<ScaleKind>();
}

}  // namespace velmorak
