#include "kinds.h"

#include "Binning.h"
#include "FillKind.h"
#include "Filling.h"
#include "Objects.h"
#include "shared/AppendInputs.h"

#include <array>
#include <utility>

namespace velmorak {

namespace {

constexpr std::array<const char*, 3> letters{"x", "y", "z"};

/// The axes described by the inputs "xbins", "ybins" ...
/// @throws Failure if they span too many cells.
template <std::size_t axes>
Grid<axes> gridFrom(const Arguments& arguments) {
    std::vector<Axis> all;
    std::size_t room = Grid<axes>::maxCells;  // Divided by the cells along each axis.
    std::string bins;
    for (std::size_t direction = 0; direction < axes; ++direction) {
        all.push_back(axisFrom(arguments, letters[direction]));
        bins += (direction > 0 ? " x " : "") + std::to_string(all.back().bins());
        room /= all.back().bins() + 2;
    }
    if (room == 0) {
        throw Failure(std::string(letters[axes - 1]) + "bins", bins + " bins need too much memory");
    }
    return gridOf<axes>([&](std::size_t direction) { return all[direction]; });
}

/// The quantities x, y ... of which the first ones are coordinates.
template <typename Object, std::size_t quantities>
std::unique_ptr<Accumulation> gridFilling(const Arguments& arguments, const Schema& schema, RunContext& context) {
    const std::vector<std::string> inputs(letters.begin(), letters.begin() + quantities);
    FillExpression quantity(arguments, schema, inputs);
    std::vector<std::string> titles;
    for (std::size_t direction = 0; direction < Object::dimensions; ++direction) {
        titles.push_back(titleOr(arguments, inputs[direction] + "axis", quantity.label(direction)));
    }
    Naming naming(arguments, context, std::move(titles));
    const auto grid = gridFrom<Object::dimensions>(arguments);
    const bool isProfile = quantities > Object::dimensions;
    return givenFilling<Object>(
        std::move(quantity), grid.cellCount(), [grid] { return Object(grid); }, std::move(naming),
        isProfile ? "profile" : "histogram");
}

/// @param meanings of the quantities.
Ports gridPorts(const std::vector<std::string>& meanings, std::size_t axes, OutputSpec output) {
    Ports ports{quantityInputs(meanings), {std::move(output)}};
    for (std::size_t direction = 0; direction < axes; ++direction) {
        appendInputs(ports.inputs, axisInputs(letters[direction], letters[direction]));
    }
    ports.inputs.push_back(titleInput());
    for (std::size_t direction = 0; direction < axes; ++direction) {
        ports.inputs.push_back(axisTitleInput(letters[direction] + std::string("axis"), letters[direction]));
    }
    return ports;
}

}  // namespace

std::unique_ptr<Kind> makeHistogram2D() {
    return std::make_unique<FillKind>(FillKind::Description{
        .name = "Histogram2D",
        .summary =
            "Fills a two-dimensional histogram with quantities of a table, with weights and exact moments in each bin.",
        .notes =
            R"(A bin holds the rows whose x and y both lie between its edges, the upper ones excluded. Each bin stores the number of
fills and the sums of w, w², w x, w x², w y, w y² and w x y, and so do all cells outside: underflow and overflow in x for
each bin in y, and vice versa. If x, y or the weight is NaN, the fill is counted separately and goes into no cell. If one
expression is a list, the other may be a list of the same length or a single number in each row. The sums are formed about
a point close to the mean of the fills of each cell, so that means, spreads and the correlation do not suffer from
cancellation.)",
        .ports = gridPorts({"Quantity along the horizontal axis", "Quantity along the vertical axis"}, 2,
                           {.name = "histogram",
                            .description = "Entries and sums of weights in each bin of x and y, and in each cell "
                                           "outside; NaN is counted separately.",
                            .type = ValueType::Histogram}),
        .prepare = gridFilling<Histogram2D, 2>});
}

std::unique_ptr<Kind> makeHistogram3D() {
    return std::make_unique<FillKind>(FillKind::Description{
        .name = "Histogram3D",
        .summary =
            "Fills a three-dimensional histogram with quantities of a table, with weights and exact moments in each "
            "bin.",
        .notes =
            R"(A bin holds the rows whose x, y and z all lie between its edges, the upper ones excluded. Each bin, and each cell
outside, stores the number of fills and the sums of w, w², of w times each coordinate and of w times each product of two
coordinates, about a point close to the mean of its fills. If a coordinate or the weight is NaN, the fill is counted
separately and goes into no cell. Project turns the histogram into one of two dimensions, which can be drawn.)",
        .ports = gridPorts(
            {"Quantity along the first axis", "Quantity along the second axis", "Quantity along the third axis"}, 3,
            {.name = "histogram",
             .description = "Entries and sums of weights in each bin of x, y and z, and in each cell "
                            "outside; NaN is counted separately.",
             .type = ValueType::Histogram}),
        .prepare = gridFilling<Histogram3D, 3>});
}

std::unique_ptr<Kind> makeProfile2D() {
    return std::make_unique<FillKind>(FillKind::Description{
        .name = "Profile2D",
        .summary = "Fills the mean and spread of one quantity of a table in bins of two others.",
        .notes =
            R"(In each bin of x and y, with w the weights: mean = sum of w z / sum of w, rms² = sum of w z² / sum of w - mean²,
and the error of the mean is rms / root of n, where n = (sum of w)² / sum of w² is the effective number of entries. The rms is
that of the population. The sums are formed about a point close to the mean, so that the spread of large values is not lost.
The mean of a bin without fills is NaN. If a quantity or the weight is NaN, the fill is counted separately and goes into no
cell.)",
        .ports = gridPorts({"Quantity along the horizontal axis", "Quantity along the vertical axis",
                            "Quantity that is averaged in each bin"},
                           2,
                           {.name = "profile",
                            .description = "Mean of z with its error in each bin of x and y, in the unit of z; NaN is "
                                           "counted separately.",
                            .type = ValueType::Profile}),
        .prepare = gridFilling<Profile2D, 3>});
}

}  // namespace velmorak
