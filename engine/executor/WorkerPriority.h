#pragma once

#include <oneapi/tbb/task_arena.h>
#include <oneapi/tbb/task_scheduler_observer.h>

namespace velmorak {

/// While it lives, the threads that work in an arena stand back behind those that a user waits for: in a program whose
/// first thread draws windows, a run that takes all processors must not make them jerk. Where the run is the program's
/// first thread itself there is no one to stand back behind, and nothing is changed.
class WorkerPriority : public oneapi::tbb::task_scheduler_observer {
public:
    /// @param isWanted what isCalledFor was on the thread that waits for the run.
    WorkerPriority(oneapi::tbb::task_arena& arena, bool isWanted);
    ~WorkerPriority() override;
    WorkerPriority(const WorkerPriority&) = delete;
    WorkerPriority& operator=(const WorkerPriority&) = delete;

    /// The thread is not the program's first.
    static bool isCalledFor();

    void on_scheduler_entry(bool isWorker) override;
};

}  // namespace velmorak
