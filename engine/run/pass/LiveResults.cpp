#include "run/pass/LiveResults.h"

#include <velmorak/DataObjects.h>
#include <velmorak/StateBytes.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace velmorak {
namespace {

constexpr std::size_t maxCells = 40000;

/// For a kind that is prepared a second time: its warnings were given, and it makes no files.
class SnapshotContext : public RunContext {
public:
    SnapshotContext(std::string name, const std::atomic<bool>& stopping) : name(std::move(name)), stopping(stopping) {}

    bool isStopping() const override { return stopping; }
    const std::string& pluginName() const override { return name; }
    std::filesystem::path inputFile(const std::string&) const override { refuseFile(); }
    std::filesystem::path commandLineAida() const override { return {}; }
    void writeResult(const std::string&, const std::function<void(const std::filesystem::path&)>&) override;
    std::unique_ptr<ResultFile> beginResult(const std::string&) override { refuseFile(); }
    void warn(const std::string& /*sentence*/) override {}

private:
    [[noreturn]] static void refuseFile() {
        throw Failure("no file is opened to show results before the end of a run");
    }

    std::string name;
    const std::atomic<bool>& stopping;
};

void SnapshotContext::writeResult(const std::string&, const std::function<void(const std::filesystem::path&)>&) {
    refuseFile();
}

bool isDrawable(const PipelineNode& node) {
    return std::any_of(node.outputs.begin(), node.outputs.end(), [](const OutputSpec& output) {
        return output.type == ValueType::Histogram || output.type == ValueType::Profile ||
               output.type == ValueType::Histograms;
    });
}

std::unique_ptr<Accumulation> prepared(const Accumulator& kind, const NodeArguments& arguments, const Schema& schema,
                                       RunContext& context) {
    std::unique_ptr<Accumulation> accumulation = mustBe(kind.prepare(arguments, &schema, context), "accumulation");
    std::vector<bool> needed(schema.size(), false);
    accumulation->markColumns(needed);
    return accumulation;
}

/// A copy of what was merged so far.
std::unique_ptr<AccumulatorState> copyOf(const StateMerger& merger, const Accumulation& accumulation,
                                         const std::string& kind) {
    std::unique_ptr<AccumulatorState> whole;
    merger.visit([&](const AccumulatorState& part) {
        std::unique_ptr<AccumulatorState> copy = mustBe(accumulation.newState(), "state");
        loadState(*copy, savedState(part, kind), kind);
        if (whole) {
            whole->merge(*copy);
        } else {
            whole = std::move(copy);
        }
    });
    return whole ? std::move(whole) : mustBe(accumulation.newState(), "state");
}

std::size_t cellsOf(const Value& value) {
    const auto* const object = std::get_if<DataObjectPtr>(&value);
    if (!object || !*object) {
        return 0;
    }
    return visit(**object, overloaded{
                               [](const Histogram1D& it) { return it.cells().size(); },
                               [](const Histogram2D& it) { return it.cells().size(); },
                               [](const Profile1D& it) { return it.cells().size(); },
                               [](const Profile2D& it) { return it.cells().size(); },
                               [](const HistogramList& it) { return it.cellCount(); },
                               [](const DataObject&) { return maxCells + 1; },
                           });
}

bool hasManyCells(const std::vector<Value>& values) {
    return std::any_of(values.begin(), values.end(), [](const Value& value) { return cellsOf(value) > maxCells; });
}

}  // namespace

void LiveResults::update() {
    if (!state.listener || !state.listener->isLookDue()) {
        return;
    }
    const auto begin = std::chrono::steady_clock::now();
    std::vector<ResultsSoFar> results;
    for (std::size_t i = 0; i < chain.size() && !state.isStopping(); ++i) {
        const Operator& op = chain.at(i);
        if (op.accumulation && op.merger && !op.isDropped && isDrawable(state.node(op.node))) {
            if (std::optional<ResultsSoFar> found = resultsOf(i)) {
                results.push_back(std::move(*found));
            }
        }
    }
    // Nothing that goes wrong with a picture may end the run.
    (void)errorIn([&] { state.listener->looked(results, std::chrono::steady_clock::now() - begin); });
}

/// @return nothing if the results so far cannot be had.
std::optional<ResultsSoFar> LiveResults::resultsOf(std::size_t position) {
    const Operator& op = chain.at(position);
    const PipelineNode& node = state.node(op.node);
    const auto* const kind = dynamic_cast<const Accumulator*>(node.kind);
    if (!kind || large.contains(op.node)) {
        return std::nullopt;
    }
    NodeResults results(node.outputs);
    const auto error = state.call(op.node, [&] {
        const Schema& schema = chain.inputSchema(position);
        if (!isSmall(op, *kind, schema)) {
            large.insert(op.node);
            return;
        }
        SnapshotContext context(node.name, state.stopping);
        const NodeArguments arguments = state.arguments(op.node);
        const std::unique_ptr<Accumulation> accumulation = prepared(*kind, arguments, schema, context);
        accumulation->finish(*copyOf(*op.merger, *accumulation, kind->name()), results);
        if (hasManyCells(results.values())) {
            large.insert(op.node);  // A list of histograms grows while it is filled.
        }
    });
    return error || large.contains(op.node) ? std::nullopt
                                            : std::optional(ResultsSoFar{op.node, op.rowsIn, results.values()});
}

/// Whether the objects have few cells, as those of no rows show.
bool LiveResults::isSmall(const Operator& op, const Accumulator& kind, const Schema& schema) {
    if (small.contains(op.node)) {
        return true;
    }
    NodeResults empty(state.node(op.node).outputs);
    SnapshotContext context(state.node(op.node).name, state.stopping);
    const NodeArguments arguments = state.arguments(op.node);
    (void)errorIn([&] {  // Some need rows.
        const std::unique_ptr<Accumulation> accumulation = prepared(kind, arguments, schema, context);
        accumulation->finish(*mustBe(accumulation->newState(), "state"), empty);
    });
    const bool isLarge = hasManyCells(empty.values());
    if (!isLarge) {
        small.insert(op.node);
    }
    return !isLarge;
}

}  // namespace velmorak
