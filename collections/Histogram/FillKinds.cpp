#include "FillKinds.h"

#include "AutomaticRange.h"
#include "Binning.h"
#include "Fillers.h"

#include <velmorak/OrderedAccumulation.h>

#include <functional>
#include <optional>
#include <utility>

namespace velmorak {

namespace {

const Schema& neededTable(const Schema* schema) {
    if (!schema) {
        throw Failure("table", "nothing is wired");
    }
    return *schema;
}

std::string titleOr(const Arguments& arguments, const std::string& input, const std::string& otherwise) {
    return arguments.text(input).empty() ? otherwise : arguments.text(input);
}

void entitle(Histogram1D& histogram, const std::vector<std::string>& titles) {
    histogram.setAxisTitle(titles[0]);
}
void entitle(Histogram2D& histogram, const std::vector<std::string>& titles) {
    histogram.setAxisTitle(0, titles[0]);
    histogram.setAxisTitle(1, titles[1]);
}
void entitle(Profile1D& profile, const std::vector<std::string>& titles) {
    profile.setAxisTitle(0, titles[0]);
}

/// What the three kinds have in common: where the numbers come from and what the object is called.
class Naming {
public:
    Naming(const Arguments& arguments, const RunContext& context, std::vector<std::string> titlesOfAxes);

    template <typename Object>
    void deliver(Object filled, const std::string& output, Results& results) const {
        auto object = std::make_shared<Object>(std::move(filled));
        object->name = name;
        object->title = title;
        entitle(*object, axisTitles);
        results.set(output, DataObjectPtr(std::move(object)));
    }

private:
    std::string name;
    std::string title;
    std::vector<std::string> axisTitles;
};

Naming::Naming(const Arguments& arguments, const RunContext& context, std::vector<std::string> titlesOfAxes)
    : name(context.pluginName()), title(titleOr(arguments, "title", name)), axisTitles(std::move(titlesOfAxes)) {}

/// Fills copies of an empty filler.
template <typename Filler>
class Filling : public Accumulation {
public:
    Filling(FillExpression filled, Filler emptyFiller, Naming names, std::string outputName)
        : quantity(std::move(filled)),
          empty(std::move(emptyFiller)),
          naming(std::move(names)),
          output(std::move(outputName)) {}

    std::unique_ptr<AccumulatorState> newState() const override {
        return std::make_unique<FillingState<Filler>>(quantity, empty);
    }
    void finish(AccumulatorState& state, Results& results) override {
        naming.deliver(static_cast<FillingState<Filler>&>(state).result(), output, results);
    }

private:
    FillExpression quantity;
    Filler empty;
    Naming naming;
    std::string output;
};

template <typename Filler>
std::unique_ptr<Accumulation> filling(FillExpression quantity, Filler empty, Naming naming, const std::string& output) {
    return std::make_unique<Filling<Filler>>(std::move(quantity), std::move(empty), std::move(naming), output);
}

/// Fills one object in the order of the rows.
template <typename Object>
class LateFilling : public OrderedAccumulation {
public:
    LateFilling(FillExpression filled, std::function<Object()> objectMaker, Naming names, std::string outputName)
        : quantity(std::move(filled)),
          make(std::move(objectMaker)),
          naming(std::move(names)),
          output(std::move(outputName)) {}

    std::unique_ptr<AccumulatorState> newState() const override {
        return std::make_unique<LateState<Object>>(quantity, make);
    }
    void finish(AccumulatorState& state, Results& results) override {
        naming.deliver(static_cast<LateState<Object>&>(state).result(), output, results);
    }

private:
    FillExpression quantity;
    std::function<Object()> make;
    Naming naming;
    std::string output;
};

/// An object with more cells than a chunk has rows is not made for each chunk.
template <typename Object>
std::unique_ptr<Accumulation> givenFilling(FillExpression quantity, std::size_t cells, std::function<Object()> make,
                                           Naming naming, const std::string& output) {
    if (cells > chunkRows) {
        return std::make_unique<LateFilling<Object>>(std::move(quantity), std::move(make), std::move(naming), output);
    }
    return filling(std::move(quantity), GivenRange<Object>(make()), std::move(naming), output);
}

/// Of one axis, which is given or found.
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

InputSpec tableInput() {
    return {.name = "table", .description = "Table whose rows are filled.", .type = ValueType::Table};
}

InputSpec coordinateInput(const std::string& name, const std::string& meaning) {
    InputSpec input = expressionInput();
    input.name = name;
    input.description = meaning + ": a column or an expression of columns, in their unit. A list gives all its values.";
    return input;
}

void append(Ports& ports, std::vector<InputSpec> inputs) {
    for (InputSpec& input : inputs) {
        ports.inputs.push_back(std::move(input));
    }
}

}  // namespace

std::string FillKind::notes() const {
    return R"(Bin i holds the values from its lower edge up to, but without, its upper edge. In each bin stand the number of
fills and the sums of w, w², w x and w x², where x is the value and w its weight; underflow and overflow have the same
sums. A NaN in the value or its weight is counted apart and is in no bin; an infinite value is underflow or overflow. The
height of a bin is the sum of w, its error the root of the sum of w².

An automatic range goes from one round number to another around all finite values, in as many bins as are asked for;
the width of a bin is 1, 2, 2.5 or 5 times a power of ten. The table is read once: up to 100 values for each bin are kept
as they are, more are counted in fine cells between multiples of a power of ten, which nest in the bins exactly. Without
any finite value the range is that of 0, and around a single number it is at least 1 wide. An automatic range has at most
10000 bins.)";
}

std::string FillKind::refusal(const std::string& input, const std::string& value) const {
    if (input == "expression" || input == "x" || input == "y" || input == "weight") {
        return expressionRefusal(value);
    }
    if (input == "edges" || input == "xedges" || input == "yedges") {
        return edgesRefusal(value);
    }
    return {};
}

std::string Histogram1DKind::summary() const {
    return "Fills a histogram of one quantity of a table, with weights and exact moments in each bin.";
}

Ports Histogram1DKind::ports(const ValueTexts&) const {
    Ports ports;
    ports.inputs = {tableInput(), expressionInput(), weightInput()};
    append(ports, axisInputs("the expression"));
    append(ports, {titleInput(), axisTitleInput("axis", "the expression"), rangeInput()});
    ports.outputs = {{.name = "histogram",
                      .description = "Entries and sums of weights in each bin, with underflow and overflow; NaN is "
                                     "counted apart.",
                      .type = ValueType::Histogram}};
    return ports;
}

std::unique_ptr<Accumulation> Histogram1DKind::prepare(const Arguments& arguments, const Schema* schema,
                                                       RunContext& context) const {
    FillExpression quantity(arguments, neededTable(schema));
    Naming naming(arguments, context, {titleOr(arguments, "axis", quantity.label())});
    return fillingOf<Histogram1D>(arguments, std::move(quantity), std::move(naming), "histogram");
}

std::string Histogram2DKind::summary() const {
    return "Fills a histogram of two quantities of a table, with weights and exact moments in each bin.";
}

std::string Histogram2DKind::notes() const {
    return R"(A bin holds the rows whose x and y both lie in its edges, the upper ones left out. In each bin stand the number of
fills and the sums of w, w², w x, w x², w y and w y². All cells outside keep theirs: underflow and overflow in x for each
bin in y, and the other way round. A NaN in x, y or the weight is counted apart and is in no cell. Where one expression is
a list, the other may be one of the same lengths, or a number for each row.)";
}

Ports Histogram2DKind::ports(const ValueTexts&) const {
    Ports ports;
    ports.inputs = {tableInput(), coordinateInput("x", "What is filled along the horizontal axis"),
                    coordinateInput("y", "What is filled along the vertical axis"), weightInput()};
    append(ports, axisInputs("x", "x"));
    append(ports, axisInputs("y", "y"));
    append(ports, {titleInput(), axisTitleInput("xaxis", "x"), axisTitleInput("yaxis", "y")});
    ports.outputs = {{.name = "histogram",
                      .description =
                          "Entries and sums of weights in each bin of x and y, and in each cell outside; NaN "
                          "is counted apart.",
                      .type = ValueType::Histogram}};
    return ports;
}

std::unique_ptr<Accumulation> Histogram2DKind::prepare(const Arguments& arguments, const Schema* schema,
                                                       RunContext& context) const {
    FillExpression quantity(arguments, neededTable(schema), {"x", "y"});
    Naming naming(arguments, context,
                  {titleOr(arguments, "xaxis", quantity.label(0)), titleOr(arguments, "yaxis", quantity.label(1))});
    const Axis x = axisFrom(arguments, "x");
    const Axis y = axisFrom(arguments, "y");
    if ((x.bins() + 2) > Grid<2>::maxCells / (y.bins() + 2)) {
        throw Failure("ybins", std::to_string(x.bins()) + " times " + std::to_string(y.bins()) + " bins fit no memory");
    }
    const Grid<2> grid({x, y});
    return givenFilling<Histogram2D>(
        std::move(quantity), grid.cellCount(), [grid] { return Histogram2D(grid); }, std::move(naming), "histogram");
}

std::string Profile1DKind::summary() const {
    return "Fills the mean and spread of one quantity of a table in bins of another.";
}

std::string Profile1DKind::notes() const {
    return R"(In each bin of x, with w the weights: mean = sum of w y / sum of w, rms² = sum of w y² / sum of w - mean²,
and the error of the mean is rms / root of n, where n = (sum of w)² / sum of w² is the effective number of entries. The rms is
that of the population. A bin without fills has no mean: it is NaN.

)" + FillKind::notes();
}

Ports Profile1DKind::ports(const ValueTexts&) const {
    Ports ports;
    ports.inputs = {tableInput(), coordinateInput("x", "What the bins are made of"),
                    coordinateInput("y", "What is averaged in each bin"), weightInput()};
    append(ports, axisInputs("x"));
    append(ports, {titleInput(), axisTitleInput("axis", "x"), rangeInput()});
    ports.outputs = {
        {.name = "profile",
         .description = "Mean of y with its error in each bin of x, in the unit of y; NaN is counted apart.",
         .type = ValueType::Profile}};
    return ports;
}

std::unique_ptr<Accumulation> Profile1DKind::prepare(const Arguments& arguments, const Schema* schema,
                                                     RunContext& context) const {
    FillExpression quantity(arguments, neededTable(schema), {"x", "y"});
    Naming naming(arguments, context, {titleOr(arguments, "axis", quantity.label(0))});
    return fillingOf<Profile1D>(arguments, std::move(quantity), std::move(naming), "profile");
}

}  // namespace velmorak
