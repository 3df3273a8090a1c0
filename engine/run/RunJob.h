#pragma once

#include "run/ListenerGate.h"
#include "run/Messages.h"
#include "run/RunLedger.h"
#include "run/Runner.h"

#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace velmorak {

/// One run, with all that its threads use, on a thread of its own: so that who asked for the run can leave it behind
/// when a plug-in does not stop. What is left behind keeps the job, and reaches nothing outside of it any more.
class RunJob : public std::enable_shared_from_this<RunJob> {
public:
    /// @param listener null for none.
    RunJob(std::shared_ptr<Messages> messages, RunListener* listener);

    /// Called on any thread, also before the run begins.
    void askToEnd();
    const std::atomic<bool>& isAskedToEnd() const { return stopping; }

    /// Begins the work on the job's thread. What it throws ends the run.
    void begin(std::function<void()> work);
    /// Waits for the end of the run, and for no longer than the grace once it is asked to end.
    /// @return false when it has not ended.
    bool wait(const Runner::Grace& grace);
    /// Lets the threads go on without the run. @return the plug-ins that did not stop.
    std::vector<std::size_t> leaveBehind();
    /// Why the run ended before its end.
    const std::optional<NodeError>& error() const { return failure; }

    Pipeline pipeline;                ///< Not changed after begin.
    std::optional<RunLedger> ledger;  ///< Of the pipeline.
    const std::shared_ptr<Messages> messages;
    ListenerGate listener;
    const bool isListening;
    bool leavesRecord = false;  ///< As the report.
    RunReport report;           ///< Complete after wait has returned true.

private:
    std::atomic<bool> stopping = false;
    std::mutex mutex;
    std::condition_variable change;
    bool isOver = false;
    std::optional<NodeError> failure;
    std::thread thread;
};

}  // namespace velmorak
