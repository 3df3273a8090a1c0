#include "run/parts/JobRun.h"

#include "run/parts/PartPass.h"
#include "store/FolderListing.h"

#include <velmorak/Failure.h>
#include <velmorak/Text.h>

#include <algorithm>
#include <system_error>
#include <utility>

namespace velmorak {

PartRun::PartRun(const JobFolder& job, const JobPlan& plan, std::size_t part, std::vector<std::size_t> parts)
    : JobRun(job, plan, plan.parts[part].run, std::move(parts)), part(part) {
    const PlannedPass& own = plan.passOf(plan.parts[part]);
    const PassRange& range = plan.parts[part].range;
    for (std::uint64_t file = 0; file < own.files.size(); ++file) {
        const bool isFromBeginning = file > range.begin.file || range.begin.chunk == 0;
        if (range.holdsChunksOf(file) && isFromBeginning) {
            ownFiles.emplace(placeOf(own.files[file].path), &own.files[file]);
        }
    }
    for (const PlannedPass& each : planned().passes) {
        for (const PlannedFile& file : each.files) {
            allFiles.insert(placeOf(file.path));
        }
    }
}

PartRun::~PartRun() = default;

void PartRun::begin(RunState& runState, ResultCache& runCache, FileHashes& fileHashes) {
    JobRun::begin(runState, runCache, fileHashes);
    findNeeded();
    writer.emplace(job.partFile(part), PartIdentity{plan.digest, part + 1, velmorak::buildOf(plan)});
}

/// The targets of the pass and everything upstream of them.
void PartRun::findNeeded() {
    isNeeded.assign(state->runs.size(), false);
    isTarget.assign(state->runs.size(), false);
    std::vector<std::size_t> open;
    const std::vector<std::string>& targets = plan.passOf(plannedPart()).targets;
    for (std::size_t i = 0; i < state->runs.size(); ++i) {
        if (std::find(targets.begin(), targets.end(), state->node(i).name) != targets.end()) {
            open.push_back(i);
            isTarget[i] = true;
        }
    }
    while (!open.empty()) {
        const std::size_t at = open.back();
        open.pop_back();
        if (!isNeeded[at]) {
            isNeeded[at] = true;
            open.insert(open.end(), state->plan.upstream(at).begin(), state->plan.upstream(at).end());
        }
    }
}

bool PartRun::readsFile(const std::filesystem::path& file) const {
    return ownFiles.contains(plannedPath(file)) || JobRun::readsFile(file);
}

void PartRun::passPlanned(std::size_t pass, const std::vector<std::size_t>& targets, const PassPlanner& planner,
                          Executor& executor) {
    if (pass != plannedPart().pass) {
        passEarlier(pass, targets, planner, executor);
        return;
    }
    WrittenPass written = writePass(*state, planner, targets, plannedPart().range, executor, *writer);
    summary = std::move(written.summary);
    if (problem.empty()) {
        problem = std::move(written.problem);
    }
    if (problem.empty() && !state->isStopping()) {
        collectFiles();
        return;
    }
    for (const std::size_t target : targets) {
        if (!state->runs[target].isFinal && state->isStopping()) {
            state->stopFirst(target);
        } else if (!state->runs[target].isFinal) {
            state->skip(target, state->node(state->plan.segments(target).front()).name);
        }
    }
}

/// The parts of an earlier round are merged once for all parts of this pass.
void PartRun::passEarlier(std::size_t pass, const std::vector<std::size_t>& targets, const PassPlanner& planner,
                          Executor& executor) {
    const std::size_t own = plannedPart().pass;
    const bool isFirst = passed.insert(pass).second;
    if (isFirst && (job.hasMerged(plan, run, pass, own) || gather(pass, targets, planner))) {
        mergePass(*state, planner, targets, {job.mergedFile(run, pass, own)});
    } else {
        JobRun::passPlanned(pass, targets, planner, executor);
    }
}

/// Several processes may do this at once: they write the same, and each file is complete when it gets its name.
/// @return false if the folder cannot be written, for example: then each part merges for itself.
bool PartRun::gather(std::size_t pass, const std::vector<std::size_t>& targets, const PassPlanner& planner) const {
    const std::filesystem::path file = job.mergedFile(run, pass, plannedPart().pass);
    std::error_code error;
    std::filesystem::create_directories(file.parent_path(), error);
    PartWriter merged(file, {plan.digest, 0, velmorak::buildOf(plan)});
    try {
        return !error && gatherPass(*state, planner, targets, partFilesOf(pass), merged);
    } catch (const std::system_error&) {
        return false;
    }
}

void PartRun::learnFiles() {
    if (!isMergedBefore(job, plan, part)) {
        JobRun::learnFiles();
        return;
    }
    for (const std::size_t pass : passesBefore(plan, part)) {
        learn(PartReader(job.mergedFile(run, pass, plannedPart().pass)).summary(), "an earlier round");
    }
}

void PartRun::collectFiles() {
    for (const NodeRun& each : state->runs) {
        for (const AskedFile& asked : each.context->askedFiles()) {
            if (!isFolderListing(asked.file)) {
                addFile(asked.path);
            }
        }
        for (const SkippedFile& skipped : each.context->skippedFiles()) {
            summary.skipped.push_back(
                {asPlanned(skipped.file), "", 0, 0, 0, skipped.plugin, asPlanned(skipped.reason)});
        }
    }
}

/// Replaces paths of files that were moved, so that other processes know them.
std::string PartRun::asPlanned(std::string text) const {
    for (const auto& [place, file] : ownFiles) {
        const std::size_t at = place == file->path ? std::string::npos : text.find(place);
        if (at != std::string::npos) {
            text.replace(at, place.size(), file->path);
        }
    }
    return text;
}

/// Under its planned path, as other processes know it.
void PartRun::addFile(const std::filesystem::path& path) {
    const std::string place = plannedPath(path);
    const auto own = ownFiles.find(place);
    const PlannedFile* const copy = own != ownFiles.end() && !own->second->sha256.empty() ? own->second : nullptr;
    const std::string name = copy ? copy->path : path.string();
    const bool isOthers = allFiles.contains(place) && own == ownFiles.end();
    const bool isKnown = std::any_of(summary.files.begin(), summary.files.end(),
                                     [&](const PartInput& input) { return input.path == name; });
    if (isOthers || isKnown) {
        return;
    }
    const std::int64_t now = nowNs();
    const std::optional<Digest> digest = hashes->of(path, state->stopping);
    const std::optional<FileStamp> stamp = stampOf(path);
    if (copy != nullptr && digest && hexOf(*digest) != copy->sha256) {
        problem = "the file " + velmorak::quoted(place) + " has another content than " + velmorak::quoted(copy->path) +
                  " had when the job was planned";
    } else if (copy && digest) {
        summary.files.push_back({name, copy->sha256, copy->bytes, copy->modifiedNs, now, {}, {}});
    } else if (digest && stamp) {
        summary.files.push_back(
            {name, hexOf(*digest), static_cast<std::uint64_t>(stamp->size), stamp->modifiedNs, now, {}, {}});
    }
}

std::string PartRun::commit() {
    if (!writer || !hasEnded) {
        return "the run failed";
    }
    if (problem.empty() && !writer->error()) {
        try {
            writer->commit(std::move(summary));
        } catch (const std::system_error&) {
            // The writer knows the error.
        }
    }
    return writer->error() ? job.partFile(part).string() + " cannot be written: " + writer->error().message() : problem;
}

std::set<std::size_t> passesBefore(const JobPlan& plan, std::size_t part) {
    const std::size_t run = plan.parts[part].run;
    std::set<std::size_t> passes;
    std::vector<std::size_t> open = plan.passOf(plan.parts[part]).needs;
    while (!open.empty()) {
        const std::size_t pass = open.back();
        open.pop_back();
        if (passes.insert(pass).second) {
            const std::vector<std::size_t>& more = plan.runs[run].passes[pass].needs;
            open.insert(open.end(), more.begin(), more.end());
        }
    }
    return passes;
}

bool isMergedBefore(const JobFolder& job, const JobPlan& plan, std::size_t part) {
    const PlannedPart& own = plan.parts[part];
    const std::set<std::size_t> passes = passesBefore(plan, part);
    return std::all_of(passes.begin(), passes.end(),
                       [&](std::size_t pass) { return job.hasMerged(plan, own.run, pass, own.pass); });
}

std::vector<std::size_t> partsBefore(const JobPlan& plan, std::size_t part) {
    const std::size_t run = plan.parts[part].run;
    const std::set<std::size_t> passes = passesBefore(plan, part);
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < plan.parts.size(); ++i) {
        if (plan.parts[i].run == run && passes.contains(plan.parts[i].pass)) {
            found.push_back(i);
        }
    }
    return found;
}

}  // namespace velmorak
