#pragma once

#include "run/RunLedger.h"
#include "run/Runner.h"
#include "run/announce/Announcement.h"
#include "run/messages/ListenerGate.h"
#include "run/messages/Messages.h"
#include "run/results/FormerResults.h"

#include <velmorak/Mutex.h>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>

namespace velmorak {

/// One run on its own thread, with everything that its threads use, so that the caller can leave it behind when a
/// plug-in does not stop. A run that was left behind keeps the job alive and no longer touches anything outside of it.
class RunJob : public std::enable_shared_from_this<RunJob> {
public:
    /// @param listener null for none.
    RunJob(std::shared_ptr<Messages> messages, RunListener* listener);
    RunJob(const RunJob&) = delete;
    RunJob& operator=(const RunJob&) = delete;
    ~RunJob();

    /// Asks the run to end. May be called on any thread, also before begin.
    void askToEnd();
    const std::atomic<bool>& isAskedToEnd() const { return stopping; }

    /// Starts the work on the job's thread. An exception ends the run.
    void begin(std::function<void()> work);
    /// Waits for the end of the run, and at most for the grace period once it is asked to end.
    /// @return false if it has not ended.
    bool wait(const Runner::Grace& grace);
    /// Detaches the thread. @return the plug-ins that did not stop.
    std::vector<std::size_t> leaveBehind();
    /// The exception that ended the run, if any.
    const std::optional<NodeError>& error() const { return failure; }

    Pipeline pipeline;                ///< Not changed after begin.
    std::optional<RunLedger> ledger;  ///< Of the pipeline.
    std::optional<FormerResults> former;
    const std::shared_ptr<Messages> messages;
    const std::unique_ptr<Announcement> announcement;  ///< Null if runs cannot announce themselves.
    ListenerGate listener;
    bool leavesRecord = false;     ///< A first record was written.
    bool hasEndedHelpers = false;  ///< Helper processes that did not stop were ended; valid after wait.
    RunReport report;              ///< Valid after wait has returned true.

private:
    bool waitForEnd(const Runner::Grace& grace);
    bool mayEnd(const std::vector<std::size_t>& underWay);

    std::atomic<bool> stopping = false;
    Mutex mutex;
    ConditionVariable change;
    bool isOver VELMORAK_GUARDED_BY(mutex) = false;
    std::optional<NodeError> failure;  ///< Set before isOver.
    std::thread thread;
};

}  // namespace velmorak
