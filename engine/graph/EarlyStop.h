#pragma once

#include <sys/types.h>

#include <set>

namespace velmorak {

/// A stop that came while no run was going on. It applies to a run that had been requested by then. A caller that
/// creates a thread for each run, as the editor does, has requested the run once the thread exists; therefore the stop
/// applies to a run on a thread that existed when the stop came. It does not apply to a run on the thread that called
/// stop, on a thread that was created later, or on a thread that has executed a run before: those were requested
/// afterwards.
/// Threads: not synchronised; the caller holds a lock.
class EarlyStop {
public:
    /// Called on the thread that asks for the stop.
    void note();

    /// Called on a thread that begins a run; ends the effect of the stop. @return whether the stop applies to this run.
    bool consumeForThisRun();

private:
    std::set<pid_t> waiting;  ///< Threads that may have been created for a run that has not begun.
    std::set<pid_t> haveRun;  ///< Threads that have executed a run.
};

}  // namespace velmorak
