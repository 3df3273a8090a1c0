#include "run/parts/PlanJob.h"

#include "executor/ThreadConfig.h"
#include "executor/ThreadPool.h"
#include "run/RunState.h"
#include "run/parts/Cutting.h"
#include "run/parts/PlanPasses.h"
#include "run/pass/PassPlanner.h"
#include "run/pass/SourceSet.h"
#include "run/pass/StreamPass.h"
#include "run/pass/WholeTables.h"
#include "run/record/KindBuild.h"
#include "run/record/Version.h"
#include "store/FolderListing.h"

#include <velmorak/Failure.h>
#include <velmorak/FolderNames.h>
#include <velmorak/StateBytes.h>

#include <fmt/chrono.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <map>
#include <set>
#include <utility>

namespace velmorak {

namespace {

namespace fs = std::filesystem;

/// A run that is planned but not executed.
class Planning {
public:
    Planning(const Pipeline& pipeline, std::ostream& messages, const std::atomic<bool>& stopping);

    /// @throws Failure for the first plug-in that cannot run.
    void validate(const RunOutline& outline);
    PlannedPass planPass(const PassOutline& outline, std::size_t parts, std::vector<PassRange>& ranges);
    /// What the run has read apart from the files of passes.
    void collectFiles(PlannedRun& run) const;

private:
    [[noreturn]] void fail(std::size_t node) const;
    void failIfAny(const std::vector<std::size_t>& nodes) const;
    void prepare(const std::vector<std::size_t>& targets);
    bool hasAllValues(std::size_t target) const;
    std::vector<PlannedFile> filesOf(const SourceSet& sources, const std::vector<std::size_t>& segments);
    std::vector<std::optional<ChunkStart>> chunksOf(const std::vector<std::size_t>& segments, std::uint64_t file);

    const Pipeline& pipeline;
    const std::atomic<bool>& stopping;
    Messages messages;
    RunLedger ledger;
    RunState state;
    PassPlanner planner;
    std::map<std::pair<std::string, std::string>, std::string> facts;  ///< By plug-in and name.
};

Planning::Planning(const Pipeline& pipeline, std::ostream& messages, const std::atomic<bool>& stopping)
    : pipeline(pipeline),
      stopping(stopping),
      messages(messages, false),
      ledger(pipeline),
      state(pipeline, stopping, this->messages, ledger, nullptr),
      planner(state) {
    state.environment.fact = [this](const PipelineNode& node, const std::string& name,
                                    const std::function<std::string()>& find) {
        const auto known = facts.find({node.name, name});
        return known != facts.end() ? known->second : facts[{node.name, name}] = find();
    };
}

PlannedFile plannedFile(const fs::path& path) {
    const std::optional<FileStamp> stamp = stampOf(path);
    return {
        plannedPath(path), stamp ? static_cast<std::uint64_t>(stamp->size) : 0, stamp ? stamp->modifiedNs : 0, {}, {}};
}

void Planning::fail(std::size_t node) const {
    if (stopping) {
        throw Stopped();
    }
    throw Failure("nothing is planned, because " + titleOf(state.node(node)) +
                  " cannot run: " + state.runs[node].report.sentence);
}

void Planning::failIfAny(const std::vector<std::size_t>& nodes) const {
    const auto failed =
        std::find_if(nodes.begin(), nodes.end(), [this](std::size_t node) { return state.hasFailed(node); });
    if (failed != nodes.end()) {
        fail(*failed);
    }
}

void Planning::validate(const RunOutline& outline) {
    for (std::size_t i = 0; i < pipeline.nodes.size(); ++i) {
        if (const std::string sentence = state.plan.validate(i); outline.isNeeded[i] && !sentence.empty()) {
            throw Failure("nothing is planned, because " + titleOf(state.node(i)) + " cannot run: " + sentence);
        }
    }
    for (const PassOutline& pass : outline.passes) {
        std::vector<std::size_t> known;
        std::copy_if(pass.targets.begin(), pass.targets.end(), std::back_inserter(known),
                     [this](std::size_t target) { return hasAllValues(target); });
        if (!known.empty()) {
            prepare(known);
        }
    }
}

/// No value comes from another plug-in, so that the target and the operators before it can be prepared now.
bool Planning::hasAllValues(std::size_t target) const {
    const std::vector<OperatorInstance> instances = planner.operatorsFor({target});
    return std::all_of(instances.begin(), instances.end(), [this](const OperatorInstance& instance) {
        const std::vector<std::size_t>& upstream = state.plan.upstream(instance.node);
        return wholeTables(state, instance.node).empty() &&
               std::all_of(upstream.begin(), upstream.end(),
                           [this](std::size_t producer) { return state.plan.isStream(producer); });
    });
}

void Planning::prepare(const std::vector<std::size_t>& targets) {
    const std::vector<std::size_t>& segments = state.plan.segments(targets.front());
    StreamPass pass(state, segments, planner.operatorsFor(targets));
    pass.prepare();
    failIfAny(segments);
    for (std::size_t i = 0; i < pass.operators().size(); ++i) {
        const Operator& op = pass.operators().at(i);
        failIfAny({op.node});
        if (op.accumulation) {
            savedState(*mustBe(op.accumulation->newState(), "state"), state.node(op.node).kindName);
        }
    }
}

PlannedPass Planning::planPass(const PassOutline& outline, std::size_t parts, std::vector<PassRange>& ranges) {
    const std::vector<std::size_t>& segments = state.plan.segments(outline.targets.front());
    SourceSet sources(state, segments);
    if (!sources.open()) {
        failIfAny(segments);
    }
    PlannedPass planned{outline.round, {}, outline.needs, filesOf(sources, segments)};
    std::vector<std::uint64_t> bytes;
    for (const PlannedFile& file : planned.files) {
        bytes.push_back(file.bytes);
    }
    std::map<std::uint64_t, std::vector<std::optional<ChunkStart>>> chunks;  // By file.
    ranges =
        cutPass(bytes, parts, [&](std::uint64_t file) { return (chunks[file] = chunksOf(segments, file)).size(); });
    for (PassRange& range : ranges) {
        if (range.begin.chunk > 0) {
            range.start = chunks.at(range.begin.file).at(range.begin.chunk);
        }
    }
    for (const std::size_t target : outline.targets) {
        planned.targets.push_back(state.node(target).name);
    }
    return planned;
}

std::vector<PlannedFile> Planning::filesOf(const SourceSet& sources, const std::vector<std::size_t>& segments) {
    std::vector<PlannedFile> files;
    for (std::size_t i = 0; i < segments.size(); ++i) {
        const auto& kind = dynamic_cast<const Source&>(*state.node(segments[i]).kind);
        std::vector<fs::path> paths = kind.files(state.arguments(segments[i]), *state.runs[segments[i]].context);
        paths.resize(paths.size() == sources.filesOf(i) ? paths.size() : 0);
        for (std::uint64_t file = 0; file < sources.filesOf(i); ++file) {
            files.push_back(paths.empty() ? PlannedFile{} : plannedFile(paths[file]));
        }
    }
    return files;
}

/// @return where each chunk of a file begins, as far as its reader can say.
std::vector<std::optional<ChunkStart>> Planning::chunksOf(const std::vector<std::size_t>& segments,
                                                          std::uint64_t file) {
    SourceSet sources(state, segments, {{file, 0}, {file + 1, 0}, {}});
    if (!sources.open()) {
        failIfAny(segments);
    }
    std::vector<std::optional<ChunkStart>> chunks;
    std::uint64_t rows = 0;
    for (ChunkTask task; !stopping;) {
        std::optional<std::string> bookmark = sources.bookmark();
        if (!sources.read(task)) {
            break;
        }
        chunks.emplace_back();
        if (bookmark) {
            chunks.back() = ChunkStart{chunks.size() - 1, rows, *std::move(bookmark)};
        }
        rows += task.rowsRead;
    }
    if (stopping) {
        throw Stopped();
    }
    if (!sources.finish()) {
        failIfAny(segments);
    }
    return chunks;
}

void Planning::collectFiles(PlannedRun& run) const {
    run.facts = facts;
    std::set<std::string> known;
    for (const PlannedPass& pass : run.passes) {
        for (const PlannedFile& file : pass.files) {
            known.insert(file.path);
        }
    }
    for (const NodeRun& node : state.runs) {
        for (const AskedFile& asked : node.context->askedFiles()) {
            if (isFolderListing(asked.file)) {
                const std::size_t end = asked.file->find('\0');
                const fs::path where = resolved(pipeline, folderOfListing(*asked.file));
                run.listings[*asked.file] = namesInFolder(where, asked.file->substr(end + 1));
                continue;
            }
            if (asked.stamp && known.insert(plannedPath(asked.path)).second) {
                run.otherFiles.push_back(plannedFile(asked.path));
            }
        }
    }
}

}  // namespace

void planRun(JobPlan& plan, const Pipeline& pipeline, const PlanOptions& options, std::ostream& messages,
             const std::atomic<bool>& stopping) {
    const ThreadPool pool(options.threads > 0 ? options.threads : threadConfigFromEnvironment().threads);
    Planning rehearsed(pipeline, messages, stopping);
    RunOutline outline;
    {
        Messages silent(messages, false);
        RunLedger ledger(pipeline);
        RunState state(pipeline, stopping, silent, ledger, nullptr);
        outline = outlinePasses(state);
    }
    rehearsed.validate(outline);
    PlannedRun run{pipeline.documentText, pipeline.settings, options.folder, {}, {}, {}, {}, {}};
    for (const PassOutline& pass : outline.passes) {
        std::vector<PassRange> ranges;
        run.passes.push_back(rehearsed.planPass(pass, options.parts, ranges));
        for (const PassRange& range : ranges) {
            plan.parts.push_back({plan.runs.size(), run.passes.size() - 1, range});
        }
    }
    for (const auto& [target, reason] : outline.leftToMerge) {
        run.leftToMerge.push_back({pipeline.nodes[target].name, reason});
    }
    rehearsed.collectFiles(run);
    for (const PipelineNode& node : pipeline.nodes) {
        if (node.kind) {
            plan.builds[node.kindName] = buildTextOf(*node.kind);
        }
    }
    plan.runs.push_back(std::move(run));
}

void completePlan(JobPlan& plan) {
    std::stable_sort(plan.parts.begin(), plan.parts.end(), [&](const PlannedPart& one, const PlannedPart& other) {
        return plan.passOf(one).round < plan.passOf(other).round;
    });
    plan.program = version();
    const auto now = std::chrono::system_clock::now();
    plan.time =
        fmt::format("{:%Y-%m-%dT%H:%M:%S}.{:09}Z", fmt::gmtime(std::chrono::system_clock::to_time_t(now)),
                    std::chrono::duration_cast<std::chrono::nanoseconds>(now.time_since_epoch()).count() % 1000000000);
}

}  // namespace velmorak
