#pragma once

#include "run/parts/JobPlan.h"
#include "run/parts/PartFile.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace velmorak {

/// The folder of a job: plan.json, for each part a file in parts/, or a note why it failed, in merged/ what parts of
/// later rounds need of the earlier ones, and in nodes/ notes on which process computes a part.
class JobFolder {
public:
    explicit JobFolder(std::filesystem::path folder) : folder(std::move(folder)) {}

    const std::filesystem::path& path() const { return folder; }
    std::filesystem::path planFile() const { return folder / "plan.json"; }
    /// @param part position in the plan.
    std::filesystem::path partFile(std::size_t part) const;

    /// The states of all parts of a pass together, as far as the parts of another pass need them.
    /// @param pass of the run, as is neededBy.
    std::filesystem::path mergedFile(std::size_t run, std::size_t pass, std::size_t neededBy) const;
    /// Whether this file is there, and of this plan.
    bool hasMerged(const JobPlan& plan, std::size_t run, std::size_t pass, std::size_t neededBy) const;

    enum class State { Done, Missing, Failed, Refused };
    struct Status {
        State state = State::Missing;
        std::string reason{};  ///< Why it failed, or why its file is refused.
    };
    /// Opens the file of the part, but does not read its states.
    Status statusOf(const JobPlan& plan, std::size_t part) const;
    /// Notes why a part failed. Never throws: the note is only for people.
    void noteFailure(std::size_t part, const std::string& reason) const;
    void forgetFailure(std::size_t part) const;
    /// Notes that this machine and process compute the part now. Never throws: the note is for people only.
    void noteWorker(std::size_t part) const;
    void forgetWorker(std::size_t part) const;
    /// Removes incomplete files of programs that were killed.
    void removeLeftovers() const;

private:
    std::filesystem::path failureFile(std::size_t part) const;
    std::filesystem::path workerFile(std::size_t part) const;

    std::filesystem::path folder;
};

/// Identifies the builds of the library and of all kinds of the plan.
std::string buildOf(const JobPlan& plan);

}  // namespace velmorak
