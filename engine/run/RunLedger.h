#pragma once

#include "run/CrashNote.h"
#include "run/NodeError.h"
#include "run/Runner.h"

#include <atomic>
#include <cstddef>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace velmorak {

inline constexpr const char* unfinishedSentence = "not finished because the run was stopped";

/// What can be known of a run from outside while it goes on: which kinds are being called, and how the plug-ins that
/// are settled have ended. A run that does not end is left behind by it.
/// Threads: every operation may be called on any thread.
class RunLedger {
public:
    explicit RunLedger(const Pipeline& pipeline);

    /// Calls a piece of the kind of the plug-in; whatever it throws ends here, as a problem.
    /// @throws LeftBehind when the run was left behind meanwhile: nobody waits for what the kind has done.
    template <typename Work>
    std::optional<NodeError> call(std::size_t position, Work&& work) {
        std::optional<NodeError> error;
        {
            const Call entered(*this, position);
            error = errorIn(std::forward<Work>(work));
        }
        if (isLeft) {
            throw LeftBehind();
        }
        return error;
    }

    /// Plug-ins whose kinds are being called.
    std::vector<std::size_t> underWay() const;

    /// The plug-in is a part of the run, and not settled yet.
    void expect(std::size_t position);
    void finalize(std::size_t position, const NodeReport& report);
    /// How all plug-ins stand now; those that are not settled are unfinished.
    std::vector<NodeReport> reports() const;

    /// From now on, a call that returns ends its thread's part of the run.
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
    std::vector<std::atomic<int>> calls;  ///< By plug-in: threads that are in its kind.
    std::atomic<bool> isLeft = false;
    mutable std::mutex mutex;
    std::vector<NodeReport> nodeFinished;  ///< By plug-in.
};

}  // namespace velmorak
