#include "kinds.h"

#include "FillExpression.h"
#include "FillKind.h"
#include "Quantiles.h"

#include <velmorak/StateBytes.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace velmorak {

namespace {

class EdgesState : public AccumulatorState {
public:
    explicit EdgesState(const FillExpression& quantity) : quantity(quantity) {}

    void fill(const Chunk& chunk) override;
    void merge(AccumulatorState& other) override { quantiles.merge(static_cast<EdgesState&>(other).quantiles); }
    void save(StateWriter& writer) const override;
    void load(StateReader& reader) override;

    std::vector<WeightedInterval> ascending() const { return quantiles.ascending(); }

private:
    const FillExpression& quantity;
    Quantiles quantiles;
};

void EdgesState::save(StateWriter& writer) const {
    writer.version(1);
    quantiles.save(writer);
}

void EdgesState::load(StateReader& reader) {
    reader.version(1);
    quantiles.load(reader);
}

/// No bin can end at an infinite value.
void EdgesState::fill(const Chunk& chunk) {
    const FillExpression::Values values = quantity.values(chunk);
    const FillBatch batch = values.batch();
    std::vector<double> numbers(batch.x, batch.x + batch.count);
    for (double& number : numbers) {
        number = std::isfinite(number) ? number : std::numeric_limits<double>::quiet_NaN();
    }
    quantiles.fill(numbers.data(), batch.weights, batch.count);
}

class EdgesAccumulation : public Accumulation {
public:
    EdgesAccumulation(FillExpression quantity, std::size_t bins, RunContext& context);

    std::unique_ptr<AccumulatorState> newState() const override { return std::make_unique<EdgesState>(quantity); }
    void markColumns(std::vector<bool>& needed) const override { quantity.markColumns(needed); }
    void finish(AccumulatorState& state, Results& results) override;

private:
    std::vector<double> edgesOf(const std::vector<WeightedInterval>& ascending) const;

    FillExpression quantity;
    std::size_t bins;
    RunContext& context;
};

EdgesAccumulation::EdgesAccumulation(FillExpression quantity, std::size_t bins, RunContext& context)
    : quantity(std::move(quantity)), bins(bins), context(context) {}

/// The last edge is just above the largest value, because a value equal to it would be overflow.
std::vector<double> EdgesAccumulation::edgesOf(const std::vector<WeightedInterval>& ascending) const {
    std::vector<double> edges;
    for (std::size_t i = 0; i < bins; ++i) {
        edges.push_back(i == 0 ? ascending.front().low
                               : quantileOf(ascending, static_cast<double>(i) / static_cast<double>(bins)));
    }
    edges.push_back(std::nextafter(ascending.back().high, std::numeric_limits<double>::infinity()));
    edges.erase(std::unique(edges.begin(), edges.end()), edges.end());
    return edges;
}

void EdgesAccumulation::finish(AccumulatorState& state, Results& results) {
    std::vector<WeightedInterval> ascending = static_cast<EdgesState&>(state).ascending();
    std::erase_if(ascending, [](const WeightedInterval& interval) { return interval.isEmpty(); });
    if (ascending.empty() || std::isnan(quantileOf(ascending, 0.5))) {
        throw Failure("table", "there are no values whose weights have a positive sum");
    }
    const std::vector<double> edges = edgesOf(ascending);
    if (edges.size() < bins + 1) {
        context.warn("only " + std::to_string(edges.size() - 1) + " of " + std::to_string(bins) +
                     " bins are made, because several edges are equal");
    }
    std::string text;
    for (const double edge : edges) {
        text += (text.empty() ? "" : " ") + textOf(edge);
    }
    results.set("edges", text);
    results.set("bins", edges.size() - 1);
}

Ports edgesPorts() {
    Ports ports{{tableInput(), expressionInput(), weightInput()},
                {{.name = "edges",
                  .description = "Edges of the bins, separated by blanks, for the input edges of a histogram, of a "
                                 "profile or of a GroupBy with one key.",
                  .type = ValueType::Text},
                 {.name = "bins", .description = "Number of bins.", .type = ValueType::Number}}};
    ports.inputs.push_back({.name = "bins",
                            .description = "Number of bins, 1 to 1000.",
                            .value = "10",
                            .minimum = 1,
                            .maximum = 1000,
                            .isInteger = true});
    return ports;
}

std::unique_ptr<Accumulation> edgesFrom(const Arguments& arguments, const Schema& schema, RunContext& context) {
    return std::make_unique<EdgesAccumulation>(FillExpression(arguments, schema),
                                               static_cast<std::size_t>(arguments.integer("bins")), context);
}

}  // namespace

std::unique_ptr<Kind> makeQuantileEdges() {
    return std::make_unique<FillKind>(FillKind::Description{
        .name = "QuantileEdges",
        .summary = "Finds edges of bins that hold the same weight of a quantity of a table each.",
        .notes =
            R"(The edges are quantiles: the first one is the smallest value, the last one the next number above the largest
value, so that no value is underflow or overflow. Wire the output to the input `edges` of another plug-in that takes the same
table. Up to 10,000 values, the quantiles are exact; beyond that they come from fine cells of a decimal grid, as those of
`Statistics` do. Values that are NaN or infinite are left out. If many values are equal, so are edges; there are then fewer
bins, and a warning says so.)",
        .ports = edgesPorts(),
        .prepare = edgesFrom});
}

}  // namespace velmorak
