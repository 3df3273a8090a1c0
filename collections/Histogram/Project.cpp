#include "kinds.h"

#include "Objects.h"
#include "ScatterAdd.h"

#include <velmorak/Profile.h>

#include <array>
#include <limits>

namespace velmorak {

namespace {

/// Whether a cell's centre along the projected axis lies in the range; underflow and overflow count as infinite.
bool isTaken(const Axis& axis, std::size_t cell, double low, double high) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    if (cell == 0) {
        return low == -infinity;
    }
    if (cell == axis.bins() + 1) {
        return high == infinity;
    }
    return axis.center(cell - 1) >= low && axis.center(cell - 1) < high;
}

/// The sums in each cell of the kept axis: its own coordinate, and the other one as the value.
CellVector<CellSums<2>> projected(const Histogram2D& plane, std::size_t kept, double low, double high) {
    const std::array<std::size_t, 2> order{kept, 1 - kept};
    CellVector<CellSums<2>> sums(plane.grid().axis(kept).bins() + 2);
    for (std::size_t cell = 0; cell < plane.cells().size(); ++cell) {
        const Grid<2>::Cells cells = plane.grid().alongAxes(cell);
        if (isTaken(plane.grid().axis(1 - kept), cells[1 - kept], low, high)) {
            sums[cells[kept]].add(plane.cells()[cell].of(order));
        }
    }
    return sums;
}

/// Sums a two-dimensional histogram along one axis.
class ProjectKind : public Function {
public:
    std::string name() const override { return "Project"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;
};

}  // namespace

std::string ProjectKind::summary() const {
    return "Projects a two-dimensional histogram onto one of its axes, as a histogram and as a profile.";
}

std::string ProjectKind::notes() const {
    return R"(Bins of the other axis whose centre lies in [low, high) are summed. An infinite limit includes the underflow or overflow
of that axis, so that with two infinite limits every fill counts. The profile has the mean and rms of the other coordinate
in each bin, computed from the exact sums of the fills rather than from bin centres.)";
}

Ports ProjectKind::ports(const ValueTexts&) const {
    return {{histogramInput("histogram", "Two-dimensional histogram."),
             {.name = "axis",
              .description = "Axis to project onto: x is the horizontal one, y the vertical one.",
              .type = ValueType::Choice,
              .value = "x",
              .choices = {"x", "y"}},
             {.name = "low",
              .description = "Lower limit for the bin centres of the other axis, in its unit.",
              .value = "-Infinity"},
             {.name = "high",
              .description = "Upper limit for the bin centres of the other axis, in its unit.",
              .value = "Infinity"},
             derivedTitleInput()},
            {{.name = "histogram",
              .description = "Sums of the selected bins along the axis.",
              .type = ValueType::Histogram},
             {.name = "profile",
              .description = "Mean of the other coordinate in each bin, in its unit.",
              .type = ValueType::Profile}}};
}

void ProjectKind::evaluate(const Arguments& arguments, Results& results, RunContext& context) const {
    const Histogram2DPtr plane = histogram2D(arguments, "histogram");
    const std::size_t kept = arguments.text("axis") == "x" ? 0 : 1;
    const double low = arguments.number("low");
    const double high = arguments.number("high");
    if (!(low < high)) {
        throw Failure("high", "no bin centres lie between " + textOf(low) + " and " + textOf(high));
    }
    const CellVector<CellSums<2>> sums = projected(*plane, kept, low, high);
    CellVector<BinSums> heights;
    heights.reserve(sums.size());
    for (const CellSums<2>& cell : sums) {
        heights.push_back(cell.of<1>({0}));
    }
    const Axis& axis = plane->grid().axis(kept);
    deliver(Histogram1D(axis, std::move(heights), plane->nanEntries()), *plane, arguments, context, results);
    auto profile =
        std::make_shared<Profile1D>(Grid<1>({axis}), sums, CellVector<ProfileReading>{}, plane->nanEntries());
    nameAfter(*profile, *plane, arguments, context);
    results.set("profile", DataObjectPtr(std::move(profile)));
}

std::unique_ptr<Kind> makeProject() {
    return std::make_unique<ProjectKind>();
}

}  // namespace velmorak
