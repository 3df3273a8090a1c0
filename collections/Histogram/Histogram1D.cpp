#include "Histogram1D.h"

#include "Binning.h"
#include "Quantity.h"

#include <velmorak/Histogram1D.h>

#include <utility>

namespace velmorak {

namespace {

class Filling : public AccumulatorState {
public:
    Filling(const Quantity& filled, const Axis& axis) : quantity(filled), histogram(axis) {}

    void fill(const Chunk& chunk) override {
        const Quantity::Values values = quantity.values(chunk);
        const double* weights = values.weights ? values.weights->reals().data() : nullptr;
        histogram.fill(values.x->reals().data(), weights, values.x->reals().size());
    }

    void merge(AccumulatorState& other) override { histogram.merge(static_cast<Filling&>(other).histogram); }

    Histogram1D& result() { return histogram; }

private:
    const Quantity& quantity;
    Histogram1D histogram;
};

class HistogramAccumulation : public Accumulation {
public:
    HistogramAccumulation(const Arguments& arguments, const Schema& schema, const RunContext& context)
        : quantity(arguments, schema),
          axis(axisFrom(arguments)),
          name(context.pluginName()),
          title(arguments.text("title").empty() ? name : arguments.text("title")) {
        axis.title = arguments.text("axis").empty() ? quantity.label() : arguments.text("axis");
    }

    std::unique_ptr<AccumulatorState> newState() const override { return std::make_unique<Filling>(quantity, axis); }

    void finish(AccumulatorState& state, Results& results) override {
        auto histogram = std::make_shared<Histogram1D>(std::move(static_cast<Filling&>(state).result()));
        histogram->name = name;
        histogram->title = title;
        histogram->setAxisTitle(axis.title);
        results.set("histogram", DataObjectPtr(std::move(histogram)));
    }

private:
    Quantity quantity;
    Axis axis;
    std::string name;
    std::string title;
};

std::vector<InputSpec> axisInputs() {
    return {
        {.name = "bins",
         .description = "Number of equal bins between low and high, 1 to 1000000.",
         .value = "50",
         .minimum = 1,
         .maximum = maxBins,
         .isInteger = true},
        {.name = "low", .description = "Lower edge of the first bin, in the unit of the expression.", .value = "0"},
        {.name = "high",
         .description = "Upper edge of the last bin, in the unit of the expression; a value equal to it is overflow.",
         .value = "100"},
        {.name = "edges",
         .description = "Ascending edges of bins of any width, separated by blanks or commas, in the unit of the "
                        "expression. Not empty: they hold instead of bins, low and high.",
         .type = ValueType::Text},
    };
}

}  // namespace

std::string Histogram1DKind::summary() const {
    return "Fills a histogram of one quantity of a table, with weights and exact moments in each bin.";
}

Ports Histogram1DKind::ports(const ValueTexts&) const {
    Ports ports;
    ports.inputs = {
        {.name = "table", .description = "Table whose rows are filled.", .type = ValueType::Table},
        expressionInput(),
        weightInput(),
    };
    for (InputSpec& input : axisInputs())
        ports.inputs.push_back(std::move(input));
    ports.inputs.push_back({.name = "title",
                            .description = "Shown above a plot. Empty: the name of this plug-in.",
                            .type = ValueType::Text});
    ports.inputs.push_back({.name = "axis",
                            .description = "Title of the axis with its unit, for example mass [GeV]. Empty: the "
                                           "expression, with the unit of the column where it is known.",
                            .type = ValueType::Text});
    ports.outputs = {{.name = "histogram",
                      .description = "Entries and sums of weights in each bin, with underflow and overflow; NaN is "
                                     "counted apart.",
                      .type = ValueType::Histogram}};
    return ports;
}

std::string Histogram1DKind::refusal(const std::string& input, const std::string& value) const {
    if (input == "expression" || input == "weight")
        return expressionRefusal(value);
    if (input == "edges")
        return edgesRefusal(value);
    return {};
}

std::unique_ptr<Accumulation> Histogram1DKind::prepare(const Arguments& arguments, const Schema* schema,
                                                       RunContext& context) const {
    if (schema == nullptr)
        throw Failure("table", "nothing is wired");
    return std::make_unique<HistogramAccumulation>(arguments, *schema, context);
}

}  // namespace velmorak
