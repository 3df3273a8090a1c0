#include "kinds.h"

#include "Condition.h"
#include "Cuts.h"

#include <velmorak/NamedNumbers.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <optional>
#include <utility>

namespace velmorak {

namespace {

std::vector<InputSpec> ownInputs() {
    return {
        {.name = "table", .description = "Table whose rows are tested.", .type = ValueType::Table},
        {.name = "cuts",
         .description = "Cuts in order, one a line or separated by semicolons, each as name: condition, for "
                        "example trigger: pt > 20; central: abs(eta) < 2.4. A name that is not a column becomes "
                        "an input for a number.",
         .type = ValueType::Text},
        {.name = "weight", .description = "Expression for the weight of a row. Empty: 1.", .type = ValueType::Text},
        {.name = "file",
         .description = "File in the results folder for the counts. Empty: none.",
         .type = ValueType::Text},
    };
}

NamedNumbers numbersOf(const std::string& cuts, const std::string& weight) {
    std::vector<NamedNumbers::Text> texts;
    for (const Cut& cut : cutsIn(cuts)) {
        texts.push_back({"cuts", cut.condition});
    }
    texts.push_back({"weight", weight});
    return {std::move(texts), ownInputs()};
}

std::string valueOr(const ValueTexts& values, const std::string& input) {
    const auto found = values.find(input);
    return found == values.end() ? std::string() : found->second;
}

/// Rows before the first cut in bin 0, and rows left after each cut in the following bins.
class FlowState : public AccumulatorState {
public:
    FlowState(const std::vector<Condition>& cuts, const std::optional<Expression>& weight);

    void fill(const Chunk& chunk) override;

    void merge(AccumulatorState& other) override;

    const std::vector<BinSums>& steps() const { return bins; }

private:
    void count(std::size_t bin, const std::vector<std::uint8_t>& keep, const Column* weights);

    const std::vector<Condition>& cuts;
    const std::optional<Expression>& weight;
    std::vector<BinSums> bins;
};

FlowState::FlowState(const std::vector<Condition>& cuts, const std::optional<Expression>& weight)
    : cuts(cuts), weight(weight) {
    for (std::size_t bin = 0; bin <= cuts.size(); ++bin) {
        bins.push_back(BinSums::at({static_cast<double>(bin)}, 0, 0.0, 0.0));
    }
}

void FlowState::fill(const Chunk& chunk) {
    const ColumnPtr weights = weight ? asReals(weight->evaluate(chunk)) : nullptr;
    std::vector<std::uint8_t> keep(chunk.rows, 1);
    count(0, keep, weights.get());
    for (std::size_t cut = 0; cut < cuts.size(); ++cut) {
        const std::vector<std::uint8_t> truth = cuts[cut].truthIn(chunk);
        std::transform(keep.begin(), keep.end(), truth.begin(), keep.begin(),
                       [](auto left, auto right) { return static_cast<std::uint8_t>(left & right); });
        count(cut + 1, keep, weights.get());
    }
}

void FlowState::merge(AccumulatorState& other) {
    for (std::size_t i = 0; i < bins.size(); ++i) {
        bins[i].add(static_cast<FlowState&>(other).bins[i]);
    }
}

void FlowState::count(std::size_t bin, const std::vector<std::uint8_t>& keep, const Column* weights) {
    BinSums chunkSums = BinSums::at(bins[bin].pivot, 0, 0.0, 0.0);
    for (std::size_t row = 0; row < keep.size(); ++row) {
        if (keep[row] == 0) {
            continue;
        }
        const double w = !weights ? 1.0 : weights->reals()[row];
        ++chunkSums.entries;
        chunkSums.w += w;
        chunkSums.ww += w * w;
    }
    bins[bin].add(chunkSums);
}

std::string percent(double part, double whole) {
    return whole == 0.0 ? "-" : textOf(std::round(1e4 * part / whole) / 100.0);
}

class FlowAccumulation : public Accumulation {
public:
    FlowAccumulation(const Arguments& arguments, const Schema& schema, RunContext& runContext);

    std::unique_ptr<AccumulatorState> newState() const override { return std::make_unique<FlowState>(cuts, weight); }

    void finish(AccumulatorState& state, Results& results) override;

private:
    std::string described(const std::vector<BinSums>& steps) const;

    /// One bin of width 1 around the number of each step.
    Value histogramOf(const std::vector<BinSums>& steps) const;

    static void write(const std::filesystem::path& path, const std::string& text);

    RunContext& context;
    std::string file;
    std::vector<std::string> names;
    std::vector<Condition> cuts;
    std::optional<Expression> weight;
};

FlowAccumulation::FlowAccumulation(const Arguments& arguments, const Schema& schema, RunContext& runContext)
    : context(runContext), file(arguments.text("file")) {
    const std::map<std::string, double> numbers =
        numbersOf(arguments.text("cuts"), arguments.text("weight")).values(arguments, schema, context);
    for (const Cut& cut : cutsIn(arguments.text("cuts"))) {
        names.push_back(cut.name);
        cuts.emplace_back("cuts", cut.condition, schema, numbers);
    }
    if (const std::string& text = arguments.text("weight"); !text.empty()) {
        weight.emplace(text, schema, numbers);
    }
    if (weight && (weight->isList() || weight->type() == ColumnType::Text)) {
        throw Failure("weight", "\"" + arguments.text("weight") + "\" is not a number");
    }
}

void FlowAccumulation::finish(AccumulatorState& state, Results& results) {
    const std::vector<BinSums>& steps = static_cast<FlowState&>(state).steps();
    const std::string text = described(steps);
    results.set("rows", static_cast<double>(steps.back().entries));
    results.set("weights", steps.back().w);
    results.set("histogram", histogramOf(steps));
    results.set("text", text);
    if (!file.empty()) {
        context.writeResult(file, [&](const std::filesystem::path& path) { write(path, text); });
    }
}

std::string FlowAccumulation::described(const std::vector<BinSums>& steps) const {
    std::string text = "cut\trows\tweights\t% of the rows before\t% of all rows\n";
    for (std::size_t i = 0; i < steps.size(); ++i) {
        const auto rows = static_cast<double>(steps[i].entries);
        const auto before = static_cast<double>(steps[i == 0 ? 0 : i - 1].entries);
        text += (i == 0 ? "all" : names[i - 1]) + "\t" + textOf(rows) + "\t" + textOf(steps[i].w) + "\t" +
                percent(rows, before) + "\t" + percent(rows, static_cast<double>(steps[0].entries)) + "\n";
    }
    return text;
}

Value FlowAccumulation::histogramOf(const std::vector<BinSums>& steps) const {
    CellVector<BinSums> cells(1);
    cells.insert(cells.end(), steps.begin(), steps.end());
    cells.emplace_back();
    auto histogram = std::make_shared<Histogram1D>(Axis(steps.size(), -0.5, static_cast<double>(steps.size()) - 0.5),
                                                   std::move(cells), 0);
    histogram->name = context.pluginName();
    histogram->title = context.pluginName();
    histogram->setAxisTitle("number of cuts");
    return DataObjectPtr(std::move(histogram));
}

void FlowAccumulation::write(const std::filesystem::path& path, const std::string& text) {
    std::ofstream out(path, std::ios::binary);
    if (!(out << text).flush()) {
        throw Failure("file", "the file cannot be written");
    }
}

/// Counts the rows that are left after each of several cuts.
class CutFlowKind : public Accumulator {
public:
    std::string name() const override { return "CutFlow"; }
    std::string summary() const override;
    Ports ports(const ValueTexts& values) const override;
    std::string refusal(const std::string& input, const std::string& value) const override;
    std::unique_ptr<Accumulation> prepare(const Arguments& arguments, const Schema* schema,
                                          RunContext& context) const override;
};

}  // namespace

std::string CutFlowKind::summary() const {
    return "Counts the rows of a table that are left after each of several cuts.";
}

Ports CutFlowKind::ports(const ValueTexts& values) const {
    Ports ports;
    ports.inputs = ownInputs();
    for (InputSpec& input : numbersOf(valueOr(values, "cuts"), valueOr(values, "weight")).inputs()) {
        ports.inputs.push_back(std::move(input));
    }
    ports.outputs = {
        {.name = "rows", .description = "Number of rows that pass all cuts.", .type = ValueType::Number},
        {.name = "weights",
         .description = "Sum of the weights of the rows that pass all cuts.",
         .type = ValueType::Number},
        {.name = "histogram",
         .description = "Rows left after each cut, with their weights: bin 0 holds all rows, bin 1 those after the "
                        "first cut.",
         .type = ValueType::Histogram},
        {.name = "text",
         .description = "One line for each cut: its name, the rows and weights left, and the percentage of rows, "
                        "separated by tabs.",
         .type = ValueType::Text},
    };
    return ports;
}

std::string CutFlowKind::refusal(const std::string& input, const std::string& value) const {
    if (input == "weight") {
        return expressionRefusal(value);
    }
    if (input != "cuts") {
        return {};
    }
    for (const Cut& cut : cutsIn(value)) {
        if (cut.condition.empty()) {
            return "Cut \"" + cut.name + "\" has no condition.";
        }
        if (std::string reason = expressionRefusal(cut.condition); !reason.empty()) {
            return reason;
        }
    }
    return {};
}

std::unique_ptr<Accumulation> CutFlowKind::prepare(const Arguments& arguments, const Schema* schema,
                                                   RunContext& context) const {
    if (!schema) {
        throw Failure("table", "nothing is wired");
    }
    return std::make_unique<FlowAccumulation>(arguments, *schema, context);
}

std::unique_ptr<Kind> makeCutFlow() {
    return std::make_unique<CutFlowKind>();
}

}  // namespace velmorak
