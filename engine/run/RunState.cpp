#include "run/RunState.h"

#include "run/messages/Visible.h"
#include "run/pass/WholeTables.h"
#include "run/results/PartialMark.h"

#include <velmorak/StoredTable.h>

#include <algorithm>
#include <utility>

namespace velmorak {
namespace {}  // namespace

RunState::RunState(const Pipeline& pipeline, const std::atomic<bool>& stopping, Messages& messages, RunLedger& ledger,
                   RunListener* listener)
    : pipeline(pipeline),
      stopping(stopping),
      messages(messages),
      ledger(ledger),
      listener(listener),
      plan(pipeline, [&stopping] { return stopping.load(); }),
      results(pipeline, pipeline.mayWriteAnywhere, stopping),
      environment{pipeline, stopping, messages, results, {}, {}, {}},
      runs(pipeline.nodes.size()) {
    for (std::size_t i = 0; i < runs.size(); ++i) {
        runs[i].report.outputs.resize(node(i).outputs.size());
        runs[i].report.takesTable = plan.tableInput(i).has_value();
        runs[i].context = std::make_unique<NodeContext>(environment, node(i));
    }
}

bool RunState::isDone(std::size_t position) const {
    const NodeRun& run = runs[position];
    return run.isFinal && (run.report.status == NodeStatus::Done || run.report.status == NodeStatus::Reused);
}

bool RunState::hasFailed(std::size_t position) const {
    const NodeStatus status = runs[position].report.status;
    return status == NodeStatus::Failed || status == NodeStatus::Skipped;
}

bool RunState::hasArguments(std::size_t position) const {
    const std::vector<std::size_t>& upstream = plan.upstream(position);
    const std::vector<std::size_t> wholes = wholeTables(*this, position);
    const bool areCollected = std::all_of(wholes.begin(), wholes.end(), [this](std::size_t producer) {
        return !plan.isStream(producer) || storedTable(producer) != nullptr;
    });
    return areCollected && std::all_of(upstream.begin(), upstream.end(), [&](std::size_t producer) {
               return plan.isStream(producer) || isDone(producer) ||
                      (hasFailed(producer) && mayGoWithout(position, producer));
           });
}

bool RunState::mayGoWithout(std::size_t position, std::size_t producer) const {
    bool isAllowed = true;
    bool hasOther = false;
    for (const PipelineInput& input : node(position).inputs) {
        if (input.wire) {
            isAllowed = isAllowed && (input.wire->node != producer || input.spec.mayFail);
            hasOther = hasOther || (input.spec.mayFail && hasValueFor(input));
        }
    }
    return isAllowed && hasOther;
}

bool RunState::hasValueFor(const PipelineInput& input) const {
    return isDone(input.wire->node) || !std::holds_alternative<std::monostate>(remainsOf(*input.wire));
}

bool RunState::isIncomplete(std::size_t position) const {
    const std::vector<std::size_t>& upstream = plan.upstream(position);
    return std::any_of(upstream.begin(), upstream.end(), [this](std::size_t producer) { return hasFailed(producer); });
}

Value RunState::remainsOf(const PipelineWire& wire) const {
    const std::vector<Value>& remains = runs[wire.node].remains;
    for (std::size_t i = 0; i < remains.size(); ++i) {
        if (node(wire.node).outputs[i].name == wire.output) {
            return remains[i];
        }
    }
    return {};
}

Arrival RunState::arrival(const PipelineInput& input, bool mayMiss) const {
    if (!input.wire) {
        return {};
    }
    const PipelineNode& producer = node(input.wire->node);
    Arrival arrival{true, producer.name, input.wire->output, {}, {}};
    for (std::size_t i = 0; i < producer.outputs.size(); ++i) {
        if (producer.outputs[i].name != input.wire->output || producer.outputs[i].type == ValueType::Table) {
            continue;
        }
        arrival.value = runs[input.wire->node].report.outputs[i];
        if (mayMiss && hasFailed(input.wire->node)) {
            arrival.value = remainsOf(*input.wire);
            arrival.failure = runs[input.wire->node].report.sentence;
            return arrival;
        }
        if (std::holds_alternative<std::monostate>(arrival.value)) {
            throw Failure(input.spec.name, "\"" + producer.name + "\" gave no \"" + input.wire->output + "\"");
        }
    }
    return arrival;
}

NodeArguments RunState::arguments(std::size_t position) const {
    std::vector<Arrival> arrivals;
    for (const PipelineInput& input : node(position).inputs) {
        arrivals.push_back(arrival(input, plan.isRunReporter(position) || input.spec.mayFail));
        if (takesWholeTable(plan, pipeline, position, input)) {
            if (const std::shared_ptr<const StoredTable> table = storedTable(input.wire->node)) {
                arrivals.back().value = DataObjectPtr(table);
            }
        }
    }
    return {node(position), arrivals};
}

void RunState::finalize(std::size_t position) {
    runs[position].isFinal = true;
    finished.push_back(position);
}

void RunState::pass(std::size_t position) {
    runs[position].hasStreamed = true;
    finished.push_back(position);
}

std::vector<std::size_t> RunState::takeFinished() {
    std::vector<std::size_t> taken = std::exchange(finished, {});
    std::sort(taken.begin(), taken.end(),
              [this](std::size_t one, std::size_t other) { return plan.rank(one) < plan.rank(other); });
    taken.erase(std::unique(taken.begin(), taken.end()), taken.end());
    return taken;
}

void RunState::fail(std::size_t position, const NodeError& error) {
    NodeRun& run = runs[position];
    finalize(position);
    run.report.outputs.assign(node(position).outputs.size(), {});
    if (error.wasStopped && isStopping()) {
        stopFirst(position);
        return;
    }
    run.report.status = NodeStatus::Failed;
    run.report.sentence = error.sentence;
    run.cause = node(position).name;
    messages.line(titleOf(node(position)) + " failed: " + error.sentence);
}

void RunState::skip(std::size_t position, const std::string& cause) {
    NodeRun& run = runs[position];
    finalize(position);
    run.report.status = NodeStatus::Skipped;
    run.report.sentence = "not run because of \"" + shortened(cause) + "\"";
    run.cause = cause;
}

void RunState::stopFirst(std::size_t position) {
    NodeRun& run = runs[position];
    finalize(position);
    run.report.status = NodeStatus::Unfinished;
    run.report.sentence = unfinishedSentence;
}

void RunState::finish(std::size_t position, NodeStatus status, std::vector<Value> outputs) {
    finalize(position);
    runs[position].report.status = status;
    if (!pipeline.partial.empty()) {
        for (Value& value : outputs) {
            value = withPartialMark(value, pipeline.partial);
        }
    }
    for (Value& value : outputs) {
        const auto* const object = std::get_if<DataObjectPtr>(&value);
        if (auto table = std::dynamic_pointer_cast<const StoredTable>(object ? *object : nullptr)) {
            runs[position].table = std::move(table);
            value = {};
        }
    }
    runs[position].report.outputs = std::move(outputs);
}

void RunState::addSeconds(std::size_t position, std::chrono::nanoseconds time) {
    runs[position].report.seconds += std::chrono::duration<double>(time).count();
}

}  // namespace velmorak
