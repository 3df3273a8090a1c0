#pragma once

#include "run/ResultCache.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace velmorak {

/// What a runner remembers of the plug-ins of its former runs, to say why one is executed again.
class RunHistory {
public:
    /// Sets the reason of every plug-in that is about to be executed or was taken from the store.
    void explain(RunState& state, ResultCache& cache) const;
    /// What is to be remembered when the run that is about to begin does not come to its end.
    RunHistory ifInterrupted(const RunState& state) const;
    /// Takes in how the run has ended.
    void remember(const RunState& state, const ResultCache& cache);

    /// All of it, for a later program.
    std::string toBytes() const;
    /// Takes the place of what is remembered. Anything but such bytes leaves nothing to remember.
    void fromBytes(const std::string& bytes);

private:
    struct Entry {
        std::string kindName;
        int version = 0;
        std::map<std::string, std::string> inputs;  ///< What each said, as the user reads it.
        std::vector<FileContent> asked;
        std::vector<FileContent> written;
        std::string sentence;  ///< Of one that failed.
    };

    static Entry entryOf(const RunState& state, std::size_t position);
    std::string changeOf(const RunState& state, std::size_t position, ResultCache& cache) const;
    /// What is no more as a plug-in of a former run left it. What it feeds does not depend on that.
    std::string lossOf(const RunState& state, std::size_t position, ResultCache& cache) const;

    std::map<std::string, Entry> entries;  ///< By the plug-in's name.
};

}  // namespace velmorak
