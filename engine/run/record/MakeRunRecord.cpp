#include "run/record/MakeRunRecord.h"

#include "run/record/Version.h"

#include <algorithm>
#include <unordered_set>
#include <vector>

namespace velmorak {
namespace {

/// The plug-in and everything upstream of it, in the plan's order.
std::vector<std::size_t> upstreamOf(const Plan& plan, std::size_t position) {
    std::vector<std::size_t> found{position};
    std::unordered_set<std::size_t> known{position};
    for (std::size_t i = 0; i < found.size(); ++i) {
        for (const std::size_t producer : plan.upstream(found[i])) {
            if (known.insert(producer).second) {
                found.push_back(producer);
            }
        }
    }
    std::sort(found.begin(), found.end(),
              [&](std::size_t one, std::size_t other) { return plan.rank(one) < plan.rank(other); });
    return found;
}

RecordedState stateOf(NodeStatus status) {
    switch (status) {
        case NodeStatus::NotRequested:
            return RecordedState::NotRequested;
        case NodeStatus::Done:
        case NodeStatus::Reused:
            return RecordedState::Done;
        case NodeStatus::Failed:
            return RecordedState::Failed;
        case NodeStatus::Skipped:
            return RecordedState::NotRun;
        case NodeStatus::Unfinished:
            break;
    }
    return RecordedState::Unfinished;
}

/// How each plug-in has ended. A source whose rows are part of a reused result counts as done.
std::vector<RecordedState> statesOf(const RunState& state) {
    std::vector<RecordedState> states;
    for (const NodeRun& run : state.runs) {
        states.push_back(stateOf(run.report.status));
    }
    for (const std::size_t position : state.plan.reverseOrder()) {
        const std::vector<std::size_t>& consumers = state.plan.consumers(position);
        const bool isUsed = std::any_of(consumers.begin(), consumers.end(),
                                        [&](std::size_t consumer) { return states[consumer] == RecordedState::Done; });
        if (states[position] == RecordedState::NotRequested && isUsed) {
            states[position] = RecordedState::Done;
        }
    }
    return states;
}

RecordedPlugin recordPlugin(const RunState& state, std::size_t position) {
    const PipelineNode& node = state.node(position);
    RecordedPlugin plugin{node.name, node.kindName, node.kind ? node.kind->version() : 0, {}};
    for (const PipelineInput& input : node.inputs) {
        RecordedInput recorded{input.spec.name, input.value, {}, {}, input.spec.isSeed};
        if (input.wire && input.wire->node < state.runs.size()) {
            recorded.plugin = state.node(input.wire->node).name;
            recorded.output = input.wire->output;
        }
        plugin.inputs.push_back(std::move(recorded));
    }
    return plugin;
}

}  // namespace

std::vector<RecordedFile> recordFiles(const std::vector<FileContent>& files) {
    std::vector<RecordedFile> all;
    for (const FileContent& file : files) {
        const bool isReadable = file.digest != Digest{};
        all.push_back({file.file.value_or(""), isReadable ? hexOf(file.digest) : ""});
    }
    return all;
}

RunRecord makeRunRecord(const RunState& state, ResultCache& cache, std::size_t position) {
    RunRecord record;
    record.program = version();
    const std::vector<std::size_t> upstream = upstreamOf(state.plan, position);
    for (const std::size_t each : upstream) {
        record.plugins.push_back(recordPlugin(state, each));
    }
    record.files = recordFiles(cache.filesOf(upstream));
    return record;
}

std::vector<SkippedFile> skippedFiles(const RunState& state) {
    std::vector<SkippedFile> all;
    for (const NodeRun& run : state.runs) {
        const std::vector<SkippedFile> files = run.context->skippedFiles();
        all.insert(all.end(), files.begin(), files.end());
    }
    return all;
}

RunRecord makeReporterRecord(const RunState& state, ResultCache& cache, std::size_t reporter) {
    RunRecord record;
    record.program = version();
    record.document = state.pipeline.document.filename().string();
    Sha256 digester;
    digester.add(state.pipeline.documentText.data(), state.pipeline.documentText.size());
    record.documentSha256 = hexOf(digester.finish());
    const std::vector<RecordedState> states = statesOf(state);
    std::vector<std::size_t> needed;
    for (std::size_t i = 0; i < state.runs.size(); ++i) {
        const PipelineNode& node = state.node(i);
        RecordedPlugin& plugin = record.plugins.emplace_back(recordPlugin(state, i));
        for (const OutputSpec& output : node.outputs) {
            plugin.outputs.push_back(output.name);
        }
        plugin.x = node.x;
        plugin.y = node.y;
        plugin.state = i == reporter ? RecordedState::Done : states[i];
        plugin.sentence = state.runs[i].report.sentence;
        if (state.runs[i].isNeeded) {
            needed.push_back(i);
        }
    }
    record.skipped = skippedFiles(state);
    if (state.former) {
        record.former = state.former->missing();
        std::erase_if(record.former, [&](const FormerFile& file) { return file.plugin == state.node(reporter).name; });
    }
    if (!state.pipeline.partial.empty()) {
        record.skipped.insert(record.skipped.begin(), {"", "", state.pipeline.partial});
    }
    const std::vector<FileContent> files = cache.filesOf(needed);
    record.files = recordFiles(files);
    for (std::size_t i = 0; i < files.size(); ++i) {
        const std::optional<FileStamp> stamp = stampOf(resolved(state.pipeline, files[i].file));
        record.files[i].bytes = stamp ? static_cast<std::uint64_t>(stamp->size) : 0;
    }
    return record;
}

}  // namespace velmorak
