#include "Recorder.h"

#include "../Version.h"

#include <algorithm>
#include <vector>

namespace velmorak {
namespace {

/// The plug-in and all that is upstream of it, in the plan's order.
std::vector<std::size_t> upstreamOf(const Plan& plan, std::size_t position) {
    std::vector<std::size_t> found{position};
    for (std::size_t i = 0; i < found.size(); ++i) {
        for (const std::size_t feeder : plan.feeders(found[i])) {
            if (std::find(found.begin(), found.end(), feeder) == found.end()) {
                found.push_back(feeder);
            }
        }
    }
    std::vector<std::size_t> ordered;
    std::copy_if(plan.order().begin(), plan.order().end(), std::back_inserter(ordered),
                 [&](std::size_t each) { return std::find(found.begin(), found.end(), each) != found.end(); });
    return ordered;
}

}  // namespace

std::vector<RecordedFile> recorded(const std::vector<FileContent>& files) {
    std::vector<RecordedFile> all;
    for (const FileContent& file : files) {
        const bool isThere = file.digest != Digest{};
        all.push_back({file.file.value_or(""), isThere ? hexOf(file.digest) : ""});
    }
    return all;
}

RecordedPlugin recordOf(const RunState& state, std::size_t position) {
    const PipelineNode& node = state.node(position);
    RecordedPlugin plugin{node.name, node.kindName, node.kind ? node.kind->version() : 0, {}};
    for (const PipelineInput& input : node.inputs) {
        RecordedInput recorded{input.spec.name, input.value, {}, {}};
        if (input.wire && input.wire->node < state.runs.size()) {
            recorded.plugin = state.node(input.wire->node).name;
            recorded.output = input.wire->output;
        }
        plugin.inputs.push_back(std::move(recorded));
    }
    return plugin;
}

RunRecord recordOf(const RunState& state, Keeper& keeper, std::size_t position) {
    RunRecord record;
    record.program = version();
    const std::vector<std::size_t> upstream = upstreamOf(state.plan, position);
    for (const std::size_t each : upstream) {
        record.plugins.push_back(recordOf(state, each));
    }
    record.files = recorded(keeper.filesOf(upstream));
    return record;
}

}  // namespace velmorak
