#include "kinds.h"

#include "AutomaticRange.h"
#include "Binning.h"
#include "FillKind.h"
#include "Filling.h"
#include "shared/AppendInputs.h"

#include <utility>

namespace velmorak {

namespace {

/// Fills an object of one axis, whose range is given or automatic.
template <typename Object>
std::unique_ptr<Accumulation> fillingOf(const Arguments& arguments, FillExpression quantity, Naming naming,
                                        const std::string& output) {
    if (isRangeAutomatic(arguments)) {
        return filling(std::move(quantity), AutomaticRange<Object>(static_cast<std::size_t>(arguments.integer("bins"))),
                       std::move(naming), output);
    }
    const Axis axis = axisFrom(arguments);
    return givenFilling<Object>(
        std::move(quantity), axis.bins() + 2, [axis] { return onAxis<Object>(axis); }, std::move(naming), output);
}

/// The inputs for the axis, for the titles and for the range.
std::vector<InputSpec> rangeInputs(const std::string& expression) {
    std::vector<InputSpec> inputs = axisInputs(expression);
    appendInputs(inputs, {titleInput(), axisTitleInput("axis", expression), rangeInput()});
    return inputs;
}

Ports histogramPorts() {
    Ports ports{{tableInput(), expressionInput(), weightInput()},
                {{.name = "histogram",
                  .description = "Entries and sums of weights in each bin, with underflow and overflow; NaN is "
                                 "counted separately.",
                  .type = ValueType::Histogram}}};
    appendInputs(ports.inputs, rangeInputs("the expression"));
    return ports;
}

Ports profilePorts() {
    Ports ports{
        quantityInputs({"Quantity that is binned", "Quantity that is averaged in each bin"}),
        {{.name = "profile",
          .description = "Mean of y with its error in each bin of x, in the unit of y; NaN is counted separately.",
          .type = ValueType::Profile}}};
    appendInputs(ports.inputs, rangeInputs("x"));
    return ports;
}

std::unique_ptr<Accumulation> histogramFilling(const Arguments& arguments, const Schema& schema, RunContext& context) {
    FillExpression quantity(arguments, schema);
    Naming naming(arguments, context, {titleOr(arguments, "axis", quantity.label())});
    return fillingOf<Histogram1D>(arguments, std::move(quantity), std::move(naming), "histogram");
}

std::unique_ptr<Accumulation> profileFilling(const Arguments& arguments, const Schema& schema, RunContext& context) {
    FillExpression quantity(arguments, schema, {"x", "y"});
    Naming naming(arguments, context, {titleOr(arguments, "axis", quantity.label(0))});
    return fillingOf<Profile1D>(arguments, std::move(quantity), std::move(naming), "profile");
}

std::string binNotes() {
    return R"(A bin holds the values from its lower edge up to, but excluding, its upper edge. Each bin stores the number of
fills and the sums of w, w², w x and w x², where x is the value and w its weight; so do underflow and overflow. If the value
or its weight is NaN, the fill is counted separately and goes into no bin; an infinite value is underflow or overflow. The
height of a bin is the sum of w, its error the root of the sum of w². The sums of a bin are formed about a point close to
the mean of its fills, so that mean and spread do not suffer from cancellation, however far the values are from 0.

An automatic range extends between round numbers around all finite values, with the requested number of bins;
the width of a bin is 1, 2, 2.5 or 5 times a power of ten. The table is read once: up to 100 values per bin are kept
as they are, more are counted in fine cells between multiples of a power of ten, which nest in the bins exactly. Without
finite values the range is the one for a value of 0, and around a single value it is at least 1 wide. An automatic range has at most
10000 bins.)";
}

}  // namespace

std::unique_ptr<Kind> makeHistogram1D() {
    return std::make_unique<FillKind>(FillKind::Description{
        .name = "Histogram1D",
        .summary = "Fills a histogram with a quantity of a table, with weights and exact moments in each bin.",
        .notes = binNotes(),
        .ports = histogramPorts(),
        .prepare = histogramFilling});
}

std::unique_ptr<Kind> makeProfile1D() {
    return std::make_unique<FillKind>(FillKind::Description{
        .name = "Profile1D",
        .summary = "Fills the mean and spread of one quantity of a table in bins of another.",
        .notes =
            R"(In each bin of x, with w the weights: mean = sum of w y / sum of w, rms² = sum of w y² / sum of w - mean²,
and the error of the mean is rms / root of n, where n = (sum of w)² / sum of w² is the effective number of entries. The rms is
that of the population. The mean of a bin without fills is NaN.

)" + binNotes(),
        .ports = profilePorts(),
        .prepare = profileFilling});
}

}  // namespace velmorak
