#include "kinds.h"

#include "Binning.h"
#include "Filling.h"
#include "Objects.h"

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
    std::size_t cells = 1;
    std::string bins;
    for (std::size_t direction = 0; direction < axes; ++direction) {
        all.push_back(axisFrom(arguments, letters[direction]));
        bins += (direction > 0 ? " x " : "") + std::to_string(all.back().bins());
        const std::size_t along = all.back().bins() + 2;
        cells = along > Grid<axes>::maxCells / cells ? Grid<axes>::maxCells + 1 : cells * along;
    }
    if (cells > Grid<axes>::maxCells) {
        throw Failure(std::string(letters[axes - 1]) + "bins", bins + " bins need too much memory");
    }
    return gridOf<axes>([&](std::size_t direction) { return all[direction]; });
}

/// The quantities x, y ... of which the first ones are coordinates.
template <typename Object>
std::unique_ptr<Accumulation> gridFilling(const Arguments& arguments, const Schema* schema, const RunContext& context,
                                          std::size_t quantities, const std::string& output) {
    const std::vector<std::string> inputs(letters.begin(), letters.begin() + static_cast<std::ptrdiff_t>(quantities));
    FillExpression quantity(arguments, neededTable(schema), inputs);
    std::vector<std::string> titles;
    for (std::size_t direction = 0; direction < Object::dimensions; ++direction) {
        titles.push_back(titleOr(arguments, inputs[direction] + "axis", quantity.label(direction)));
    }
    Naming naming(arguments, context, std::move(titles));
    const auto grid = gridFrom<Object::dimensions>(arguments);
    return givenFilling<Object>(
        std::move(quantity), grid.cellCount(), [grid] { return Object(grid); }, std::move(naming), output);
}

/// The inputs for the axes, for the title and for the titles of the axes.
void appendAxes(Ports& ports, std::size_t axes) {
    for (std::size_t direction = 0; direction < axes; ++direction) {
        append(ports, axisInputs(letters[direction], letters[direction]));
    }
    append(ports, {titleInput()});
    for (std::size_t direction = 0; direction < axes; ++direction) {
        append(ports, {axisTitleInput(letters[direction] + std::string("axis"), letters[direction])});
    }
}

/// Fills a two-dimensional histogram.
class Histogram2DKind : public FillKind {
public:
    std::string name() const override { return "Histogram2D"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    std::unique_ptr<Accumulation> prepare(const Arguments& arguments, const Schema* schema,
                                          RunContext& context) const override;
};

/// Fills a three-dimensional histogram.
class Histogram3DKind : public FillKind {
public:
    std::string name() const override { return "Histogram3D"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    std::unique_ptr<Accumulation> prepare(const Arguments& arguments, const Schema* schema,
                                          RunContext& context) const override;
};

/// Fills the mean of one quantity in bins of two others.
class Profile2DKind : public FillKind {
public:
    std::string name() const override { return "Profile2D"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    std::unique_ptr<Accumulation> prepare(const Arguments& arguments, const Schema* schema,
                                          RunContext& context) const override;
};

}  // namespace

std::string Histogram2DKind::summary() const {
    return "Fills a two-dimensional histogram with quantities of a table, with weights and exact moments in each bin.";
}

std::string Histogram2DKind::notes() const {
    return R"(A bin holds the rows whose x and y both lie between its edges, the upper ones excluded. Each bin stores the number of
fills and the sums of w, w², w x, w x², w y, w y² and w x y, and so do all cells outside: underflow and overflow in x for
each bin in y, and vice versa. If x, y or the weight is NaN, the fill is counted separately and goes into no cell. If one
expression is a list, the other may be a list of the same length or a single number in each row. The sums are formed about
a point close to the mean of the fills of each cell, so that means, spreads and the correlation do not suffer from
cancellation.)";
}

Ports Histogram2DKind::ports(const ValueTexts&) const {
    Ports ports;
    ports.inputs = {tableInput(), coordinateInput("x", "Quantity along the horizontal axis"),
                    coordinateInput("y", "Quantity along the vertical axis"), weightInput()};
    appendAxes(ports, 2);
    ports.outputs = {{.name = "histogram",
                      .description =
                          "Entries and sums of weights in each bin of x and y, and in each cell outside; NaN "
                          "is counted separately.",
                      .type = ValueType::Histogram}};
    return ports;
}

std::unique_ptr<Accumulation> Histogram2DKind::prepare(const Arguments& arguments, const Schema* schema,
                                                       RunContext& context) const {
    return gridFilling<Histogram2D>(arguments, schema, context, 2, "histogram");
}

std::string Histogram3DKind::summary() const {
    return "Fills a three-dimensional histogram with quantities of a table, with weights and exact moments in each "
           "bin.";
}

std::string Histogram3DKind::notes() const {
    return R"(A bin holds the rows whose x, y and z all lie between its edges, the upper ones excluded. Each bin, and each cell
outside, stores the number of fills and the sums of w, w², of w times each coordinate and of w times each product of two
coordinates, about a point close to the mean of its fills. If a coordinate or the weight is NaN, the fill is counted
separately and goes into no cell. Project turns the histogram into one of two dimensions, which can be drawn.)";
}

Ports Histogram3DKind::ports(const ValueTexts&) const {
    Ports ports;
    ports.inputs = {tableInput(), coordinateInput("x", "Quantity along the first axis"),
                    coordinateInput("y", "Quantity along the second axis"),
                    coordinateInput("z", "Quantity along the third axis"), weightInput()};
    appendAxes(ports, 3);
    ports.outputs = {{.name = "histogram",
                      .description =
                          "Entries and sums of weights in each bin of x, y and z, and in each cell outside; NaN "
                          "is counted separately.",
                      .type = ValueType::Histogram}};
    return ports;
}

std::unique_ptr<Accumulation> Histogram3DKind::prepare(const Arguments& arguments, const Schema* schema,
                                                       RunContext& context) const {
    return gridFilling<Histogram3D>(arguments, schema, context, 3, "histogram");
}

std::string Profile2DKind::summary() const {
    return "Fills the mean and spread of one quantity of a table in bins of two others.";
}

std::string Profile2DKind::notes() const {
    return R"(In each bin of x and y, with w the weights: mean = sum of w z / sum of w, rms² = sum of w z² / sum of w - mean²,
and the error of the mean is rms / root of n, where n = (sum of w)² / sum of w² is the effective number of entries. The rms is
that of the population. The sums are formed about a point close to the mean, so that the spread of large values is not lost.
The mean of a bin without fills is NaN. If a quantity or the weight is NaN, the fill is counted separately and goes into no
cell.)";
}

Ports Profile2DKind::ports(const ValueTexts&) const {
    Ports ports;
    ports.inputs = {tableInput(), coordinateInput("x", "Quantity along the horizontal axis"),
                    coordinateInput("y", "Quantity along the vertical axis"),
                    coordinateInput("z", "Quantity that is averaged in each bin"), weightInput()};
    appendAxes(ports, 2);
    ports.outputs = {
        {.name = "profile",
         .description = "Mean of z with its error in each bin of x and y, in the unit of z; NaN is counted separately.",
         .type = ValueType::Profile}};
    return ports;
}

std::unique_ptr<Accumulation> Profile2DKind::prepare(const Arguments& arguments, const Schema* schema,
                                                     RunContext& context) const {
    return gridFilling<Profile2D>(arguments, schema, context, 3, "profile");
}

std::unique_ptr<Kind> makeHistogram2D() {
    return std::make_unique<Histogram2DKind>();
}

std::unique_ptr<Kind> makeHistogram3D() {
    return std::make_unique<Histogram3DKind>();
}

std::unique_ptr<Kind> makeProfile2D() {
    return std::make_unique<Profile2DKind>();
}

}  // namespace velmorak
