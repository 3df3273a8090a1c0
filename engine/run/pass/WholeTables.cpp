#include "run/pass/WholeTables.h"

#include "run/RunState.h"

#include <velmorak/StoredTable.h>

#include <algorithm>
#include <utility>

namespace velmorak {

bool takesWholeTable(const Plan& plan, const Pipeline& pipeline, std::size_t node, const PipelineInput& input) {
    if (plan.category(node) != KindCategory::RowWise || input.spec.type != ValueType::Table) {
        return false;
    }
    const std::vector<PipelineInput>& inputs = pipeline.nodes[node].inputs;
    const auto isWiredTable = [](const PipelineInput& each) {
        return each.spec.type == ValueType::Table && each.wire.has_value();
    };
    const auto first = std::find_if(inputs.begin(), inputs.end(), isWiredTable);
    return isWiredTable(input) && first->spec.name != input.spec.name;
}

std::vector<std::size_t> wholeTables(const RunState& state, std::size_t node) {
    std::vector<std::size_t> upstream;
    if (state.plan.category(node) != KindCategory::RowWise) {
        return upstream;
    }
    for (const PipelineInput& input : state.node(node).inputs) {
        if (takesWholeTable(state.plan, state.pipeline, node, input)) {
            upstream.push_back(input.wire->node);
        }
    }
    return upstream;
}

bool mustBeCollected(const RunState& state, std::size_t position) {
    if (!state.plan.isStream(position) || state.storedTable(position)) {
        return false;
    }
    const std::vector<std::size_t>& consumers = state.plan.consumers(position);
    return std::any_of(consumers.begin(), consumers.end(), [&](std::size_t consumer) {
        if (!state.runs[consumer].isNeeded || state.runs[consumer].isFinal) {
            return false;
        }
        const std::vector<std::size_t> upstream = wholeTables(state, consumer);
        return std::find(upstream.begin(), upstream.end(), position) != upstream.end();
    });
}

void keepCollected(RunState& state, std::size_t position, std::shared_ptr<const StoredTable> table) {
    state.runs[position].table = std::move(table);
}

}  // namespace velmorak
