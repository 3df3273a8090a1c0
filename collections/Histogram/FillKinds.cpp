#include "kinds.h"

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

template <typename Object>
void entitle(Object& object, const std::vector<std::string>& titles) {
    for (std::size_t direction = 0; direction < Object::dimensions; ++direction) {
        object.setAxisTitle(direction, titles[direction]);
    }
}

/// Name and titles of the filled object.
class Naming {
public:
    Naming(const Arguments& arguments, const RunContext& context, std::vector<std::string> axisTitles);

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

Naming::Naming(const Arguments& arguments, const RunContext& context, std::vector<std::string> axisTitles)
    : name(context.pluginName()), title(titleOr(arguments, "title", name)), axisTitles(std::move(axisTitles)) {}

/// Fills copies of an empty filler.
template <typename Filler>
class Filling : public Accumulation {
public:
    Filling(FillExpression quantity, Filler empty, Naming naming, std::string output)
        : quantity(std::move(quantity)),
          empty(std::move(empty)),
          naming(std::move(naming)),
          output(std::move(output)) {}

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

/// Fills a single object in the order of the rows.
template <typename Object>
class LateFilling : public OrderedAccumulation {
public:
    LateFilling(FillExpression quantity, std::function<Object()> make, Naming naming, std::string output)
        : quantity(std::move(quantity)), make(std::move(make)), naming(std::move(naming)), output(std::move(output)) {}

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

/// An object with more cells than a chunk has rows is not copied for each chunk.
template <typename Object>
std::unique_ptr<Accumulation> givenFilling(FillExpression quantity, std::size_t cells, std::function<Object()> make,
                                           Naming naming, const std::string& output) {
    if (cells > chunkRows) {
        return std::make_unique<LateFilling<Object>>(std::move(quantity), std::move(make), std::move(naming), output);
    }
    return filling(std::move(quantity), GivenRange<Object>(make()), std::move(naming), output);
}

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

InputSpec tableInput() {
    return {.name = "table", .description = "Table whose rows are filled.", .type = ValueType::Table};
}

InputSpec coordinateInput(const std::string& name, const std::string& meaning) {
    InputSpec input = expressionInput();
    input.name = name;
    input.description =
        meaning + ": a column or an expression of columns, in their unit. Of a list, all values are filled.";
    return input;
}

void append(Ports& ports, std::vector<InputSpec> inputs) {
    for (InputSpec& input : inputs) {
        ports.inputs.push_back(std::move(input));
    }
}

/// Kinds that fill an object from the rows of a table.
class FillKind : public Accumulator {
public:
    std::string notes() const override;
    std::string refusal(const std::string& input, const std::string& value) const override;
};

/// Fills a one-dimensional histogram.
class Histogram1DKind : public FillKind {
public:
    std::string name() const override { return "Histogram1D"; }
    std::string summary() const override;
    Ports ports(const ValueTexts& values) const override;
    std::unique_ptr<Accumulation> prepare(const Arguments& arguments, const Schema* schema,
                                          RunContext& context) const override;
};

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

/// Fills the mean of one quantity in bins of another.
class Profile1DKind : public FillKind {
public:
    std::string name() const override { return "Profile1D"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    std::unique_ptr<Accumulation> prepare(const Arguments& arguments, const Schema* schema,
                                          RunContext& context) const override;
};

}  // namespace

std::string FillKind::notes() const {
    return R"(A bin holds the values from its lower edge up to, but excluding, its upper edge. Each bin stores the number of
fills and the sums of w, w², w x and w x², where x is the value and w its weight; so do underflow and overflow. If the value
or its weight is NaN, the fill is counted separately and goes into no bin; an infinite value is underflow or overflow. The
height of a bin is the sum of w, its error the root of the sum of w².

An automatic range extends between round numbers around all finite values, with the requested number of bins;
the width of a bin is 1, 2, 2.5 or 5 times a power of ten. The table is read once: up to 100 values per bin are kept
as they are, more are counted in fine cells between multiples of a power of ten, which nest in the bins exactly. Without
finite values the range is the one for a value of 0, and around a single value it is at least 1 wide. An automatic range has at most
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
    return "Fills a histogram with a quantity of a table, with weights and exact moments in each bin.";
}

Ports Histogram1DKind::ports(const ValueTexts&) const {
    Ports ports;
    ports.inputs = {tableInput(), expressionInput(), weightInput()};
    append(ports, axisInputs("the expression"));
    append(ports, {titleInput(), axisTitleInput("axis", "the expression"), rangeInput()});
    ports.outputs = {{.name = "histogram",
                      .description = "Entries and sums of weights in each bin, with underflow and overflow; NaN is "
                                     "counted separately.",
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
    return "Fills a two-dimensional histogram with quantities of a table, with weights and exact moments in each bin.";
}

std::string Histogram2DKind::notes() const {
    return R"(A bin holds the rows whose x and y both lie between its edges, the upper ones excluded. Each bin stores the number of
fills and the sums of w, w², w x, w x², w y and w y², and so do all cells outside: underflow and overflow in x for each
bin in y, and vice versa. If x, y or the weight is NaN, the fill is counted separately and goes into no cell. If one
expression is a list, the other may be a list of the same length or a single number in each row.)";
}

Ports Histogram2DKind::ports(const ValueTexts&) const {
    Ports ports;
    ports.inputs = {tableInput(), coordinateInput("x", "Quantity along the horizontal axis"),
                    coordinateInput("y", "Quantity along the vertical axis"), weightInput()};
    append(ports, axisInputs("x", "x"));
    append(ports, axisInputs("y", "y"));
    append(ports, {titleInput(), axisTitleInput("xaxis", "x"), axisTitleInput("yaxis", "y")});
    ports.outputs = {{.name = "histogram",
                      .description =
                          "Entries and sums of weights in each bin of x and y, and in each cell outside; NaN "
                          "is counted separately.",
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
        throw Failure("ybins",
                      std::to_string(x.bins()) + " x " + std::to_string(y.bins()) + " bins need too much memory");
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
that of the population. The mean of a bin without fills is NaN.

)" + FillKind::notes();
}

Ports Profile1DKind::ports(const ValueTexts&) const {
    Ports ports;
    ports.inputs = {tableInput(), coordinateInput("x", "Quantity that is binned"),
                    coordinateInput("y", "Quantity that is averaged in each bin"), weightInput()};
    append(ports, axisInputs("x"));
    append(ports, {titleInput(), axisTitleInput("axis", "x"), rangeInput()});
    ports.outputs = {
        {.name = "profile",
         .description = "Mean of y with its error in each bin of x, in the unit of y; NaN is counted separately.",
         .type = ValueType::Profile}};
    return ports;
}

std::unique_ptr<Accumulation> Profile1DKind::prepare(const Arguments& arguments, const Schema* schema,
                                                     RunContext& context) const {
    FillExpression quantity(arguments, neededTable(schema), {"x", "y"});
    Naming naming(arguments, context, {titleOr(arguments, "axis", quantity.label(0))});
    return fillingOf<Profile1D>(arguments, std::move(quantity), std::move(naming), "profile");
}

std::unique_ptr<Kind> makeHistogram1D() {
    return std::make_unique<Histogram1DKind>();
}

std::unique_ptr<Kind> makeHistogram2D() {
    return std::make_unique<Histogram2DKind>();
}

std::unique_ptr<Kind> makeProfile1D() {
    return std::make_unique<Profile1DKind>();
}

}  // namespace velmorak
