#include "run/parts/JobRun.h"

#include "run/parts/Bundle.h"
#include "run/parts/PartPass.h"
#include "run/pass/StreamPass.h"
#include "run/record/KindBuild.h"
#include "run/results/ResultCache.h"

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

/// @return empty if the text is not a sum.
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
    learnFiles();
}

void JobRun::learnFiles() {
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
    mergePass(*state, planner, targets, partFilesOf(pass));
}

std::vector<std::filesystem::path> JobRun::partFilesOf(std::size_t pass) const {
    std::vector<std::filesystem::path> files;
    for (const std::size_t part : plan.partsOf(run, pass)) {
        if (std::find(parts.begin(), parts.end(), part) != parts.end()) {
            files.push_back(job.partFile(part));
        }
    }
    return files;
}

void checkFiles(const JobPlan& plan, std::size_t part, const MovedFiles& moved) {
    const PlannedPass& pass = plan.passOf(plan.parts[part]);
    for (std::uint64_t file = 0; file < pass.files.size(); ++file) {
        if (plan.parts[part].range.holdsChunksOf(file)) {
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
