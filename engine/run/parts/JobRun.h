#pragma once

#include "run/parts/JobFolder.h"
#include "run/parts/JobPlan.h"
#include "run/parts/PartFile.h"
#include "run/pass/PassRunner.h"
#include "run/plan/Pipeline.h"

#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace velmorak {

/// A run that takes the states of planned passes from the parts that are done.
class JobRun : public PassRunner {
public:
    /// @param job and plan outlive this.
    /// @param run of the plan.
    /// @param parts positions of those whose results are used.
    JobRun(const JobFolder& job, const JobPlan& plan, std::size_t run, std::vector<std::size_t> parts);
    ~JobRun() override;

    void begin(RunState& state, ResultCache& cache, FileHashes& hashes) override;
    bool needs(std::size_t /*position*/) const override { return true; }
    bool readsFile(const std::filesystem::path& file) const override;
    void pass(const std::vector<std::size_t>& targets, const PassPlanner& planner, Executor& executor) override;

protected:
    virtual void passPlanned(std::size_t pass, const std::vector<std::size_t>& targets, const PassPlanner& planner,
                             Executor& executor);
    /// Takes over what the parts that are used know of files. @throws Failure if a file changed between two of them.
    virtual void learnFiles();
    void learn(const PartSummary& summary, const std::string& part);
    std::vector<std::filesystem::path> partFilesOf(std::size_t pass) const;
    const PlannedRun& planned() const { return plan.runs[run]; }
    /// @return where a file of the plan is now.
    std::string placeOf(const std::string& plannedPath) const;

    const JobFolder& job;
    const JobPlan& plan;
    const std::size_t run;
    const MovedFiles moved;
    RunState* state = nullptr;
    ResultCache* cache = nullptr;
    FileHashes* hashes = nullptr;

private:
    void learn(const PartInput& input, const std::string& part);
    void noteSkipped(const PartInput& input);

    std::vector<std::size_t> parts;
    std::map<std::string, std::size_t> passOfTarget;                         ///< By plug-in.
    std::set<std::string> plannedFiles;                                      ///< Paths that parts read.
    std::map<std::string, std::pair<std::string, std::string>> sumsOfParts;  ///< By path: the sum, and whose it is.
};

/// A run that does one part: it reads a range of the rows of one pass, and computes nothing that follows.
class PartRun : public JobRun {
public:
    /// @param part position in the plan.
    /// @param parts whose results it needs.
    PartRun(const JobFolder& job, const JobPlan& plan, std::size_t part, std::vector<std::size_t> parts);
    ~PartRun() override;

    void begin(RunState& state, ResultCache& cache, FileHashes& hashes) override;
    bool needs(std::size_t position) const override { return isNeeded[position]; }
    bool makesResults() const override { return false; }
    bool asksFor(std::size_t position) const override { return isTarget[position]; }
    bool readsFile(const std::filesystem::path& file) const override;

    void end() override { hasEnded = true; }

    /// Called after the run. @return empty, or why the part is not done.
    std::string commit();

protected:
    void passPlanned(std::size_t pass, const std::vector<std::size_t>& targets, const PassPlanner& planner,
                     Executor& executor) override;
    void learnFiles() override;

private:
    const PlannedPart& plannedPart() const { return plan.parts[part]; }
    void findNeeded();
    void passEarlier(std::size_t pass, const std::vector<std::size_t>& targets, const PassPlanner& planner,
                     Executor& executor);
    bool gather(std::size_t pass, const std::vector<std::size_t>& targets, const PassPlanner& planner) const;
    void collectFiles();
    std::string asPlanned(std::string text) const;
    void addFile(const std::filesystem::path& path);

    std::size_t part;
    std::vector<bool> isNeeded;  ///< By node.
    std::vector<bool> isTarget;  ///< By node.
    /// Paths that this part reads from their beginnings, with the plan of each.
    std::map<std::string, const PlannedFile*> ownFiles;
    std::set<std::string> allFiles;  ///< Paths that some part reads.
    std::set<std::size_t> passed;    ///< Earlier passes.
    std::optional<PartWriter> writer;
    PartSummary summary;
    std::string problem;
    bool hasEnded = false;
};

/// Passes that the part needs, directly or by others.
std::set<std::size_t> passesBefore(const JobPlan& plan, std::size_t part);
/// The parts of these passes.
std::vector<std::size_t> partsBefore(const JobPlan& plan, std::size_t part);
/// Whether their results were merged already for the pass of this part, so that the parts are not needed any more.
bool isMergedBefore(const JobFolder& job, const JobPlan& plan, std::size_t part);

/// @throws Failure if a file that the part reads has changed since the plan.
void checkFiles(const JobPlan& plan, std::size_t part, const MovedFiles& moved);
/// The same for all files of a run.
void checkFilesOfRun(const JobPlan& plan, std::size_t run, const MovedFiles& moved);
/// @throws Failure if a kind of the pipeline is of another build than the one that the job was planned with.
void checkBuilds(const JobPlan& plan, const Pipeline& pipeline);

}  // namespace velmorak
