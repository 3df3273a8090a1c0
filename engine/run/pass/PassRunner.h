#pragma once

#include <cstddef>
#include <filesystem>
#include <vector>

namespace velmorak {

class Executor;
class FileHashes;
class PassPlanner;
class ResultCache;
class RunState;

/// Carries out the passes of a run in another way than by reading all rows: of which only some are to be read, or whose
/// states other processes have made.
/// Threads: called on the thread of the run, except for readsFile.
class PassRunner {
public:
    virtual ~PassRunner() = default;
    /// Called before anything else, at the beginning of each run. The objects outlive the run.
    virtual void begin(RunState& state, ResultCache& cache, FileHashes& hashes) = 0;
    /// Whether the run computes a plug-in that a run without this would compute.
    virtual bool needs(std::size_t position) const = 0;
    /// Whether the run makes the pipeline's result files.
    virtual bool makesResults() const { return true; }
    /// Whether the run computes a plug-in even if nothing else in the run needs it.
    virtual bool asksFor(std::size_t /*position*/) const { return false; }
    /// Whether the rows of an input file are read, so that its checksum is needed. Threads: several at once.
    virtual bool readsFile(const std::filesystem::path& file) const = 0;
    /// Passes the targets' table. Each target becomes final, or has failed, or all of them wait for another pass.
    virtual void pass(const std::vector<std::size_t>& targets, const PassPlanner& planner, Executor& executor) = 0;
    /// Called at the end of a run that was not ended by an exception.
    virtual void end() {}
};

}  // namespace velmorak
