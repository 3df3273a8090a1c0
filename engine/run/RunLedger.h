#pragma once

#include "run/Runner.h"
#include "run/messages/CrashNote.h"
#include "run/messages/NodeError.h"

#include <velmorak/Mutex.h>

#include <atomic>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace velmorak {

inline constexpr const char* unfinishedSentence = "not finished because the run was stopped";

/// The part of a run's state that other threads may see during the run: which kinds are being called, and the reports
/// of plug-ins with a final status. The report of a run that is left behind is made from it. Threads: every operation
/// may be called on any thread.
class RunLedger {
public:
    explicit RunLedger(const Pipeline& pipeline);

    /// Calls code of the plug-in's kind. @return the error for anything that it throws.
    /// @throws RunAbandoned if the run was left behind during the call.
    template <typename Work>
    std::optional<NodeError> call(std::size_t position, Work&& work) {
        std::optional<NodeError> error;
        {
            const Call entered(*this, position);
            error = errorIn(std::forward<Work>(work));
        }
        if (isLeft) {
            throw RunAbandoned();
        }
        return error;
    }

    /// @return the plug-ins whose kinds are being called.
    std::vector<std::size_t> underWay() const;

    /// Marks the plug-in as needed by the run: unfinished until finalize.
    void expect(std::size_t position);
    void finalize(std::size_t position, const NodeReport& report);
    /// @return the current reports of all plug-ins.
    std::vector<NodeReport> reports() const;

    /// Sets the files of earlier runs, for the report of a run that is left behind.
    void noteFormer(std::vector<FormerFile> files);
    std::vector<FormerFile> former() const;

    /// Makes calls in progress throw RunAbandoned when they return.
    void leaveBehind() { isLeft = true; }

    const std::string& title(std::size_t position) const { return titles[position]; }

private:
    class Call {
    public:
        Call(RunLedger& ledger, std::size_t position)
            : calls(ledger.calls[position]), note(ledger.titles[position].c_str()) {
            ++calls;
        }
        ~Call() { --calls; }
        Call(const Call&) = delete;
        Call& operator=(const Call&) = delete;

    private:
        std::atomic<int>& calls;
        const CrashNote note;
    };

    std::vector<std::string> titles;
    std::vector<std::atomic<int>> calls;  ///< By plug-in: number of threads in its kind.
    std::atomic<bool> isLeft = false;
    mutable Mutex mutex;
    std::vector<NodeReport> nodeFinished VELMORAK_GUARDED_BY(mutex);  ///< By plug-in.
    std::vector<FormerFile> formerFiles VELMORAK_GUARDED_BY(mutex);
};

}  // namespace velmorak
