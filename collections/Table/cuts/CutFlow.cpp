#include "Table/kinds.h"

#include "Table/cuts/Condition.h"
#include "Table/cuts/Cuts.h"
#include "shared/AppendInputs.h"

#include <velmorak/FormatMeasurement.h>
#include <velmorak/NamedNumbers.h>
#include <velmorak/StateBytes.h>
#include <velmorak/SystemReason.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <optional>
#include <utility>

namespace velmorak {

namespace {

std::vector<InputSpec> cutFlowInputs() {
    return {
        {.name = "table", .description = "Table whose rows are tested.", .type = ValueType::Table},
        {.name = "cuts",
         .description = "Cuts in order, one a line or separated by semicolons, each as name: condition, for "
                        "example trigger: pt > 20; central: abs(eta) < 2.4. A number at an input of its own "
                        "is written @name.",
         .type = ValueType::Text},
        {.name = "weight", .description = "Expression for the weight of a row. Empty: 1.", .type = ValueType::Text},
        {.name = "file",
         .description = "File in the results folder for the counts. Empty: none.",
         .type = ValueType::Text},
    };
}

NamedNumbers cutFlowNumbers(const std::string& cuts, const std::string& weight) {
    std::vector<NamedNumbers::Text> texts;
    for (const Cut& cut : cutsIn(cuts)) {
        texts.push_back({"cuts", cut.condition});
    }
    texts.push_back({"weight", weight});
    return {std::move(texts), cutFlowInputs()};
}

std::string valueOr(const ValueTexts& values, const std::string& input) {
    const auto found = values.find(input);
    return found == values.end() ? std::string() : found->second;
}

/// Rows whose weight is NaN or infinite. They are counted as rows, but left out of the sums of weights.
struct UnusableWeights {
    std::int64_t rows = 0;
    std::int64_t rowsLeft = 0;  ///< After all cuts.
    std::int64_t firstRow = 0;  ///< Of all rows of the table, counted from 0; without meaning if there are none.
};

/// Rows before the first cut in bin 0, and rows left after each cut in the following bins.
class FlowState : public AccumulatorState {
public:
    FlowState(const std::vector<Condition>& cuts, const std::optional<Expression>& weight);

    void fill(const Chunk& chunk) override;

    void merge(AccumulatorState& other) override;
    void save(StateWriter& writer) const override;
    void load(StateReader& reader) override;

    const std::vector<BinSums>& steps() const { return bins; }
    const UnusableWeights& unusableWeights() const { return unusable; }

private:
    void count(std::size_t bin, const std::vector<std::uint8_t>& keep, const Column* weights);
    void noteUnusable(const std::vector<std::uint8_t>& keep, const Column& weights, std::int64_t rowsBefore);

    const std::vector<Condition>& cuts;
    const std::optional<Expression>& weight;
    std::vector<BinSums> bins;
    UnusableWeights unusable;
};

FlowState::FlowState(const std::vector<Condition>& cuts, const std::optional<Expression>& weight)
    : cuts(cuts), weight(weight) {
    for (std::size_t bin = 0; bin <= cuts.size(); ++bin) {
        bins.push_back(BinSums::at({static_cast<double>(bin)}, 0, 0.0, 0.0));
    }
}

void FlowState::fill(const Chunk& chunk) {
    const std::int64_t rowsBefore = bins.front().entries;
    const ColumnPtr weights = weight ? asReals(weight->evaluate(chunk)) : nullptr;
    std::vector<std::uint8_t> keep(chunk.rows, 1);
    count(0, keep, weights.get());
    for (std::size_t cut = 0; cut < cuts.size(); ++cut) {
        const std::vector<std::uint8_t> truth = cuts[cut].truthIn(chunk);
        std::transform(keep.begin(), keep.end(), truth.begin(), keep.begin(),
                       [](auto left, auto right) { return static_cast<std::uint8_t>(left & right); });
        count(cut + 1, keep, weights.get());
    }
    if (weights) {
        noteUnusable(keep, *weights, rowsBefore);
    }
}

void FlowState::noteUnusable(const std::vector<std::uint8_t>& keep, const Column& weights, std::int64_t rowsBefore) {
    for (std::size_t row = 0; row < keep.size(); ++row) {
        if (std::isfinite(weights.reals()[row])) {
            continue;
        }
        if (unusable.rows++ == 0) {
            unusable.firstRow = rowsBefore + static_cast<std::int64_t>(row);
        }
        unusable.rowsLeft += keep[row];
    }
}

void FlowState::merge(AccumulatorState& other) {
    const UnusableWeights& following = static_cast<FlowState&>(other).unusable;
    if (unusable.rows == 0) {
        unusable.firstRow = bins.front().entries + following.firstRow;
    }
    unusable.rows += following.rows;
    unusable.rowsLeft += following.rowsLeft;
    for (std::size_t i = 0; i < bins.size(); ++i) {
        bins[i].add(static_cast<FlowState&>(other).bins[i]);
    }
}

void FlowState::save(StateWriter& writer) const {
    writer.version(1);
    writer.number<std::uint64_t>(bins.size());
    for (const BinSums& bin : bins) {
        writer.number(bin.entries);
        for (const double sum : {bin.w, bin.ww, bin.first[0], bin.second[0]}) {
            writer.number(sum);
        }
    }
    for (const std::int64_t number : {unusable.rows, unusable.rowsLeft, unusable.firstRow}) {
        writer.number(number);
    }
}

void FlowState::load(StateReader& reader) {
    reader.version(1);
    reader.require(reader.length(5 * sizeof(double)) == bins.size(), "it has another number of cuts");
    for (BinSums& bin : bins) {
        bin.entries = reader.count();
        for (double* sum : {&bin.w, &bin.ww, &bin.first[0], &bin.second[0]}) {
            *sum = reader.number<double>();
        }
    }
    for (std::int64_t* number : {&unusable.rows, &unusable.rowsLeft, &unusable.firstRow}) {
        *number = reader.count();
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
        if (std::isfinite(w)) {
            chunkSums.w += w;
            chunkSums.ww += w * w;
        }
    }
    bins[bin].add(chunkSums);
}

std::string percent(double part, double whole) {
    return whole == 0.0 ? "-" : textOf(std::round(1e4 * part / whole) / 100.0);
}

class FlowAccumulation : public Accumulation {
public:
    FlowAccumulation(const Arguments& arguments, const Schema& schema, RunContext& context);

    std::unique_ptr<AccumulatorState> newState() const override { return std::make_unique<FlowState>(cuts, weight); }
    void markColumns(std::vector<bool>& needed) const override;

    void finish(AccumulatorState& state, Results& results) override;

private:
    std::string described(const std::vector<BinSums>& steps) const;
    void warnOf(const UnusableWeights& unusable) const;

    /// One bin of width 1 around the number of each step.
    Value histogramOf(const std::vector<BinSums>& steps) const;

    static void write(const std::filesystem::path& path, const std::string& text);

    RunContext& context;
    std::string file;
    std::vector<std::string> names;
    std::vector<Condition> cuts;
    std::optional<Expression> weight;
};

FlowAccumulation::FlowAccumulation(const Arguments& arguments, const Schema& schema, RunContext& context)
    : context(context), file(arguments.text("file")) {
    const std::map<std::string, double> numbers =
        cutFlowNumbers(arguments.text("cuts"), arguments.text("weight")).values(arguments, schema, context);
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

void FlowAccumulation::markColumns(std::vector<bool>& needed) const {
    for (const Condition& cut : cuts) {
        cut.markColumns(needed);
    }
    if (weight) {
        weight->markColumns(needed);
    }
}

void FlowAccumulation::finish(AccumulatorState& state, Results& results) {
    const std::vector<BinSums>& steps = static_cast<FlowState&>(state).steps();
    warnOf(static_cast<FlowState&>(state).unusableWeights());
    const std::string text = described(steps);
    results.set("rows", static_cast<double>(steps.back().entries));
    results.set("weights", steps.back().w);
    results.set("histogram", histogramOf(steps));
    results.set("text", text);
    if (!file.empty()) {
        context.writeResult(file, [&](const std::filesystem::path& path) { write(path, text); });
    }
}

void FlowAccumulation::warnOf(const UnusableWeights& unusable) const {
    if (unusable.rows > 0) {
        context.warn("the weight of " + std::to_string(unusable.rows) + (unusable.rows == 1 ? " row" : " rows") +
                     " is NaN or infinite; the first is row " + std::to_string(unusable.firstRow) +
                     " of the table, counted from 0, and " + std::to_string(unusable.rowsLeft) +
                     " of them pass all cuts. They are counted as rows and left out of the sums of weights");
    }
}

std::string FlowAccumulation::described(const std::vector<BinSums>& steps) const {
    std::string text = "cut\trows\tweights\t% of the rows before\t% of all rows\n";
    for (std::size_t i = 0; i < steps.size(); ++i) {
        const auto rows = static_cast<double>(steps[i].entries);
        const auto before = static_cast<double>(steps[i == 0 ? 0 : i - 1].entries);
        text += (i == 0 ? "all" : names[i - 1]) + "\t" + formatNumber(rows) + "\t" + formatNumber(steps[i].w) + "\t" +
                percent(rows, before) + "\t" + percent(rows, static_cast<double>(steps[0].entries)) + "\n";
    }
    return text;
}

Value FlowAccumulation::histogramOf(const std::vector<BinSums>& steps) const {
    CellVector<BinSums> cells(steps.size() + 2);
    for (std::size_t step = 0; step < steps.size(); ++step) {
        cells[step + 1] = steps[step];
    }
    auto histogram = std::make_shared<Histogram1D>(Axis(steps.size(), -0.5, static_cast<double>(steps.size()) - 0.5),
                                                   std::move(cells), 0);
    histogram->name = context.pluginName();
    histogram->title = context.pluginName();
    histogram->setAxisTitle("number of cuts");
    return DataObjectPtr(std::move(histogram));
}

void FlowAccumulation::write(const std::filesystem::path& path, const std::string& text) {
    errno = 0;
    std::ofstream out(path, std::ios::binary);
    if (!(out << text).flush()) {
        throw Failure("file", "\"" + path.string() + "\" cannot be written" + systemReason(errno));
    }
}

/// Counts the rows that are left after each of several cuts.
class CutFlowKind : public Accumulator {
public:
    std::string name() const override { return "CutFlow"; }
    std::string summary() const override;
    std::string notes() const override;
    int version() const override { return 2; }
    Ports ports(const ValueTexts& values) const override;
    std::string refusal(const std::string& input, const std::string& value) const override;
    std::unique_ptr<Accumulation> prepare(const Arguments& arguments, const Schema* schema,
                                          RunContext& context) const override;
};

}  // namespace

std::string CutFlowKind::summary() const {
    return "Counts the rows of a table that are left after each of several cuts.";
}

std::string CutFlowKind::notes() const {
    return "Rows whose weight is NaN or infinite are counted as rows, but left out of the sums of weights, also in the "
           "histogram. A warning says how many there are, which is the first, and how many of them pass all cuts.";
}

Ports CutFlowKind::ports(const ValueTexts& values) const {
    Ports ports;
    ports.inputs = cutFlowInputs();
    appendInputs(ports.inputs, cutFlowNumbers(valueOr(values, "cuts"), valueOr(values, "weight")).inputs(values));
    ports.outputs = {
        {.name = "rows", .description = "Number of rows that pass all cuts.", .type = ValueType::Number},
        {.name = "weights",
         .description =
             "Sum of the weights of the rows that pass all cuts; rows with a weight that is NaN or infinite are left "
             "out.",
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
