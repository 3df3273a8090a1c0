#pragma once

#include "run/results/ResultCache.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace velmorak {

/// Remembers the inputs and files of each plug-in in its last run, to explain why it is executed again.
class RunHistory {
public:
    /// Sets the reason in the report of every plug-in that will be executed or was reused.
    void explain(RunState& state, ResultCache& cache) const;
    /// @return the history to store before the run, for the case that the program is killed.
    RunHistory ifInterrupted(const RunState& state) const;
    /// Updates the history after a run.
    void remember(const RunState& state, const ResultCache& cache);

    /// Serialises the history for a later program.
    std::string toBytes() const;
    /// Replaces the history; it is empty after bytes that are invalid.
    void fromBytes(const std::string& bytes);

private:
    struct Entry {
        std::string kindName;
        int version = 0;
        std::map<std::string, std::string> inputs;  ///< Value or source of each, as shown to the user.
        std::vector<FileContent> asked;
        std::vector<FileContent> written;
        std::string sentence;  ///< Why it was not completed.
    };

    static Entry entryOf(const RunState& state, std::size_t position);
    std::string changeOf(const RunState& state, std::size_t position, ResultCache& cache) const;
    /// @return the change of a result file since it was written; does not affect plug-ins downstream.
    std::string lossOf(const RunState& state, std::size_t position, ResultCache& cache) const;

    std::map<std::string, Entry> entries;  ///< By plug-in name.
};

}  // namespace velmorak
