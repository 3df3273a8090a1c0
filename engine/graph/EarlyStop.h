#pragma once

#include <sys/types.h>

#include <set>

namespace velmorak {

/// A stop that came while no run was going on. It counts for a run that had been asked for by then: one whose thread
/// was already there, because who makes a thread for each run, as the editor does, has asked for the run when the
/// thread exists. A run on the thread that asked for the stop, on a thread that was made later, or on one that has run
/// before, was asked for afterwards.
/// Threads: the caller sees to it that one at a time is in here.
class EarlyStop {
public:
    /// Called on the thread that asks for the stop.
    void note();

    /// Called on a thread that begins a run. @return whether the stop was meant for this run.
    bool takesBeginningRun();

private:
    std::set<pid_t> waiting;  ///< Threads that may have been made for a run that has not begun.
    std::set<pid_t> haveRun;  ///< Threads that serve more than one run.
};

}  // namespace velmorak
