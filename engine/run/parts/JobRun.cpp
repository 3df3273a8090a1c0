#include "run/parts/JobRun.h"

#include "run/parts/Bundle.h"
#include "run/parts/PartPass.h"
#include "run/pass/StreamPass.h"
#include "run/record/KindBuild.h"
#include "run/results/ResultCache.h"
#include "store/FolderListing.h"

#include <velmorak/Failure.h>
#include <velmorak/Text.h>

#include <algorithm>
#include <utility>

namespace velmorak {

namespace {

std::string titleOfPart(std::size_t part) {
    return "part " + std::to_string(part + 1);
}

/// Half of a hexadecimal digit pair.
unsigned digitOf(char c) {
    return static_cast<unsigned>(c <= '9' ? c - '0' : c - 'a' + 10);
}

/// @return empty if the text is no sum.
std::optional<Digest> digestFrom(const std::string& hex) {
    Digest digest{};
    if (hex.size() != 2 * digest.size() || hex.find_first_not_of("0123456789abcdef") != std::string::npos) {
        return std::nullopt;
    }
    for (std::size_t i = 0; i < digest.size(); ++i) {
        digest[i] = static_cast<std::uint8_t>(digitOf(hex[2 * i]) * 16U + digitOf(hex[2 * i + 1]));
    }
    return digest;
}

std::string placeIn(const MovedFiles& moved, const std::string& planned) {
    const auto found = moved.places.find(planned);
    return found == moved.places.end() ? planned : found->second.string();
}

/// The content of a file in a bundle is checked when it has been read.
void checkFile(const PlannedFile& file, const MovedFiles& moved) {
    if (file.path.empty()) {
        return;
    }
    const std::optional<FileStamp> stamp = stampOf(placeIn(moved, file.path));
    if (!stamp && file.modifiedNs == 0) {
        return;  // It could not be read then, either.
    }
    if (!stamp) {
        throw Failure("the file " + velmorak::quoted(file.path) +
                      (file.place.empty() ? " is gone since the job was planned; plan the job again"
                                          : " is missing; put it to " + velmorak::quoted(file.place) +
                                                " in the folder of the job, or beside this folder"));
    }
    const bool isCopy = !file.sha256.empty();
    if (static_cast<std::uint64_t>(stamp->size) != file.bytes || (!isCopy && stamp->modifiedNs != file.modifiedNs)) {
        throw Failure("the file " + velmorak::quoted(file.path) +
                      " has changed since the job was planned; plan the job again");
    }
}

bool holds(const PassRange& range, std::uint64_t file) {
    return file >= range.begin.file && file < range.endFile();
}

}  // namespace

JobRun::JobRun(const JobFolder& job, const JobPlan& plan, std::size_t run, std::vector<std::size_t> parts)
    : job(job), plan(plan), run(run), moved(movedFiles(plan, job.path())), parts(std::move(parts)) {
    for (std::size_t i = 0; i < planned().passes.size(); ++i) {
        for (const std::string& target : planned().passes[i].targets) {
            passOfTarget[target] = i;
        }
        for (const PlannedFile& file : planned().passes[i].files) {
            plannedFiles.insert(placeOf(file.path));
        }
    }
}

JobRun::~JobRun() = default;

std::string JobRun::placeOf(const std::string& plannedPath) const {
    return placeIn(moved, plannedPath);
}

void JobRun::begin(RunState& runState, ResultCache& runCache, FileHashes& fileHashes) {
    state = &runState;
    cache = &runCache;
    hashes = &fileHashes;
    state->environment.listed = [this](const std::string& listing) -> std::optional<std::vector<std::string>> {
        const auto found = planned().listings.find(listing);
        return found == planned().listings.end() ? std::nullopt : std::optional(found->second);
    };
    state->environment.fact = [this](const PipelineNode& node, const std::string& name,
                                     const std::function<std::string()>& find) {
        const auto found = planned().facts.find({node.name, name});
        return found == planned().facts.end() ? find() : found->second;
    };
    for (const std::size_t part : parts) {
        learn(PartReader(job.partFile(part)).summary(), titleOfPart(part));
    }
}

void JobRun::learn(const PartSummary& summary, const std::string& part) {
    for (const PartInput& input : summary.files) {
        learn(input, part);
    }
    for (const PartInput& input : summary.skipped) {
        noteSkipped(input);
    }
}

void JobRun::learn(const PartInput& input, const std::string& part) {
    const auto [known, isNew] = sumsOfParts.emplace(input.path, std::pair(input.sha256, part));
    if (!isNew && known->second.first != input.sha256) {
        throw Failure("the file " + velmorak::quoted(input.path) + " changed between " + known->second.second +
                      " and " + part + "; plan the job again");
    }
    const std::string path = placeOf(input.path);
    const std::optional<FileStamp> stamp = stampOf(path);
    const std::optional<Digest> digest = digestFrom(input.sha256);
    const bool isUnchanged =
        stamp && static_cast<std::uint64_t>(stamp->size) == input.bytes && stamp->modifiedNs == input.modifiedNs;
    if (isNew && isUnchanged && digest) {
        hashes->learn(path, *stamp, *digest, input.readNs);
    }
}

void JobRun::noteSkipped(const PartInput& input) {
    for (std::size_t i = 0; i < state->runs.size(); ++i) {
        if (state->node(i).name == input.plugin) {
            state->runs[i].context->skipFile(input.path, input.reason);
        }
    }
}

/// The sums of files that parts have read are known from these.
bool JobRun::readsFile(const std::filesystem::path& file) const {
    return !plannedFiles.contains(plannedPath(file));
}

/// Rows that are read here come first, so that the report has the numbers of rows of complete passes.
void JobRun::pass(const std::vector<std::size_t>& targets, const PassPlanner& planner, Executor& executor) {
    std::map<std::size_t, std::vector<std::size_t>> byPass;
    std::vector<std::size_t> others;
    for (const std::size_t target : targets) {
        const auto found = passOfTarget.find(state->node(target).name);
        (found == passOfTarget.end() ? others : byPass[found->second]).push_back(target);
    }
    if (!others.empty()) {
        StreamPass(*state, state->plan.segments(others.front()), planner.operatorsFor(others)).execute(executor);
    }
    for (const auto& [pass, planned] : byPass) {
        if (!state->isStopping()) {
            passPlanned(pass, planned, planner, executor);
        }
    }
}

void JobRun::passPlanned(std::size_t pass, const std::vector<std::size_t>& targets, const PassPlanner& planner,
                         Executor& /*executor*/) {
    std::vector<std::filesystem::path> files;
    for (const std::size_t part : plan.partsOf(run, pass)) {
        if (std::find(parts.begin(), parts.end(), part) != parts.end()) {
            files.push_back(job.partFile(part));
        }
    }
    mergePass(*state, planner, targets, files);
}

PartRun::PartRun(const JobFolder& job, const JobPlan& plan, std::size_t part, std::vector<std::size_t> parts)
    : JobRun(job, plan, plan.parts[part].run, std::move(parts)), part(part) {
    const PlannedPass& own = plan.passOf(plan.parts[part]);
    const PassRange& range = plan.parts[part].range;
    for (std::uint64_t file = 0; file < own.files.size(); ++file) {
        const bool isFromBeginning = file > range.begin.file || range.begin.chunk == 0;
        if (holds(range, file) && isFromBeginning) {
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

/// The targets of the pass and what is upstream of them.
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
        JobRun::passPlanned(pass, targets, planner, executor);
        return;
    }
    std::string reason = writePass(*state, planner, targets, plannedPart().range, executor, *writer, summary);
    if (problem.empty()) {
        problem = std::move(reason);
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

void PartRun::collectFiles() {
    for (const NodeRun& each : state->runs) {
        for (const AskedFile& asked : each.context->askedFiles()) {
            if (!isFolderListing(asked.file)) {
                addFile(resolved(state->pipeline, asked.file));
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
    if (copy && digest && hexOf(*digest) != copy->sha256) {
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

std::vector<std::size_t> partsBefore(const JobPlan& plan, std::size_t part) {
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
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < plan.parts.size(); ++i) {
        if (plan.parts[i].run == run && passes.contains(plan.parts[i].pass)) {
            found.push_back(i);
        }
    }
    return found;
}

void checkFiles(const JobPlan& plan, std::size_t part, const MovedFiles& moved) {
    const PlannedPass& pass = plan.passOf(plan.parts[part]);
    for (std::uint64_t file = 0; file < pass.files.size(); ++file) {
        if (holds(plan.parts[part].range, file)) {
            checkFile(pass.files[file], moved);
        }
    }
    for (const PlannedFile& file : plan.runs[plan.parts[part].run].otherFiles) {
        checkFile(file, moved);
    }
}

void checkFilesOfRun(const JobPlan& plan, std::size_t run, const MovedFiles& moved) {
    for (const PlannedPass& pass : plan.runs[run].passes) {
        for (const PlannedFile& file : pass.files) {
            checkFile(file, moved);
        }
    }
    for (const PlannedFile& file : plan.runs[run].otherFiles) {
        checkFile(file, moved);
    }
}

void checkBuilds(const JobPlan& plan, const Pipeline& pipeline) {
    for (const PipelineNode& node : pipeline.nodes) {
        const auto found = plan.builds.find(node.kindName);
        const std::string planned = found == plan.builds.end() ? "" : found->second;
        if (planned != (node.kind ? buildTextOf(*node.kind) : "")) {
            throw Failure("the job was planned with another build of " + velmorak::quoted(node.kindName) +
                          "; use that program, or plan the job again");
        }
    }
}

}  // namespace velmorak
