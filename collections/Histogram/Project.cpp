#include "kinds.h"

#include "Objects.h"
#include "ScatterAdd.h"

#include <velmorak/DataObjects.h>

#include <algorithm>
#include <array>
#include <limits>
#include <numeric>
#include <string_view>
#include <type_traits>

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

/// The axes that are kept, and the range of the axis that is summed over.
template <std::size_t axes>
struct Projection {
    std::array<std::size_t, axes + 1> order;  ///< The kept directions and then the summed one.
    double low = 0.0;
    double high = 0.0;
};

/// The sums in each cell of the kept axes: their coordinates, and that of the summed axis as the value.
template <std::size_t axes>
CellVector<CellSums<axes + 1>> projected(const Histogram<axes + 1>& source, const Grid<axes>& target,
                                         const Projection<axes>& projection) {
    CellVector<CellSums<axes + 1>> sums(target.cellCount());
    for (std::size_t cell = 0; cell < source.cells().size(); ++cell) {
        const auto cells = source.grid().alongAxes(cell);
        const std::size_t across = projection.order.back();
        if (isZero(source.cells()[cell]) ||
            !isTaken(source.grid().axis(across), cells[across], projection.low, projection.high)) {
            continue;
        }
        typename Grid<axes>::Cells kept{};
        std::copy_n(projection.order.begin(), axes, kept.begin());
        std::transform(kept.begin(), kept.end(), kept.begin(), [&](std::size_t axis) { return cells[axis]; });
        sums[target.cell(kept)].add(source.cells()[cell].of(projection.order));
    }
    return sums;
}

template <std::size_t axes>
std::array<std::size_t, axes> firstOnes() {
    std::array<std::size_t, axes> order{};
    std::iota(order.begin(), order.end(), std::size_t{0});
    return order;
}

template <std::size_t axes>
void project(const Histogram<axes + 1>& source, const Projection<axes>& projection, const Arguments& arguments,
             RunContext& context, Results& results) {
    const Grid<axes> grid =
        gridOf<axes>([&](std::size_t direction) { return source.grid().axis(projection.order[direction]); });
    const CellVector<CellSums<axes + 1>> sums = projected<axes>(source, grid, projection);
    CellVector<CellSums<axes>> heights(sums.size());
    for (std::size_t cell = 0; cell < sums.size(); ++cell) {
        if (!isZero(sums[cell])) {
            heights[cell] = sums[cell].template of(firstOnes<axes>());
        }
    }
    deliver(Histogram<axes>(grid, std::move(heights), source.nanEntries()), source, arguments, context, results);
    auto profile = std::make_shared<Profile<axes>>(grid, sums, CellVector<ProfileReading>{}, source.nanEntries());
    nameAfter(*profile, source, arguments, context);
    results.set("profile", DataObjectPtr(std::move(profile)));
}

/// The directions that a choice such as "x" or "yz" keeps, and then the summed one.
/// @throws Failure if it does not keep all directions but one.
template <std::size_t axes>
std::array<std::size_t, axes + 1> orderOf(const std::string& choice) {
    constexpr std::string_view letters = "xyz";
    std::array<std::size_t, axes + 1> order{};
    std::size_t rest = axes * (axes + 1) / 2;
    for (std::size_t i = 0; i < axes; ++i) {
        const std::size_t direction = i < choice.size() ? letters.find(choice[i]) : axes + 1;
        if (choice.size() != axes || direction > axes) {
            throw Failure("axis", axes == 1 ? "a two-dimensional histogram is projected onto x or y"
                                            : "a three-dimensional histogram is projected onto xy, xz or yz; project "
                                              "the result again for one axis");
        }
        order[i] = direction;
        rest -= direction;
    }
    order.back() = rest;
    return order;
}

/// Sums a histogram along one axis.
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
    return "Projects a histogram of two or three dimensions onto one axis less, as a histogram and as a profile.";
}

std::string ProjectKind::notes() const {
    return R"(Bins of the summed axis whose centre lies in [low, high) are summed. An infinite limit includes the underflow or overflow
of that axis, so that with two infinite limits every fill counts. The profile has the mean and rms of the summed coordinate
in each bin, computed from the exact sums of the fills rather than from bin centres.)";
}

Ports ProjectKind::ports(const ValueTexts&) const {
    return {
        {histogramInput("histogram", "Histogram of two or three dimensions."),
         {.name = "axis",
          .description =
              "Axes to project onto: x or y of a two-dimensional histogram, xy, xz or yz of a three-dimensional one.",
          .type = ValueType::Choice,
          .value = "x",
          .choices = {"x", "y", "xy", "xz", "yz"}},
         {.name = "low",
          .description = "Lower limit for the bin centres of the summed axis, in its unit.",
          .value = "-Infinity"},
         {.name = "high",
          .description = "Upper limit for the bin centres of the summed axis, in its unit.",
          .value = "Infinity"},
         derivedTitleInput()},
        {{.name = "histogram",
          .description = "Sums of the selected bins along the summed axis.",
          .type = ValueType::Histogram},
         {.name = "profile",
          .description = "Mean of the summed coordinate in each bin, in its unit.",
          .type = ValueType::Profile}}};
}

void ProjectKind::evaluate(const Arguments& arguments, Results& results, RunContext& context) const {
    const double low = arguments.number("low");
    const double high = arguments.number("high");
    if (!(low < high)) {
        throw Failure("high", "no bin centres lie between " + textOf(low) + " and " + textOf(high));
    }
    const auto onto = [&]<std::size_t axes>(const Histogram<axes + 1>& source,
                                            std::integral_constant<std::size_t, axes>) {
        const auto order = orderOf<axes>(arguments.text("axis"));
        project<axes>(source, {.order = order, .low = low, .high = high}, arguments, context, results);
    };
    std::visit(
        overloaded{
            [](const HistogramPtr&) { throw Failure("histogram", "a one-dimensional histogram cannot be projected"); },
            [&](const Histogram2DPtr& plane) { onto(*plane, std::integral_constant<std::size_t, 1>()); },
            [&](const Histogram3DPtr& space) { onto(*space, std::integral_constant<std::size_t, 2>()); },
        },
        anyHistogram(arguments, "histogram"));
}

std::unique_ptr<Kind> makeProject() {
    return std::make_unique<ProjectKind>();
}

}  // namespace velmorak
